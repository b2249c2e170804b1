// The mutex that can have a name and then spans processes.
//
// Its owner can take it again and counts levels. When an owner's thread or process ends
// without releasing, the next one to take it gets kWaitAbandoned and holds it.

#ifndef KALVOBASE_SRC_PLATFORM_MUTEX_H_
#define KALVOBASE_SRC_PLATFORM_MUTEX_H_

#include <cstdint>

#include "platform/wait_result.h"

namespace platform {

struct Mutex;

// Makes a mutex, or opens the one that has this name. With `owned` a mutex that this
// call makes is held by the caller. A null or empty name makes one of this process.
// Null on failure.
Mutex* mutex_open(const char* name, bool owned);

// Gives one mutex_open back. With the last one of this process, levels that the calling
// thread holds are released.
void mutex_close(Mutex* mutex);

// kWaitSignalled and kWaitAbandoned mean that the caller holds the mutex.
std::uint32_t mutex_wait(Mutex* mutex, std::uint32_t ms);

// Whether another living thread holds the mutex. Asking takes nothing from anybody.
bool mutex_is_held_elsewhere(Mutex* mutex);

// False if the calling thread does not hold the mutex.
bool mutex_release(Mutex* mutex);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_MUTEX_H_
