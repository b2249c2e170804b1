// The status of a file by its name in a directory.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_FILE_STATUS_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_FILE_STATUS_H_

#include "platform/file.h"

namespace platform {

// `flags` as for fstatat. False, with `status` as it was, if the system does not tell.
bool status_at(int directory, const char* name, int flags, FileStatus* status);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_FILE_STATUS_H_
