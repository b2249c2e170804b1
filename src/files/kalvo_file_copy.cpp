#include "files/file_copy.h"
#include "kalvobase/file.h"

extern "C" int Kalvo_FileSafeCopy(const char* source, const char* destination, int mode) {
  return SafeCopy(source, destination, mode);
}

extern "C" int Kalvo_FileSafeRename(const char* source, const char* destination, int mode) {
  return SafeRename(source, destination, mode);
}
