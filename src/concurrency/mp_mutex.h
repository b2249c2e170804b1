#ifndef KALVOBASE_SRC_CONCURRENCY_MP_MUTEX_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_MUTEX_H_

#include "platform/mutex.h"

class MP_Mutex {
 public:
  MP_Mutex() = default;
  MP_Mutex(const MP_Mutex&) = delete;
  MP_Mutex& operator=(const MP_Mutex&) = delete;
  ~MP_Mutex();

  int Init(bool owned, const char* name);
  int IsValid() const { return mutex_ != nullptr; }
  int Lock(int ms);
  int Unlock();
  int IsLocked();

 private:
  platform::Mutex* mutex_ = nullptr;  // null until an Init succeeds
};

#endif  // KALVOBASE_SRC_CONCURRENCY_MP_MUTEX_H_
