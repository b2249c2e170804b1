#include "platform/clock.h"

#include <errno.h>
#include <sched.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

#include "platform/posix/deadline.h"
#include "platform/wait_result.h"

namespace platform {
namespace {

// What a test adds to the tick count, or with this bit what it is.
constexpr std::uint64_t kHeld = std::uint64_t{1} << 32;
std::atomic<std::uint64_t> tick_of_test{0};

std::atomic<long> wall_of_test{0};

}  // namespace

std::uint32_t tick_count() {
  const std::uint64_t test = tick_of_test.load(std::memory_order_relaxed);
  if (test >= kHeld) return static_cast<std::uint32_t>(test);
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  const std::uint64_t ms = static_cast<std::uint64_t>(now.tv_sec) * 1000 +
                           static_cast<std::uint64_t>(now.tv_nsec) / 1000000;
  return static_cast<std::uint32_t>(ms + test);
}

void shift_tick_count_for_test(std::uint32_t shift) { tick_of_test = shift; }

void hold_tick_count_for_test(std::uint32_t tick) { tick_of_test = kHeld | tick; }

WallTime wall_time() {
  if (const long test = wall_of_test.load(std::memory_order_relaxed)) return {test, 0};
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return {static_cast<long>(now.tv_sec), static_cast<int>(now.tv_nsec / 1000000)};
}

void hold_wall_time_for_test(long seconds) { wall_of_test = seconds; }

void sleep_ms(std::uint32_t ms) {
  if (ms == 0) sched_yield();
  while (ms == kNoLimit) pause();
  const timespec until = deadline_after(ms);
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
  }
}

}  // namespace platform
