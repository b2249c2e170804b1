// MP_TimerCore: the timers and the thread that fires them.

#ifndef KALVOBASE_SRC_TIMERS_MP_TIMER_CORE_H_
#define KALVOBASE_SRC_TIMERS_MP_TIMER_CORE_H_

#include <atomic>
#include <cstdint>
#include <vector>

#include "concurrency/mp_lock.h"
#include "concurrency/mp_thread.h"
#include "platform/event.h"
#include "timers/mp_timer_list.h"
#include "timers/mp_timer_record.h"
#include "timers/numbered_pool.h"

class MP_TimerCore {
 public:
  static constexpr std::uint32_t kWithoutEnd = 0xFFFFFFFF;

  MP_TimerCore();
  MP_TimerCore(const MP_TimerCore&) = delete;
  MP_TimerCore& operator=(const MP_TimerCore&) = delete;
  virtual ~MP_TimerCore();

  // Delivers a firing, on the timer thread, which holds no lock of this class meanwhile.
  virtual void Dispatch(MP_TimerInfo* info);

  // Makes the thread, or another one if the process was forked from one that has it.
  void EnsureRunning(const char* name);

  // For a fork: no other thread uses the timers between the two.
  void Hold() { lock_.Lock(); }
  void Release() { lock_.Unlock(); }

  // Ends it for good. Whatever has fired and was not delivered is dropped.
  void StopThread();

  // Sets a timer. `timer` has what its firings pass on, except the text: that is `data`, which may
  // be null. Returns the timer's number; 0 if there are too many or memory ran out.
  std::uint32_t Set(std::uint32_t count, const MP_TimerInfo& timer, const char* data);

  // Ends a timer. Waits until its firings that are on their way are delivered, for at most
  // kDeliveryMs. The delivering thread does not wait.
  void Clear(std::uint32_t id);
  std::uint32_t Reset(std::uint32_t id, std::uint32_t ms);
  std::uint32_t Watch(std::uint32_t id, bool stop);

  // Fires what is due. For the timer thread, and for a test that stands in for it.
  void RunPass();
  // False if this thread has to end at once: it is not the service's any more.
  bool DeliverFired();

 private:
  static unsigned long ThreadRoutine(void* self);
  void Run(MP_Thread* thread);
  void Deliver(MP_TimerInfo* info);

  // These expect lock_ to be held.
  std::uint64_t Now(std::uint32_t stepBack);
  MP_TimerRecord* Find(std::uint32_t id, const char* missing, const char* mismatch) const;
  void Arm(MP_TimerRecord* record, MP_TimerDue due);
  void Disarm(const MP_TimerRecord* record) {
    lists_.Disarm(record->list, record->due, record->place);
  }
  MP_TimerRecord* TakeRecord();
  void SortDue();
  bool Fire(MP_TimerRecord* record);
  void Rearm(MP_TimerRecord* record, std::uint64_t now);
  void Free(MP_TimerRecord* record);

  bool IsUndelivered(std::uint32_t id);
  void AwaitDelivery(std::uint32_t id);
  void DropFirings();

  static constexpr int kTextSize = 256;

  // Less than a thread gets to end: so a thread that waits here is not killed for it.
  static constexpr std::uint32_t kDeliveryMs = 1000;

  // Guards everything here, with the exceptions that are named.
  MP_Lock lock_;
  NumberedPool<MP_TimerRecord> records_;
  MP_TimerLists lists_;
  std::vector<std::uint16_t> due_;  // of the pass that runs; has room for all records
  std::uint64_t now_ = 0;           // the service's own clock, in milliseconds
  std::uint32_t lastTick_;          // up to where it has been moved on
  std::uint64_t wakeAt_ = 0;        // when the thread will look again by itself

  // Firings on their way to delivery. The delivering thread changes these two under lock_, and
  // reads them without.
  std::vector<MP_TimerInfo> fired_;
  std::vector<MP_TimerInfo> delivering_;
  std::vector<MP_TimerInfo> abandoned_;      // of the thread that forked this process in OnTimer
  std::atomic<std::size_t> delivered_{0};    // how many of delivering_ have been delivered
  std::uint64_t pass_ = 0;                   // counts the passes
  std::uint64_t deliveredPass_ = 0;          // up to which all firings have been delivered
  std::uint64_t armed_ = 0;                  // counts the armings
  std::atomic<std::uint64_t> deliverer_{0};  // the delivering thread, by thread_number
  std::uint32_t wait_ = 0;                   // how long the thread may sleep until the next pass

  std::atomic<MP_Thread*> thread_{nullptr};
  std::atomic<bool> started_{false};
  std::atomic<std::uint32_t> forks_{0};  // when it was started
  platform::Event* wake_;                // cuts the thread's sleep short
  char text_[kTextSize];  // the firing that is being delivered, for reports about the thread
};

#endif  // KALVOBASE_SRC_TIMERS_MP_TIMER_CORE_H_
