#ifndef KALVOBASE_SRC_CONCURRENCY_MP_SEMAPHORE_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_SEMAPHORE_H_

#include <cstdint>

#include "platform/semaphore.h"

class MP_Semaphore {
 public:
  MP_Semaphore() = default;
  MP_Semaphore(const MP_Semaphore&) = delete;
  MP_Semaphore& operator=(const MP_Semaphore&) = delete;
  ~MP_Semaphore();

  int Init(int initial, int maximum, const char* name);
  int IsValid() const { return semaphore_ != nullptr; }
  int Post(int count);
  std::uint32_t Wait(int ms);

 private:
  void Close();

  platform::Semaphore* semaphore_ = nullptr;  // null until an Init succeeds
};

#endif  // KALVOBASE_SRC_CONCURRENCY_MP_SEMAPHORE_H_
