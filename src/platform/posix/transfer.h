// What reads and writes of all kinds have in common.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_TRANSFER_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_TRANSFER_H_

#include <errno.h>
#include <sys/types.h>

#include <cstdint>

#include "platform/descriptor.h"

namespace platform {

// Runs a system call again for each signal that cut it short, and tells its result.
template <class Call>
std::int64_t transfer(Call call) {
  ssize_t n;
  do {
    n = call();
  } while (n < 0 && errno == EINTR);
  if (n >= 0) return n;
  return errno == EAGAIN || errno == EWOULDBLOCK ? kTransferWouldBlock : kTransferFailed;
}

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_TRANSFER_H_
