// What the gateway looks after: it reads metrics out of samples.

#ifndef GATEWAY_WATCH_H_
#define GATEWAY_WATCH_H_

#include <kalvobase/kalvobase.h>

#include "metric.h"
#include "settings.h"

class Watch {
 public:
  Watch();

  // Builds the machines. False if they are not sound. Nothing else may be called before.
  bool Start(const Settings& settings);

  // Reads all metrics out of a sample. How busy a processor was is known from the second
  // sample on. False if this is no sample.
  bool Look(Kalvo_KValueTable* sample);

  // No samples will come any more.
  void End();

  // The states of all metrics, each with the number of its changes, and the line above them.
  Kalvo_String Line() const;
  static Kalvo_String Heading();

 private:
  long BusiestProcessor(Kalvo_KValueTable* processors);

  // A metric and the machine that it is in.
  struct Watched {
    Watched(unsigned long id, const char* name) : metric(id, name, &machine) {}
    Kalvo_FSMService machine;
    Metric metric;
  };

  Watched processor_;
  Watched load_;
  Watched memory_;
  Kalvo_KValueTable before_;  // the processors of the last sample
};

#endif  // GATEWAY_WATCH_H_
