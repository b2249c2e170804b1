// A point in time at which a wait gives up.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_DEADLINE_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_DEADLINE_H_

#include <time.h>

#include <cstdint>

namespace platform {

// Now plus `ms` on CLOCK_MONOTONIC. Waits use the absolute form, so that one that a
// signal interrupts goes on with the time that is left.
inline timespec deadline_after(std::uint32_t ms) {
  timespec at;
  clock_gettime(CLOCK_MONOTONIC, &at);
  at.tv_sec += static_cast<time_t>(ms / 1000);
  at.tv_nsec += static_cast<long>(ms % 1000) * 1000000L;
  if (at.tv_nsec >= 1000000000L) {
    at.tv_nsec -= 1000000000L;
    at.tv_sec += 1;
  }
  return at;
}

// What is left until then, for calls that take no absolute time; 0 once it has passed.
inline timespec time_until(const timespec& deadline) {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  timespec left = {deadline.tv_sec - now.tv_sec, deadline.tv_nsec - now.tv_nsec};
  if (left.tv_nsec < 0) {
    left.tv_nsec += 1000000000L;
    left.tv_sec -= 1;
  }
  return left.tv_sec < 0 ? timespec{} : left;
}

inline bool has_passed(const timespec& deadline) {
  const timespec left = time_until(deadline);
  return left.tv_sec == 0 && left.tv_nsec == 0;
}

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_DEADLINE_H_
