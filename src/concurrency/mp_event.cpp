#include "concurrency/mp_event.h"

#include <cstdint>

MP_Event::MP_Event(bool manual, bool signalled)
    : event_(platform::event_create()), signalled_(signalled), manual_(manual) {}

MP_Event::~MP_Event() { platform::event_destroy(event_); }

int MP_Event::Set() {
  Kalvo_AutoLock guard(&lock_);
  const bool done = platform::event_set(event_);
  if (signalled_) return 0;
  signalled_ = true;
  return done;
}

int MP_Event::Reset() {
  Kalvo_AutoLock guard(&lock_);
  signalled_ = false;
  return platform::event_reset(event_);
}

int MP_Event::Wait(unsigned long ms) {
  {
    Kalvo_AutoLock guard(&lock_);
    if (signalled_) {
      if (!manual_) {
        signalled_ = false;
        platform::event_reset(event_);
      }
      return platform::kWaitSignalled;
    }
  }
  std::uint32_t result = platform::event_wait(event_, static_cast<std::uint32_t>(ms));
  // Taken again under manual reset too: whoever was woken may destroy the event, and the
  // Set that woke it must have let go by then.
  Kalvo_AutoLock guard(&lock_);
  if (!manual_) {
    // A Set that came while the wait was timing out would be lost with the reset.
    if (result == platform::kWaitTimedOut && signalled_) result = platform::kWaitSignalled;
    signalled_ = false;
    platform::event_reset(event_);
  }
  return static_cast<int>(result);
}
