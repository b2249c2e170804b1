// What lies in a directory, and work on it that cannot be led elsewhere: names are looked up
// in the open directory, whatever happens to the path by which it was opened.

#ifndef KALVOBASE_SRC_PLATFORM_DIRECTORY_H_
#define KALVOBASE_SRC_PLATFORM_DIRECTORY_H_

#include <memory>
#include <string>

#include "platform/file.h"

namespace platform {

struct Directory;
void directory_close(Directory* directory);

struct DirectoryCloser {
  void operator()(Directory* directory) const { directory_close(directory); }
};
using DirectoryHandle = std::unique_ptr<Directory, DirectoryCloser>;

// Null if it cannot be opened. With `follow` false a link is not.
DirectoryHandle directory_open(const std::string& path, bool follow);

// A directory in this one, never through a link, "." being this one again; and the one that
// this one lies in.
DirectoryHandle directory_open_child(Directory* directory, const char* name);
DirectoryHandle directory_open_parent(Directory* directory);

enum class EntryKind { kFile, kDirectory, kLink };

struct Entry {
  std::string name;
  EntryKind kind;
};

// Gives the next entry but "." and "..", in the order in which the system keeps them. False
// behind the last.
bool directory_next(Directory* directory, Entry* entry);

// Of a link, the status of what it points to.
bool entry_status(Directory* directory, const char* name, FileStatus* status);

// Of a link, the link.
bool entry_remove_file(Directory* directory, const char* name);
bool entry_remove_directory(Directory* directory, const char* name);

FileIdentity directory_identity(Directory* directory);

// Of a link, the link. All zero if there is no such entry.
FileIdentity entry_identity(Directory* directory, const char* name);

// Whether it is where the file system begins, by whatever path it was opened.
bool directory_is_root(Directory* directory);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_DIRECTORY_H_
