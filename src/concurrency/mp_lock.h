// The library's own pair of locks: one that does nothing and a real one. A class that is
// made with or without locking holds one of the two and runs the same code.

#ifndef KALVOBASE_SRC_CONCURRENCY_MP_LOCK_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_LOCK_H_

#include "kalvobase/lock.h"
#include "platform/lock.h"

class MP_NullLock : public Kalvo_BaseLock {};

// Recursive: the holder can take it again and must release it as often.
class MP_Lock : public MP_NullLock {
 public:
  MP_Lock() : lock_(platform::lock_create()) {}
  MP_Lock(const MP_Lock&) = delete;
  MP_Lock& operator=(const MP_Lock&) = delete;
  ~MP_Lock() override { platform::lock_destroy(lock_); }

  void Lock() override { platform::lock_enter(lock_); }
  void Unlock() override { platform::lock_leave(lock_); }

 private:
  platform::Lock* lock_;
};

#endif  // KALVOBASE_SRC_CONCURRENCY_MP_LOCK_H_
