#include "platform/posix/file_status.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#ifndef STATX_BTIME  // not every C library declares statx
#include <linux/stat.h>
#endif

namespace platform {
namespace {

constexpr unsigned kPermissions = 0777;

// Where the kernel, or a sandbox, has no statx.
bool OldStatusAt(int directory, const char* name, int flags, FileStatus* status) {
  struct stat old;
  if (fstatat(directory, name, &old, flags) != 0) return false;
  status->directory = S_ISDIR(old.st_mode);
  status->regular = S_ISREG(old.st_mode);
  status->permissions = static_cast<int>(old.st_mode & kPermissions);
  status->size = old.st_size;
  status->accessed = old.st_atime;
  status->modified = old.st_mtime;
  status->created = old.st_ctim.tv_sec;
  status->createdNanoseconds = static_cast<std::int32_t>(old.st_ctim.tv_nsec);
  status->birthKnown = false;
  status->names = old.st_nlink;
  status->identity = {old.st_dev, old.st_ino};
  return true;
}

}  // namespace

bool status_at(int directory, const char* name, int flags, FileStatus* status) {
  struct statx now;
  if (syscall(SYS_statx, directory, name, flags, STATX_BASIC_STATS | STATX_BTIME, &now) != 0) {
    return (errno == ENOSYS || errno == EPERM) && OldStatusAt(directory, name, flags, status);
  }
  status->directory = S_ISDIR(now.stx_mode);
  status->regular = S_ISREG(now.stx_mode);
  status->permissions = static_cast<int>(now.stx_mode & kPermissions);
  status->size = static_cast<std::int64_t>(now.stx_size);
  status->accessed = now.stx_atime.tv_sec;
  status->modified = now.stx_mtime.tv_sec;
  status->birthKnown = (now.stx_mask & STATX_BTIME) != 0;
  const statx_timestamp& created = status->birthKnown ? now.stx_btime : now.stx_ctime;
  status->created = created.tv_sec;
  status->createdNanoseconds = static_cast<std::int32_t>(created.tv_nsec);
  status->names = now.stx_nlink;
  status->identity = {makedev(now.stx_dev_major, now.stx_dev_minor), now.stx_ino};
  return true;
}

}  // namespace platform
