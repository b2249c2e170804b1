// Works on samples, on a thread of its own.

#ifndef GATEWAY_COLLECTOR_H_
#define GATEWAY_COLLECTOR_H_

#include <kalvobase/kalvobase.h>

#include "uplink.h"
#include "watch.h"

// Takes samples out of a queue, lets the watch look at each, sends it, and keeps it under the
// numbers from 0 on.
class Collector {
 public:
  // All of these must outlive the collector.
  Collector(Kalvo_Queue* queue, Watch* watch, Uplink* uplink, Kalvo_KValueTable* history,
            Kalvo_Log* log);

  void Start() { thread_.Resume(); }

  // Returns when nothing is left in the queue.
  void Finish() { thread_.WaitFor(0xFFFFFFFF); }

 private:
  static unsigned long Work(void* self);
  void Take(Kalvo_KValueTable* values);

  Kalvo_Queue* queue_;
  Watch* watch_;
  Uplink* uplink_;
  Kalvo_KValueTable* history_;
  Kalvo_Log* log_;
  Kalvo_Thread thread_;
};

#endif  // GATEWAY_COLLECTOR_H_
