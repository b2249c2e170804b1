#ifndef KALVOBASE_SRC_CONCURRENCY_MP_EVENT_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_EVENT_H_

#include "concurrency/mp_lock.h"
#include "platform/event.h"

// The event's state is a flag of its own. The system's event is always manual-reset and
// only blocks those who wait: a Set wakes all of them, also under automatic reset. It can
// differ from the flag: an event that is made signalled has the flag set and the system's
// event not.
class MP_Event {
 public:
  MP_Event(bool manual, bool signalled);
  MP_Event(const MP_Event&) = delete;
  MP_Event& operator=(const MP_Event&) = delete;
  ~MP_Event();

  int Set();
  int Reset();
  int Wait(unsigned long ms);

  void* handle() const { return event_; }

 private:
  MP_Lock lock_;  // guards signalled_; never held during a wait
  platform::Event* event_;
  bool signalled_;
  const bool manual_;
};

#endif  // KALVOBASE_SRC_CONCURRENCY_MP_EVENT_H_
