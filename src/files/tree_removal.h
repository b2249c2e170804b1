// Deleting by pattern and by tree. Neither ever leaves the directory that it is given: links
// are removed, not followed.

#ifndef KALVOBASE_SRC_FILES_TREE_REMOVAL_H_
#define KALVOBASE_SRC_FILES_TREE_REMOVAL_H_

#include <string>

#include "platform/directory.h"

// Opens a directory that is to be emptied, by its path in the system's form. Null if that is the
// root of the file system by its name, also behind links, or by its identity, for which `isRoot`
// asks: one of the two checks may be deceived. Null for an empty path.
platform::DirectoryHandle OpenForRemoval(const std::string& path, bool follow,
                                         bool (*isRoot)(platform::Directory*));

// Deletes the files of a directory whose names match a pattern. A pattern may begin with
// sub-directories of that directory. If `recursive`, all directories next to the files are searched
// in the same way. Returns how many files matched.
int DeleteMatchingFiles(const char* directory, const char* pattern, bool recursive);

// Deletes a directory, which must not be a link, with all it holds. Whether it is gone.
bool DeleteDirectoryTree(const char* directory);

// The same for a directory in one that is open.
bool DeleteDirectoryTree(platform::Directory* parent, const std::string& name);

#endif  // KALVOBASE_SRC_FILES_TREE_REMOVAL_H_
