// Deleting by pattern and by tree. Neither ever leaves the directory that it is given: links
// are removed, not followed.

#ifndef KALVOBASE_SRC_FILES_TREE_REMOVAL_H_
#define KALVOBASE_SRC_FILES_TREE_REMOVAL_H_

#include <string>

#include "platform/directory.h"

// Deletes the files of a directory whose names match a pattern, in all directories below it,
// too, if `recursive`. How many matched. A pattern holds no separators.
int DeleteMatchingFiles(const char* directory, const char* pattern, bool recursive);

// Deletes a directory, which must not be a link, with all it holds. Whether it is gone.
bool DeleteDirectoryTree(const char* directory);

// The same for a directory in one that is open.
bool DeleteDirectoryTree(platform::Directory* parent, const std::string& name);

#endif  // KALVOBASE_SRC_FILES_TREE_REMOVAL_H_
