// The steady clock in milliseconds, sleeping by it, and the time of day.

#ifndef KALVOBASE_SRC_PLATFORM_CLOCK_H_
#define KALVOBASE_SRC_PLATFORM_CLOCK_H_

#include <cstdint>

namespace platform {

// Milliseconds of a clock that never jumps, wrapping at 32 bits.
std::uint32_t tick_count();

// Adds `shift` to what tick_count gives, so that a test can stand just before the wrap.
void shift_tick_count_for_test(std::uint32_t shift);

// Makes tick_count give `tick` until the next call of one of the two.
void hold_tick_count_for_test(std::uint32_t tick);

// Sleeps the whole time, whatever signals arrive: for 0 only until others have had their
// turn, for 0xFFFFFFFF for ever.
void sleep_ms(std::uint32_t ms);

// The time of day, which somebody may set at any time.
struct WallTime {
  long seconds;  // since 1970
  int milliseconds;
};
WallTime wall_time();

// Makes wall_time give `seconds`, so that a test need not wait for midnight; 0 lets it go on.
void hold_wall_time_for_test(long seconds);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_CLOCK_H_
