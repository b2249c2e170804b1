// The lock that the library's own classes hold. Where one is made without locking, a
// Kalvo_BaseLock, which does nothing, or a null pointer stands in its place.

#ifndef KALVOBASE_SRC_CONCURRENCY_MP_LOCK_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_LOCK_H_

#include "kalvobase/lock.h"
#include "platform/lock.h"

// Recursive: the holder can take it again and must release it as often.
class MP_Lock : public Kalvo_BaseLock {
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
