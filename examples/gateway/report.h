// The printed form of samples.

#ifndef GATEWAY_REPORT_H_
#define GATEWAY_REPORT_H_

#include <kalvobase/kalvobase.h>

// Prints the samples of `samples`, which must be sorted by metric, as an aligned table: a
// line a metric, with its first and last value, the least and the greatest.
void PrintReport(Kalvo_Queue* samples);

#endif  // GATEWAY_REPORT_H_
