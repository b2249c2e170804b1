#include "platform/file.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

#include "platform/posix/file_status.h"
#include "platform/posix/transfer.h"

namespace platform {
namespace {

// Keeps the signal of a broken pipe from the calling thread while it lives.
class PipeSignalHeld {
 public:
  PipeSignalHeld() {
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  PipeSignalHeld(const PipeSignalHeld&) = delete;
  PipeSignalHeld& operator=(const PipeSignalHeld&) = delete;
  ~PipeSignalHeld() {
    const int error = errno;
    if (error == EPIPE && !wasPending_) {
      const timespec atOnce = {};
      while (sigtimedwait(&pipe_, nullptr, &atOnce) == -1 && errno == EINTR) {
      }
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = error;
  }

 private:
  sigset_t pipe_;
  sigset_t before_;
  bool wasPending_;
};

// The administrator of the machine may use what a volume keeps in reserve. That of a user
// namespace, whose numbers stand for others, may not.
bool MayUseReserve() {
  if (geteuid() != 0) return false;
  const std::unique_ptr<FILE, int (*)(FILE*)> map(fopen("/proc/self/uid_map", "re"), fclose);
  unsigned inside = 0;
  unsigned outside = 0;
  unsigned count = 0xFFFFFFFF;
  if (map != nullptr && fscanf(map.get(), "%u %u %u", &inside, &outside, &count) != 3) return false;
  return inside == 0 && outside == 0 && count == 0xFFFFFFFF;
}

}  // namespace

const char kPathSeparator = '/';
const std::size_t kPathLimit = PATH_MAX - 1;

std::string system_path(const char* path) {
  std::string result(path != nullptr ? path : "");
  std::replace(result.begin(), result.end(), '\\', '/');
  return result;
}

bool path_is_absolute(const char* path) { return *path == '/' || *path == '\\'; }

std::string current_directory() {
  const std::unique_ptr<char, void (*)(void*)> path(getcwd(nullptr, 0), free);
  // A directory that the process cannot reach any more is told in another form.
  return path != nullptr && *path == '/' ? path.get() : std::string();
}

bool file_status(const std::string& path, FileStatus* status) {
  return status_at(AT_FDCWD, path.c_str(), 0, status);
}

bool name_status(const std::string& path, FileStatus* status) {
  return status_at(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, status);
}

bool file_exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

bool link_make(const std::string& target, const std::string& path) {
  return symlink(target.c_str(), path.c_str()) == 0;
}

std::string link_target(const std::string& path) {
  char target[PATH_MAX];
  const ssize_t n = readlink(path.c_str(), target, sizeof(target));
  return std::string(target, n > 0 ? static_cast<std::size_t>(n) : 0);
}

std::string resolve_links(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), free);
  return resolved != nullptr ? resolved.get() : std::string();
}

bool volume_space(const std::string& path, VolumeSpace* space) {
  struct statvfs volume;
  if (statvfs(path.c_str(), &volume) != 0) return false;
  space->total = std::uint64_t{volume.f_blocks} * volume.f_frsize;
  space->free = std::uint64_t{volume.f_bfree} * volume.f_frsize;
  space->available =
      MayUseReserve() ? space->free : std::uint64_t{volume.f_bavail} * volume.f_frsize;
  return true;
}

namespace {

// What hosts pass for binary files. Some systems use this bit for a flag of their own, which must
// then reach the system.
constexpr int kHostBinary = 0x8000;
constexpr int kSystemFlags =
    O_NOFOLLOW | O_DIRECTORY | O_NOCTTY | O_NONBLOCK | O_SYNC | O_DSYNC | O_DIRECT;

}  // namespace

const int kOpenBinary = kHostBinary & ~kSystemFlags;
const int kOpenReadOnly = O_RDONLY;
const int kOpenWriteOnly = O_WRONLY;
const int kOpenReadWrite = O_RDWR;
const int kOpenCreate = O_CREAT;
const int kOpenTruncate = O_TRUNC;
const int kOpenAppend = O_APPEND;

int file_open(const std::string& path, int flags, int permissions) {
  int descriptor;
  do {
    descriptor = open(path.c_str(), (flags & ~kOpenBinary) | O_CLOEXEC, permissions);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) return -1;
  // Only reading could be asked of a directory, and it fails at the first byte.
  struct stat status;
  if ((flags & O_ACCMODE) == O_RDONLY && fstat(descriptor, &status) == 0 &&
      S_ISDIR(status.st_mode)) {
    close(descriptor);
    errno = EISDIR;
    return -1;
  }
  return descriptor;
}

int file_close(int descriptor) { return close(descriptor); }

bool file_is_nameless(int descriptor) {
  struct stat status;
  return fstat(descriptor, &status) == 0 && status.st_nlink == 0;
}

std::int64_t file_read(int descriptor, char* buffer, std::size_t size) {
  return transfer([=] { return read(descriptor, buffer, size); });
}

std::int64_t file_write(int descriptor, const char* data, std::size_t size) {
  return transfer([=] { return write(descriptor, data, size); });
}

bool file_is_pipe(int descriptor) {
  struct stat status;
  return fstat(descriptor, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

std::int64_t pipe_write(int descriptor, const char* data, std::size_t size) {
  const PipeSignalHeld held;
  return file_write(descriptor, data, size);
}

std::int64_t file_seek(int descriptor, std::int64_t offset, int whence) {
  return lseek(descriptor, static_cast<off_t>(offset), whence);
}

bool directory_make(const std::string& path) { return mkdir(path.c_str(), 0777) == 0; }

bool file_rename(const std::string& from, const std::string& to) {
  return rename(from.c_str(), to.c_str()) == 0;
}

bool file_remove(const std::string& path) { return unlink(path.c_str()) == 0; }

bool directory_remove(const std::string& path) { return rmdir(path.c_str()) == 0; }

int last_file_error() { return errno; }

}  // namespace platform
