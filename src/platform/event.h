// The manual-reset event between the threads of one process.
//
// Setting and resetting an event that nobody blocks on, and waiting for one that is
// set, make no system call.

#ifndef KALVOBASE_SRC_PLATFORM_EVENT_H_
#define KALVOBASE_SRC_PLATFORM_EVENT_H_

#include <cstdint>

#include "platform/wait_result.h"

namespace platform {

struct Event;

// An unsignalled event; null if memory ran out. The other calls take a null event and
// give their failure result.
Event* event_create();
void event_destroy(Event* event);

// Wakes every thread that blocks on the event at this moment, also if it is reset again
// before they run. False on failure.
bool event_set(Event* event);
bool event_reset(Event* event);

// The two halves of event_set, for a caller that sets under a lock and wakes behind it.
// event_signal tells whether event_wake must follow; that one uses nothing of the event but
// its address. Once the event is set, whoever waited for it may destroy it.
bool event_signal(Event* event);
void event_wake(const Event* event);

// kWaitSignalled, kWaitTimedOut or kWaitFailed.
std::uint32_t event_wait(Event* event, std::uint32_t ms);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_EVENT_H_
