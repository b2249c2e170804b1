// Paths as hosts write them: `/` and `\` both separate components.

#ifndef KALVOBASE_SRC_FILES_PATH_H_
#define KALVOBASE_SRC_FILES_PATH_H_

#include <string>

class Kalvo_String;

namespace path {

inline bool IsSeparator(char c) { return c == '/' || c == '\\'; }

// "C:" and what follows.
bool HasDrive(const char* path);

// A path in two forms: as it is told, and as the system takes it.
struct Path {
  std::string text;
  std::string system;
};

// The absolute form without ".", ".." and doubled separators, none at its end but that of the
// root. A path with a drive, or of a network share, which begins with two backslashes, gets
// backslashes; any other gets the separator of the system. Empty for null or empty; a
// relative path stays one if the current directory cannot be told.
Path Normalise(const char* path);

// The same for a host, as Kalvo_FileItem::GetRealPathName tells it. The text of `out`.
const char* StoreNormalised(const char* path, Kalvo_String* out);

// The last component of a path in the system's form.
std::string LastComponent(const std::string& system);

// Makes the directories that a path names in front of its last separator. Of a network share
// it leaves all alone that lies in front of the first `$`.
void MakeParents(const char* path);

// Makes a directory and its parents.
void MakeDirectory(const char* path);

// Opens a file, after making its parents if `flags` ask for making the file. The
// descriptor, or a negative number.
int SafeOpen(const char* path, int flags, int permissions);

}  // namespace path

#endif  // KALVOBASE_SRC_FILES_PATH_H_
