// The kernel's number of the calling thread.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_THREAD_NUMBER_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_THREAD_NUMBER_H_

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

namespace platform {

// As the kernel tells it now: unique among all processes.
inline std::uint32_t thread_number() { return static_cast<std::uint32_t>(syscall(SYS_gettid)); }

// Asked once a thread. After a fork the child's only thread goes on with the number that it
// had, which no other thread of the child can get: it still holds what it held.
inline std::uint32_t remembered_thread_number() {
  __attribute__((tls_model("initial-exec"))) static thread_local std::uint32_t number = 0;
  if (number == 0) number = thread_number();
  return number;
}

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_THREAD_NUMBER_H_
