// What one look at the machine gave.

#ifndef GATEWAY_SAMPLE_H_
#define GATEWAY_SAMPLE_H_

#include <kalvobase/kalvobase.h>

// host        text
// time        long, seconds since 1970
// load        1min, 5min, 15min: double
// memory      total, available: unsigned long, in MiB
// processors  a table for each: busy, total: unsigned long, ticks since the start
// network     a table for each interface: received, sent: double, in MiB
class Sample : public Kalvo_QueueObject {
 public:
  const char* GetTypename(Kalvo_String* out) override;

  Kalvo_KValueTable values;
};

// What cannot be read is left out, and so are network interfaces that are not listed, if any
// are.
void TakeSample(const Kalvo_StringArray& interfaces, Kalvo_KValueTable* values);

#endif  // GATEWAY_SAMPLE_H_
