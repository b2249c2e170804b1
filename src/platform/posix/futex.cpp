#include "platform/posix/futex.h"

#include <errno.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {
namespace {

static_assert(sizeof(std::atomic<std::uint32_t>) == 4 &&
                  std::atomic<std::uint32_t>::is_always_lock_free,
              "the kernel reads the word itself");

int Operation(int operation, FutexScope scope) {
  return scope == FutexScope::kProcess ? operation | FUTEX_PRIVATE_FLAG : operation;
}

}  // namespace

bool futex_wait(const std::atomic<std::uint32_t>* word, std::uint32_t expected,
                const timespec* deadline, FutexScope scope) {
  // The bitset form takes an absolute time on CLOCK_MONOTONIC.
  const long result = syscall(SYS_futex, word, Operation(FUTEX_WAIT_BITSET, scope), expected,
                              deadline, nullptr, FUTEX_BITSET_MATCH_ANY);
  return result == 0 || errno != ETIMEDOUT;
}

void futex_wake(const std::atomic<std::uint32_t>* word, std::int32_t count, FutexScope scope) {
  syscall(SYS_futex, word, Operation(FUTEX_WAKE, scope), count, nullptr, nullptr, 0);
}

}  // namespace platform
