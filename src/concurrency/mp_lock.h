// The lock that the library's own classes hold. Where one is made without locking, a
// Kalvo_BaseLock, which does nothing, or a null pointer stands in its place.

#ifndef KALVOBASE_SRC_CONCURRENCY_MP_LOCK_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_LOCK_H_

#include "kalvobase/lock.h"
#include "platform/lock.h"
#include "platform/thread.h"

// Recursive: the holder can take it again and must release it as often.
class MP_Lock : public Kalvo_BaseLock {
 public:
  MP_Lock() : lock_(platform::lock_create()) {}
  MP_Lock(const MP_Lock&) = delete;
  MP_Lock& operator=(const MP_Lock&) = delete;
  ~MP_Lock() override { platform::lock_destroy(lock_); }

  void Lock() override { platform::lock_enter(lock_); }
  void Unlock() override { platform::lock_leave(lock_); }
  void TakeOver() { platform::lock_take_over(lock_); }

 private:
  platform::Lock* lock_;
};

// Kalvo_AutoLock for a lock of the library's own, without its calls.
class MP_Guard {
 public:
  explicit MP_Guard(MP_Lock* lock) : lock_(lock) { lock_->MP_Lock::Lock(); }
  MP_Guard(const MP_Guard&) = delete;
  MP_Guard& operator=(const MP_Guard&) = delete;
  ~MP_Guard() { lock_->MP_Lock::Unlock(); }

 private:
  MP_Lock* const lock_;
};

// Holds a lock of the library's own for a moment in which no code of the host runs but callbacks
// of the kernel debug channel. The thread is neither held nor killed meanwhile, since others
// would wait for the lock for ever.
class MP_ShieldedGuard {
 public:
  explicit MP_ShieldedGuard(MP_Lock* lock) : guard_(lock) {}
  MP_ShieldedGuard(const MP_ShieldedGuard&) = delete;
  MP_ShieldedGuard& operator=(const MP_ShieldedGuard&) = delete;

 private:
  const platform::ThreadShield shield_;  // before the lock is taken, until it is free
  const MP_Guard guard_;
};

#endif  // KALVOBASE_SRC_CONCURRENCY_MP_LOCK_H_
