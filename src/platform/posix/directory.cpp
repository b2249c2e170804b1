#include "platform/directory.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/file_status.h"

namespace platform {

// Never made: the system's own stream of entries stands behind the pointer.
namespace {

DIR* Stream(Directory* directory) { return reinterpret_cast<DIR*>(directory); }

int Descriptor(Directory* directory) { return dirfd(Stream(directory)); }

DirectoryHandle OpenAt(int at, const char* name, int flags) {
  const int descriptor = openat(at, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags);
  if (descriptor < 0) return nullptr;
  DIR* stream = fdopendir(descriptor);
  if (stream == nullptr) close(descriptor);
  return DirectoryHandle(reinterpret_cast<Directory*>(stream));
}

EntryKind KindOf(DIR* stream, const dirent& entry) {
  if (entry.d_type == DT_DIR) return EntryKind::kDirectory;
  if (entry.d_type == DT_LNK) return EntryKind::kLink;
  if (entry.d_type != DT_UNKNOWN) return EntryKind::kFile;
  struct stat status;
  if (fstatat(dirfd(stream), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return EntryKind::kFile;
  }
  if (S_ISLNK(status.st_mode)) return EntryKind::kLink;
  return S_ISDIR(status.st_mode) ? EntryKind::kDirectory : EntryKind::kFile;
}

}  // namespace

DirectoryHandle directory_open(const std::string& path, bool follow) {
  return OpenAt(AT_FDCWD, path.c_str(), follow ? 0 : O_NOFOLLOW);
}

DirectoryHandle directory_open_child(Directory* directory, const char* name) {
  return OpenAt(Descriptor(directory), name, O_NOFOLLOW);
}

DirectoryHandle directory_open_parent(Directory* directory) {
  return OpenAt(Descriptor(directory), "..", 0);
}

void directory_close(Directory* directory) { closedir(Stream(directory)); }

bool directory_next(Directory* directory, Entry* entry) {
  while (const dirent* next = readdir(Stream(directory))) {
    if (strcmp(next->d_name, ".") == 0 || strcmp(next->d_name, "..") == 0) continue;
    entry->name = next->d_name;
    entry->kind = KindOf(Stream(directory), *next);
    return true;
  }
  return false;
}

bool entry_status(Directory* directory, const char* name, FileStatus* status) {
  return status_at(Descriptor(directory), name, 0, status);
}

bool entry_remove_file(Directory* directory, const char* name) {
  return unlinkat(Descriptor(directory), name, 0) == 0;
}

bool entry_remove_directory(Directory* directory, const char* name) {
  return unlinkat(Descriptor(directory), name, AT_REMOVEDIR) == 0;
}

FileIdentity directory_identity(Directory* directory) {
  FileStatus status;
  status_at(Descriptor(directory), "", AT_EMPTY_PATH, &status);
  return status.identity;
}

FileIdentity entry_identity(Directory* directory, const char* name) {
  FileStatus status;
  status_at(Descriptor(directory), name, AT_SYMLINK_NOFOLLOW, &status);
  return status.identity;
}

bool directory_is_root(Directory* directory) {
  FileStatus root;
  return file_status("/", &root) && directory_identity(directory) == root.identity;
}

}  // namespace platform
