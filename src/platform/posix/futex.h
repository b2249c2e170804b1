// The kernel's wait on a 32-bit word.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_FUTEX_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_FUTEX_H_

#include <time.h>

#include <atomic>
#include <cstdint>

namespace platform {

// Whether the word lies in memory that other processes see.
enum class FutexScope { kProcess, kShared };

// Sleeps as long as *word is `expected`, until a wake or the deadline on CLOCK_MONOTONIC;
// a null deadline means no limit. May return early; false only when the deadline passed.
bool futex_wait(const std::atomic<std::uint32_t>* word, std::uint32_t expected,
                const timespec* deadline, FutexScope scope);

// Wakes up to `count` sleepers.
void futex_wake(const std::atomic<std::uint32_t>* word, std::int32_t count, FutexScope scope);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_FUTEX_H_
