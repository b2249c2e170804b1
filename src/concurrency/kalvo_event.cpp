#include <new>

#include "concurrency/mp_event.h"
#include "kalvobase/waitable.h"

Kalvo_BaseEvent::Kalvo_BaseEvent() = default;
Kalvo_BaseEvent::Kalvo_BaseEvent(const Kalvo_BaseEvent&) {}
Kalvo_BaseEvent& Kalvo_BaseEvent::operator=(const Kalvo_BaseEvent&) { return *this; }
Kalvo_BaseEvent::~Kalvo_BaseEvent() = default;

int Kalvo_BaseEvent::Set() { return 0; }
int Kalvo_BaseEvent::Reset() { return 0; }
int Kalvo_BaseEvent::Wait(unsigned long) { return 0; }
int Kalvo_BaseEvent::Pulse() { return 1; }
int Kalvo_BaseEvent::IsManualReset() { return 1; }

Kalvo_Event::Kalvo_Event(int manual, int signalled, const char*)
    : impl_(new (std::nothrow) MP_Event(manual != 0, signalled != 0)) {}
Kalvo_Event::Kalvo_Event(const Kalvo_Event& other) = default;
Kalvo_Event& Kalvo_Event::operator=(const Kalvo_Event& other) = default;
Kalvo_Event::~Kalvo_Event() { delete impl_; }

int Kalvo_Event::Set() { return impl_ != nullptr ? impl_->Set() : 0; }
int Kalvo_Event::Reset() { return impl_ != nullptr ? impl_->Reset() : 0; }
int Kalvo_Event::Wait(unsigned long ms) {
  return impl_ != nullptr ? impl_->Wait(ms) : static_cast<int>(platform::kWaitFailed);
}
void* Kalvo_Event::GetHandle() { return impl_ != nullptr ? impl_->handle() : nullptr; }
