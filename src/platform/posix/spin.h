// Looking again for a moment before the kernel puts a thread to sleep.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_SPIN_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_SPIN_H_

namespace platform {

// Tells the processor that this is a spinning loop.
inline void spin_pause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

// Asks `done` until it gives true, at growing intervals, for a few microseconds in all:
// about what sleeping and being woken again would cost. The intervals leave the other
// thread alone with its cache line. False if it never was true.
template <class Done>
bool spin_until(Done done) {
  constexpr int kLongestInterval = 64;
  for (int interval = 8; interval <= kLongestInterval; interval *= 2) {
    for (int i = 0; i < interval; ++i) spin_pause();
    if (done()) return true;
  }
  return false;
}

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_SPIN_H_
