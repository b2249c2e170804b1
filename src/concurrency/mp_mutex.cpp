#include "concurrency/mp_mutex.h"

#include <cstdint>

MP_Mutex::~MP_Mutex() {
  if (mutex_ != nullptr) platform::mutex_close(mutex_);
}

int MP_Mutex::Init(bool owned, const char* name) {
  // The new one first: a second Init under the same name must not end the object between
  // the two.
  platform::Mutex* mutex = platform::mutex_open(name, owned);
  if (mutex_ != nullptr) platform::mutex_close(mutex_);
  mutex_ = mutex;
  return IsValid();
}

int MP_Mutex::Lock(int ms) {
  if (mutex_ == nullptr) return 0;
  return platform::mutex_wait(mutex_, static_cast<std::uint32_t>(ms)) == platform::kWaitSignalled;
}

int MP_Mutex::Unlock() { return mutex_ != nullptr && platform::mutex_release(mutex_); }

int MP_Mutex::IsLocked() { return mutex_ != nullptr && platform::mutex_is_held_elsewhere(mutex_); }
