// The numbers of new descriptors.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_NEW_DESCRIPTOR_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_NEW_DESCRIPTOR_H_

#include <fcntl.h>
#include <unistd.h>

namespace platform {

// Moves a new descriptor out of the places of the standard streams, which a process that has
// closed these would write to. -1, with it closed, on failure, and for a negative one.
inline int above_standard_streams(int descriptor) {
  if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
  const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(descriptor);
  return moved;
}

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_NEW_DESCRIPTOR_H_
