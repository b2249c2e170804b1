#include "files/file_copy.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>

#include "files/mp_file_stream.h"
#include "files/path.h"
#include "platform/file.h"

namespace {

constexpr int kPiece = 128 * 1024;

constexpr int kRefused = -1;
constexpr int kIncomplete = -2;
constexpr int kReplacingFailed = -2;
constexpr int kRenamingFailed = -3;
constexpr int kSourceGone = -4;
constexpr int kAppendIncomplete = -5;
constexpr int kNoSource = -9;

enum Mode { kRefuse = 0, kReplace = 1 };  // any other appends

int AsResult(std::int64_t n) { return static_cast<int>(std::min<std::int64_t>(n, INT_MAX)); }

bool IsRegular(const std::string& path) {
  platform::FileStatus status;
  return platform::file_status(path, &status) && status.regular;
}

bool AreOneFile(const std::string& a, const std::string& b) {
  platform::FileStatus left;
  platform::FileStatus right;
  return platform::file_status(a, &left) && platform::file_status(b, &right) &&
         left.identity == right.identity;
}

// The directory that a path names its last component in, for the system.
std::string ParentOf(const std::string& path) {
  const std::size_t separator = path.rfind(platform::kPathSeparator);
  return separator == std::string::npos ? "." : path.substr(0, separator + 1);
}

// Two names of one file. The destination's name gets what the source's had. Refused are the same
// name under two paths, and a source that is a link, which would lead to itself or nowhere.
int ReplaceName(const std::string& from, const std::string& to, std::int64_t size) {
  platform::FileStatus source;
  platform::FileStatus destination;
  if (!platform::name_status(from, &source) || !platform::name_status(to, &destination) ||
      !platform::link_target(from).empty()) {
    return kRefused;
  }
  if (!(source.identity == destination.identity)) {  // the destination is a link
    return platform::file_rename(from, to) ? AsResult(size) : kRenamingFailed;
  }
  // A file with a single hard link has two names where the volume does not tell upper case from
  // lower case, or is mounted twice.
  const bool oneName = source.names < 2 || source.directory ||
                       (path::LastComponent(from) == path::LastComponent(to) &&
                        AreOneFile(ParentOf(from), ParentOf(to)));
  if (oneName) return kRefused;
  // The system renames no hard link onto another of the same file.
  return platform::file_remove(from) ? AsResult(size) : kRenamingFailed;
}

// Copies a whole file behind what `flags` leave of the destination. Whether as much was
// written as the source had. If not, the destination is removed, a link to it staying; but it
// is left alone as long as it was not opened, and if it is a device or a pipe.
bool CopyContent(const char* source, const char* destination, int flags,
                 const platform::FileStatus& sourceStatus) {
  MP_FileStream in;
  MP_FileStream out;
  if (in.Open(source, platform::kOpenReadOnly | platform::kOpenBinary, 0) < 0) return false;
  if (out.Open(destination, flags | platform::kOpenBinary, sourceStatus.permissions) < 0) {
    return sourceStatus.size == 0;
  }
  std::int64_t copied = 0;
  const std::unique_ptr<char[]> piece(new char[kPiece]);
  bool written = true;
  for (int n;
       written && copied <= sourceStatus.size && (n = in.ReadBlock(piece.get(), kPiece)) > 0;) {
    written = out.WriteBlock(piece.get(), n) == n;
    copied += n;
  }
  written = out.Flush() > 0 && written;
  if (written && copied == sourceStatus.size) return true;
  out.Close();
  const std::string incomplete = platform::resolve_links(platform::system_path(destination));
  if (IsRegular(incomplete)) platform::file_remove(incomplete);
  return false;
}

}  // namespace

int SafeCopy(const char* source, const char* destination, int mode) {
  path::MakeParents(destination);
  const std::string from = platform::system_path(source);
  const std::string to = platform::system_path(destination);
  int flags = platform::kOpenWriteOnly;
  if (!platform::file_exists(to)) {
    flags |= platform::kOpenCreate | platform::kOpenTruncate;
  } else if (mode == kRefuse || AreOneFile(from, to)) {
    return kRefused;
  } else {
    flags |= mode == kReplace ? platform::kOpenTruncate : platform::kOpenAppend;
  }
  platform::FileStatus status;
  if (!platform::file_status(from, &status)) return kNoSource;
  return CopyContent(source, destination, flags, status) ? AsResult(status.size) : kIncomplete;
}

int SafeRename(const char* source, const char* destination, int mode) {
  const std::string from = platform::system_path(source);
  const std::string to = platform::system_path(destination);
  platform::FileStatus status;
  if (!platform::file_status(from, &status)) return kNoSource;
  path::MakeParents(destination);
  if (!platform::file_exists(to)) {
    return platform::file_rename(from, to) ? AsResult(status.size) : kRenamingFailed;
  }
  if (mode == kRefuse) return kRefused;
  if (AreOneFile(from, to)) return ReplaceName(from, to, status.size);
  if (mode == kReplace) {
    platform::file_remove(to);
    return platform::file_rename(from, to) ? AsResult(status.size) : kReplacingFailed;
  }
  if (!platform::file_status(from, &status)) return kSourceGone;
  if (!IsRegular(to)) return kAppendIncomplete;
  const int flags = platform::kOpenReadWrite | platform::kOpenCreate | platform::kOpenAppend;
  if (!CopyContent(source, destination, flags, status)) return kAppendIncomplete;
  platform::file_remove(from);
  return AsResult(status.size);
}
