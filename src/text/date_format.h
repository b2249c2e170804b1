// The date language: yyyy yy mm dd hh mi kk ss, in its three uses.

#ifndef KALVOBASE_SRC_TEXT_DATE_FORMAT_H_
#define KALVOBASE_SRC_TEXT_DATE_FORMAT_H_

#include "files/mp_stream_core.h"

namespace text {

// Appends a time stamp in local time. A stamp below 14400 is a span of its negative
// seconds.
void AppendDate(MP_StreamCore* core, long stamp, const char* format);

// Reads a time stamp, or a span as its negative seconds, out of `date`.
long ParseDate(const char* date, const char* format);

// The seconds of the period that the last directive names.
long DatePeriod(const char* format);

}  // namespace text

#endif  // KALVOBASE_SRC_TEXT_DATE_FORMAT_H_
