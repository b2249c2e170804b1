// Works on samples, on a thread of its own.

#ifndef GATEWAY_COLLECTOR_H_
#define GATEWAY_COLLECTOR_H_

#include <kalvobase/kalvobase.h>

#include "uplink.h"

// Takes samples out of a queue, sends each under the agent's name, and keeps it under the numbers
// from 0 on. At the end it tells the gateway that the agent is done.
class Collector {
 public:
  // All of these must outlive the collector.
  Collector(const char* name, Kalvo_Queue* queue, Uplink* uplink, Kalvo_KValueTable* history,
            Kalvo_Log* log);

  void Start() { thread_.Resume(); }

  // Returns when nothing is left in the queue.
  void Finish() { thread_.WaitFor(0xFFFFFFFF); }

 private:
  static unsigned long Work(void* self);
  void Take(Kalvo_KValueTable* values);
  void TellDone();

  const char* name_;
  Kalvo_Queue* queue_;
  Uplink* uplink_;
  Kalvo_KValueTable* history_;
  Kalvo_Log* log_;
  Kalvo_Thread thread_;
};

#endif  // GATEWAY_COLLECTOR_H_
