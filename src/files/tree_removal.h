// Deleting by pattern and by tree. Neither ever leaves the directory that it is given: links
// are removed, not followed.

#ifndef KALVOBASE_SRC_FILES_TREE_REMOVAL_H_
#define KALVOBASE_SRC_FILES_TREE_REMOVAL_H_

// Deletes the files of a directory whose names match a pattern, in all directories below it,
// too, if `recursive`. How many matched. A pattern holds no separators.
int DeleteMatchingFiles(const char* directory, const char* pattern, bool recursive);

// Deletes a directory, which must not be a link, with all it holds. Whether it is gone.
bool DeleteDirectoryTree(const char* directory);

#endif  // KALVOBASE_SRC_FILES_TREE_REMOVAL_H_
