// Whether the thread sanitizer watches, which learns of threads only by the calls that make and
// join them.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_SANITIZER_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_SANITIZER_H_

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KALVOBASE_THREAD_SANITIZER 1
#endif
#elif defined(__SANITIZE_THREAD__)
#define KALVOBASE_THREAD_SANITIZER 1
#endif

#if !defined(KALVOBASE_THREAD_SANITIZER)
#define KALVOBASE_THREAD_SANITIZER 0
#endif

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_SANITIZER_H_
