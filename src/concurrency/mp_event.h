// The library's own pair of events: one that is always signalled and a real one.

#ifndef KALVOBASE_SRC_CONCURRENCY_MP_EVENT_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_EVENT_H_

#include "concurrency/mp_lock.h"
#include "platform/event.h"

class MP_NullEvent {
 public:
  MP_NullEvent() = default;
  MP_NullEvent(const MP_NullEvent&) = delete;
  MP_NullEvent& operator=(const MP_NullEvent&) = delete;
  virtual ~MP_NullEvent() = default;

  virtual int Set() { return 0; }
  virtual int Reset() { return 0; }
  virtual int Wait(unsigned long) { return 0; }
};

// The event's state is a flag of its own. The system's event is always manual-reset and
// only blocks those who wait: a Set wakes all of them, also under automatic reset. It can
// differ from the flag: an event that is made signalled has the flag set and the system's
// event not.
class MP_Event : public MP_NullEvent {
 public:
  MP_Event(bool manual, bool signalled);
  ~MP_Event() override;

  int Set() override;
  int Reset() override;
  int Wait(unsigned long ms) override;

  void* handle() const { return event_; }

 private:
  MP_Lock lock_;  // guards signalled_; never held during a wait
  platform::Event* event_;
  bool signalled_;
  const bool manual_;
};

#endif  // KALVOBASE_SRC_CONCURRENCY_MP_EVENT_H_
