// What files and sockets have in common on the way in and out.

#ifndef KALVOBASE_SRC_PLATFORM_DESCRIPTOR_H_
#define KALVOBASE_SRC_PLATFORM_DESCRIPTOR_H_

#include <cstdint>

namespace platform {

// What a transfer gives instead of a count of bytes. It is tried again after a signal.
constexpr std::int64_t kTransferFailed = -1;
constexpr std::int64_t kTransferWouldBlock = -2;

enum class WaitFor { kReading, kWriting };

// Waits until a transfer would not block, whatever signals arrive: 1; 0 after `ms`
// milliseconds, -1 on failure. Takes descriptors of any number.
int descriptor_wait(int descriptor, WaitFor what, std::uint32_t ms);

// The same, or until something exceptional happened, which for a socket is urgent data. 2 if
// both are true.
int descriptor_wait_or_exception(int descriptor, WaitFor what, std::uint32_t ms);

bool descriptor_is_open(int descriptor);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_DESCRIPTOR_H_
