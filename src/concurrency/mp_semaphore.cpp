#include "concurrency/mp_semaphore.h"

MP_Semaphore::~MP_Semaphore() {
  Post(1);  // lets one thread that still waits out
  Close();
}

void MP_Semaphore::Close() {
  if (semaphore_ != nullptr) platform::semaphore_close(semaphore_);
}

int MP_Semaphore::Init(int initial, int maximum, const char* name) {
  platform::Semaphore* semaphore = platform::semaphore_open(name, initial, maximum);
  Close();
  semaphore_ = semaphore;
  return IsValid();
}

int MP_Semaphore::Post(int count) {
  return semaphore_ != nullptr && platform::semaphore_post(semaphore_, count);
}

std::uint32_t MP_Semaphore::Wait(int ms) {
  if (semaphore_ == nullptr) return platform::kWaitFailed;
  return platform::semaphore_wait(semaphore_, static_cast<std::uint32_t>(ms));
}
