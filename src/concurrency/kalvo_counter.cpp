#include "kalvobase/lock.h"

Kalvo_Counter::Kalvo_Counter() : value_(0) {}
Kalvo_Counter::Kalvo_Counter(const Kalvo_Counter& other) = default;
Kalvo_Counter& Kalvo_Counter::operator=(const Kalvo_Counter& other) = default;
Kalvo_Counter::~Kalvo_Counter() = default;

int Kalvo_Counter::operator=(int value) { return static_cast<int>(Set(value)); }

long Kalvo_Counter::Get() {
  Kalvo_AutoLock guard(&lock_);
  return value_;
}

long Kalvo_Counter::Set(long value) {
  Kalvo_AutoLock guard(&lock_);
  value_ = static_cast<Kalvo_Long>(value);
  return value_;
}

long Kalvo_Counter::Inc() { return Add(1); }

long Kalvo_Counter::Dec() { return Add(-1); }

long Kalvo_Counter::Add(int n) {
  Kalvo_AutoLock guard(&lock_);
  value_ = static_cast<Kalvo_Long>(static_cast<Kalvo_ULong>(value_) + static_cast<Kalvo_ULong>(n));
  return value_;
}
