// What every waiting call of the platform layer gives back.

#ifndef KALVOBASE_SRC_PLATFORM_WAIT_RESULT_H_
#define KALVOBASE_SRC_PLATFORM_WAIT_RESULT_H_

#include <cstdint>

namespace platform {

constexpr std::uint32_t kWaitSignalled = 0;
constexpr std::uint32_t kWaitAbandoned = 128;  // taken, but its last owner never released it
constexpr std::uint32_t kWaitTimedOut = 258;
constexpr std::uint32_t kWaitFailed = 0xFFFFFFFF;

// The time-out that means no limit.
constexpr std::uint32_t kNoLimit = 0xFFFFFFFF;

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_WAIT_RESULT_H_
