#include <new>

#include "concurrency/mp_semaphore.h"
#include "kalvobase/waitable.h"

Kalvo_Semaphore::Kalvo_Semaphore() : impl_(new (std::nothrow) MP_Semaphore) {}
Kalvo_Semaphore::Kalvo_Semaphore(const Kalvo_Semaphore& other) = default;
Kalvo_Semaphore& Kalvo_Semaphore::operator=(const Kalvo_Semaphore& other) = default;
Kalvo_Semaphore::~Kalvo_Semaphore() { delete impl_; }

int Kalvo_Semaphore::Init(int initial, int maximum, char* name) {
  return impl_ != nullptr ? impl_->Init(initial, maximum, name) : 0;
}
int Kalvo_Semaphore::IsValid() { return impl_ != nullptr ? impl_->IsValid() : 0; }
int Kalvo_Semaphore::Post(int count) { return impl_ != nullptr ? impl_->Post(count) : 0; }
unsigned long Kalvo_Semaphore::Wait(int ms) {
  return impl_ != nullptr ? impl_->Wait(ms) : platform::kWaitFailed;
}
