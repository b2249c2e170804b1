// How long a thread looks before it lets the kernel put it to sleep.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_SPIN_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_SPIN_H_

namespace platform {

// A few microseconds: about what sleeping and being woken again would cost.
constexpr int kSpins = 100;

// Tells the processor that this is a spinning loop.
inline void spin_pause() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_SPIN_H_
