// Kalvo_TimerManager: the timer service of the process. It knows whose timers they are.

#ifndef KALVOBASE_SRC_TIMERS_KALVO_TIMER_MANAGER_H_
#define KALVOBASE_SRC_TIMERS_KALVO_TIMER_MANAGER_H_

#include <cstdint>

#include "concurrency/mp_lock.h"
#include "timers/mp_timer_core.h"
#include "timers/numbered_pool.h"

class Kalvo_Timer;

class Kalvo_TimerManager : public MP_TimerCore {
 public:
  Kalvo_TimerManager() = default;
  ~Kalvo_TimerManager() override;

  // The service, whose thread runs from the first call on. Null if memory ran out.
  static Kalvo_TimerManager* Get();

  // The service if there is one, for callers that need no thread of it.
  static Kalvo_TimerManager* Find();

  // The steps of the library's start and stop.
  static void Make();
  static void Stop();
  static void Free();

  // As MP_TimerCore's, if there is a service. In a child no OnTimer runs but that of the calling
  // thread.
  static void HoldTimers();
  static void ReleaseTimers();
  static void GoOnInChild();

  // Gives an owner a number; 0 if there are too many.
  std::uint32_t AddOwner(Kalvo_Timer* owner);

  // Waits until no OnTimer runs, but on the calling thread. Nothing happens for a number that
  // is stale.
  void RemoveOwner(std::uint32_t id);

  void Dispatch(MP_TimerInfo* info) override;

 private:
  struct MP_TimerOwner {
    Kalvo_Timer* timer = nullptr;

    std::uint32_t id = 0;  // these three belong to the pool
    std::uint16_t place = 0;
    MP_TimerOwner* nextFree = nullptr;
  };

  // The caller holds ownerLock_. Null for a number that is stale.
  MP_TimerOwner* FindOwner(std::uint32_t id) const;

  // Guards the owners, and is held while OnTimer runs. Taken before the lock of the timers.
  MP_Lock ownerLock_;
  NumberedPool<MP_TimerOwner> owners_;
};

#endif  // KALVOBASE_SRC_TIMERS_KALVO_TIMER_MANAGER_H_
