// The counting semaphore with a maximum, which can have a name and then spans processes.

#ifndef KALVOBASE_SRC_PLATFORM_SEMAPHORE_H_
#define KALVOBASE_SRC_PLATFORM_SEMAPHORE_H_

#include <cstdint>

#include "platform/wait_result.h"

namespace platform {

struct Semaphore;

// Makes a semaphore, or opens the one that has this name and leaves its counts alone. A
// null or empty name makes one of this process. Null on failure, which includes counts
// other than 0 <= initial <= maximum, 1 <= maximum.
Semaphore* semaphore_open(const char* name, std::int32_t initial, std::int32_t maximum);

// Gives one semaphore_open back. Threads of this process that still wait go on waiting,
// and the memory stays until the last of them has left.
void semaphore_close(Semaphore* semaphore);

// Adds `count`. False, with nothing added, if it is below 1 or would pass the maximum.
bool semaphore_post(Semaphore* semaphore, std::int32_t count);

// kWaitSignalled, kWaitTimedOut or kWaitFailed.
std::uint32_t semaphore_wait(Semaphore* semaphore, std::uint32_t ms);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_SEMAPHORE_H_
