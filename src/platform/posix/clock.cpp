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

std::atomic<std::uint32_t> tick_shift{0};

}  // namespace

std::uint32_t tick_count() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  const std::uint64_t ms = static_cast<std::uint64_t>(now.tv_sec) * 1000 +
                           static_cast<std::uint64_t>(now.tv_nsec) / 1000000;
  return static_cast<std::uint32_t>(ms) + tick_shift.load(std::memory_order_relaxed);
}

void shift_tick_count_for_test(std::uint32_t shift) { tick_shift = shift; }

WallTime wall_time() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return {static_cast<long>(now.tv_sec), static_cast<int>(now.tv_nsec / 1000000)};
}

void sleep_ms(std::uint32_t ms) {
  if (ms == 0) sched_yield();
  while (ms == kNoLimit) pause();
  const timespec until = deadline_after(ms);
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
  }
}

}  // namespace platform
