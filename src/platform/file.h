// Files, by name and by descriptor, and what the file system knows of them.
//
// Names are in the form of the system, which system_path gives. Descriptors close when the
// process starts another program.

#ifndef KALVOBASE_SRC_PLATFORM_FILE_H_
#define KALVOBASE_SRC_PLATFORM_FILE_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace platform {

// --- Names ----------------------------------------------------------------------------

// The byte that separates components in the paths that the system itself gives.
extern const char kPathSeparator;

// No longer path can be opened.
extern const std::size_t kPathLimit;

// A path as hosts write them, with both separators, in the form of the system. Empty for
// null.
std::string system_path(const char* path);

// Whether a path of a host begins where the file system begins.
bool path_is_absolute(const char* path);

// The current directory; empty if the system does not tell.
std::string current_directory();

// --- What the file system knows -------------------------------------------------------

// Two names are one file if these are equal.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
};
inline bool operator==(const FileIdentity& a, const FileIdentity& b) {
  return a.device == b.device && a.number == b.number;
}

struct FileStatus {
  bool directory = false;
  bool regular = false;  // holds bytes, unlike devices and pipes
  int permissions = 0;
  std::int64_t size = 0;      // in bytes
  std::int64_t accessed = 0;  // these three in seconds since 1970
  std::int64_t modified = 0;
  std::int64_t created = 0;             // the last change where the file system keeps no birth time
  std::int32_t createdNanoseconds = 0;  // behind that second
  bool birthKnown = false;              // `created` is the birth time
  std::uint64_t names = 0;              // how many hard links the file has
  FileIdentity identity;
};

// Of a link, the status of what it points to. False if there is none.
bool file_status(const std::string& path, FileStatus* status);

// Of a link, the status of the link itself.
bool name_status(const std::string& path, FileStatus* status);

bool file_exists(const std::string& path);

// Makes a link at `path` to `target`, which is told from where the link lies. Where a system
// keeps its links for administrators, nothing is made.
bool link_make(const std::string& target, const std::string& path);

// What a link tells as its target; empty if there is no such link.
std::string link_target(const std::string& path);

// The path without links; empty if it leads nowhere.
std::string resolve_links(const std::string& path);

// The size of the volume that holds `path`, what is free on it, and what of that this process
// may use, in bytes.
struct VolumeSpace {
  std::uint64_t total;
  std::uint64_t free;
  std::uint64_t available;
};
bool volume_space(const std::string& path, VolumeSpace* space);

// --- Opening, reading, writing --------------------------------------------------------

// The flags are those that hosts hand in; the flag for binary files, which not every system
// has, does nothing where there is none.
extern const int kOpenReadOnly;
extern const int kOpenWriteOnly;
extern const int kOpenReadWrite;
extern const int kOpenCreate;
extern const int kOpenTruncate;
extern const int kOpenAppend;
extern const int kOpenBinary;

// The descriptor, or -1. A directory is not opened.
int file_open(const std::string& path, int flags, int permissions);

int file_close(int descriptor);

// Whether an open file has been removed and has no name any more.
bool file_is_nameless(int descriptor);

// The number of bytes, 0 at the end, kTransferWouldBlock or kTransferFailed.
std::int64_t file_read(int descriptor, char* buffer, std::size_t size);
std::int64_t file_write(int descriptor, const char* data, std::size_t size);

// True for pipes and sockets: writing to one without a reader raises SIGPIPE.
bool file_is_pipe(int descriptor);

// As file_write; no signal is raised.
std::int64_t pipe_write(int descriptor, const char* data, std::size_t size);

// Moves the position of a descriptor. The new one, or -1.
std::int64_t file_seek(int descriptor, std::int64_t offset, int whence);

// --- Making, renaming, removing -------------------------------------------------------

bool directory_make(const std::string& path);

// Read-only files, too. A link is renamed or removed, not what it points to.
bool file_rename(const std::string& from, const std::string& to);
bool file_remove(const std::string& path);

// An empty directory, and nothing else.
bool directory_remove(const std::string& path);

// --- Failures -------------------------------------------------------------------------

// The number of the last failure in the calling thread.
int last_file_error();

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_FILE_H_
