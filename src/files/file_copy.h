// Copying and moving files with a check at the end.

#ifndef KALVOBASE_SRC_FILES_FILE_COPY_H_
#define KALVOBASE_SRC_FILES_FILE_COPY_H_

// What the exported functions do, results included.
int SafeCopy(const char* source, const char* destination, int mode);
int SafeRename(const char* source, const char* destination, int mode);

#endif  // KALVOBASE_SRC_FILES_FILE_COPY_H_
