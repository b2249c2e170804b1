// What the gateway looks after: it reads metrics out of samples.

#ifndef GATEWAY_WATCH_H_
#define GATEWAY_WATCH_H_

#include <kalvobase/kalvobase.h>

#include "metric.h"

class Watch {
 public:
  // The machine must be built.
  explicit Watch(Kalvo_FSMService* machine);

  // Reads all metrics out of a sample. How busy a processor was is known from the second
  // sample on.
  void Look(Kalvo_KValueTable* sample);

  // No samples will come any more.
  void End();

  // A line for each metric.
  void Print() const;

 private:
  long BusiestProcessor(Kalvo_KValueTable* processors);

  Metric processor_;
  Metric load_;
  Metric memory_;
  Kalvo_KValueTable before_;  // the processors of the last sample
};

#endif  // GATEWAY_WATCH_H_
