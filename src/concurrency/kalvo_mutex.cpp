#include <new>

#include "concurrency/mp_mutex.h"
#include "kalvobase/waitable.h"

Kalvo_Mutex::Kalvo_Mutex() : impl_(new (std::nothrow) MP_Mutex) {}
Kalvo_Mutex::Kalvo_Mutex(const Kalvo_Mutex& other) = default;
Kalvo_Mutex& Kalvo_Mutex::operator=(const Kalvo_Mutex& other) = default;
Kalvo_Mutex::~Kalvo_Mutex() { delete impl_; }

int Kalvo_Mutex::Init(int owned, char* name) {
  return impl_ != nullptr ? impl_->Init(owned != 0, name) : 0;
}
int Kalvo_Mutex::IsValid() { return impl_ != nullptr ? impl_->IsValid() : 0; }
int Kalvo_Mutex::Lock(int ms) { return impl_ != nullptr ? impl_->Lock(ms) : 0; }
int Kalvo_Mutex::Unlock() { return impl_ != nullptr ? impl_->Unlock() : 0; }
int Kalvo_Mutex::IsLocked() { return impl_ != nullptr ? impl_->IsLocked() : 0; }
