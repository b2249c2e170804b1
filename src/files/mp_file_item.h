// MP_FileItem: what is behind a Kalvo_FileItem.

#ifndef KALVOBASE_SRC_FILES_MP_FILE_ITEM_H_
#define KALVOBASE_SRC_FILES_MP_FILE_ITEM_H_

#include <string>

#include "files/path.h"
#include "kalvobase/file.h"
#include "platform/directory.h"

class MP_FileItem {
 public:
  static MP_FileItem& Of(Kalvo_FileItem& item) { return *item.impl_; }

  // Takes a name that a host gives.
  void Attach(const char* name);

  // Takes an entry of a directory, whose name is taken as it is, with the status that it was
  // found to have, or null.
  void AttachEntry(const path::Path& directory, const std::string& name,
                   const platform::FileStatus* status);

  bool Exists() const { return exists_; }
  bool IsDirectory() const { return exists_ && status_.directory; }
  void Delete();
  void Renew();
  int IsModified();

  static bool DiskInfo(const char* path, long long* blockSize, long long* totalBlocks,
                       long long* freeBlocks);

  // A number of the status: -1 for an item that does not exist.
  long Number(std::int64_t platform::FileStatus::*field) const {
    return exists_ ? static_cast<long>(status_.*field) : -1;
  }

  // These give "" for an item that does not exist.
  const char* FullPath() const { return exists_ ? fullPath_.c_str() : ""; }
  const char* Directory() const { return exists_ ? directory_.c_str() : ""; }
  const char* Name() const { return exists_ ? fullPath_.c_str() + name_ : ""; }
  const char* BaseName() const { return exists_ ? baseName_.c_str() : ""; }
  const char* Suffix() const { return exists_ ? fullPath_.c_str() + suffix_ : ""; }

 private:
  void Split(std::size_t directoryLength, std::size_t name);
  const std::string& SystemPath() const { return systemPath_.empty() ? fullPath_ : systemPath_; }

  std::string fullPath_;
  std::string systemPath_;  // empty if it is the same
  std::string directory_;
  std::string baseName_;
  std::size_t name_ = 0;  // where these begin in the full path
  std::size_t suffix_ = 0;
  platform::FileStatus status_;
  bool exists_ = false;
};

#endif  // KALVOBASE_SRC_FILES_MP_FILE_ITEM_H_
