// Timers on one shared thread.
//
//   class Session : public Kalvo_Timer {
//    public:
//     Session() { id_ = SetRepeatTimer(3, 1000, 0, 0, 0, nullptr); }
//     ~Session() override { ClearTimer(id_); }  // waits for an OnTimer that uses this object
//     void OnTimer(unsigned long id, unsigned long count, unsigned long owner, unsigned long attr,
//                  unsigned long seq, const char* data) override {
//       std::printf("ping %lu of 3\n", count);
//     }
//
//    private:
//     unsigned long id_;
//   };
//
// Intervals are milliseconds. A timer fires at most 4 ms early, and late only as long as the
// thread is busy with other timers and the system lets it wait for a processor. A repeating
// timer starts its next interval when it fires, and fires at most once an interval, however
// short that is. Timers that are due at the same time fire in the order in which they were set. No
// timer overtakes another by being early. So a watchdog that is reset by each tick does not fire as
// long as the ticks are not later than the difference of the two intervals.
//
// A timer is named by a number that is never 0 and is refused once the timer has ended. Up to
// 65,536 timers run at a time, and as many Kalvo_Timer objects can have timers.
//
// Any thread may call any operation, OnTimer included.

#ifndef KALVOBASE_TIMER_H_
#define KALVOBASE_TIMER_H_

#include "kalvobase/types.h"

// A copy is the same owner of timers, with no count of users: OnTimer is called on the object
// that was not copied, and when one of them is destroyed, the others own nothing any more.
class KALVO_API Kalvo_Timer {
 public:
  Kalvo_Timer();
  Kalvo_Timer(const Kalvo_Timer& other);
  Kalvo_Timer& operator=(const Kalvo_Timer& other);

  // Waits until no OnTimer runs, of any timer, unless it is called from one. After that no
  // OnTimer of this object runs; its timers fire without effect. A class derived from this one is
  // half destroyed by then: the destructor of the class that overrides OnTimer must clear its
  // timers.
  virtual ~Kalvo_Timer();

  // Sets a timer that fires once after `ms` milliseconds. `owner`, `attr`, `seq` and a copy of
  // `data`, which may be null, are handed to OnTimer. Returns the timer's number; 0 if there are
  // too many.
  unsigned long SetTimer(unsigned long ms, unsigned long owner, unsigned long attr,
                         unsigned long seq, const char* data);

  // The same, and it fires `count` times, with 0xFFFFFFFF without end. 0 for a `count` of 0.
  unsigned long SetRepeatTimer(unsigned long count, unsigned long ms, unsigned long owner,
                               unsigned long attr, unsigned long seq, const char* data);

  // These three take any timer's number, not only those of this object. A number that is no
  // timer's any more is told on the kernel debug channel.

  // Ends the timer. A firing that is on its way is still delivered. ClearTimer waits for that, for
  // 1 s at most, so that the caller may destroy what OnTimer uses; on the timer thread it does not
  // wait. Do not call it under a lock that an OnTimer takes, or in a thread that an OnTimer waits
  // for: each would wait for the other until the second has passed. Does nothing for 0.
  void ClearTimer(unsigned long id);

  // Starts the interval again, with a new length if `ms` is not 0, and counts the firings from
  // 1 again. Returns `id`; 0 for 0 and if there is no such timer.
  unsigned long ResetTimer(unsigned long id, unsigned long ms);

  // Returns how many milliseconds of the interval have passed; with `stop` not 0 the timer ends.
  // Unlike ClearTimer it never waits. 0xFFFFFFFF if there is no such timer, 0 for 0.
  unsigned long Watch(unsigned long id, int stop);

  // Called on the timer thread, one call at a time for all timers of the process. `count` is
  // the number of this firing, from 1; `data` is good for the call only, and null if there is
  // none. It may set and end timers, and destroy this and other objects, and must return soon:
  // all other timers wait. What it throws is told on the kernel debug channel.
  virtual void OnTimer(unsigned long id, unsigned long count, unsigned long owner,
                       unsigned long attr, unsigned long seq, const char* data);

 private:
  Kalvo_ULong identify_;
};

#endif  // KALVOBASE_TIMER_H_
