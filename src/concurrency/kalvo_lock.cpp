#include <new>

#include "concurrency/mp_lock.h"

Kalvo_BaseLock::Kalvo_BaseLock() = default;
Kalvo_BaseLock::Kalvo_BaseLock(const Kalvo_BaseLock&) {}
Kalvo_BaseLock& Kalvo_BaseLock::operator=(const Kalvo_BaseLock&) { return *this; }
Kalvo_BaseLock::~Kalvo_BaseLock() = default;

void Kalvo_BaseLock::Lock() {}
void Kalvo_BaseLock::Unlock() {}

Kalvo_Lock::Kalvo_Lock() : impl_(new (std::nothrow) MP_Lock) {}
Kalvo_Lock::Kalvo_Lock(const Kalvo_Lock& other) = default;
Kalvo_Lock& Kalvo_Lock::operator=(const Kalvo_Lock& other) = default;
Kalvo_Lock::~Kalvo_Lock() { delete impl_; }

void Kalvo_Lock::Lock() {
  if (impl_ != nullptr) impl_->Lock();
}

void Kalvo_Lock::Unlock() {
  if (impl_ != nullptr) impl_->Unlock();
}

Kalvo_AutoLock::Kalvo_AutoLock(Kalvo_BaseLock* lock) : lock_(lock) {
  if (lock_ != nullptr) lock_->Lock();
}

Kalvo_AutoLock::Kalvo_AutoLock(const Kalvo_AutoLock& other) = default;
Kalvo_AutoLock& Kalvo_AutoLock::operator=(const Kalvo_AutoLock& other) = default;

Kalvo_AutoLock::~Kalvo_AutoLock() {
  if (lock_ != nullptr) lock_->Unlock();
}

void Kalvo_AutoLock::Lock() {}
