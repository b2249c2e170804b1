#include "files/mp_file_item.h"

#include "files/path.h"
#include "text/mp_string.h"

namespace {

constexpr int kDiskBlock = 512;

}  // namespace

void MP_FileItem::Attach(const char* name) {
  MP_String given;
  given.AppendText(name);
  given.Trim();
  const char* text = given.Text();
  fullPath_.clear();
  exists_ = *text != '\0' && platform::file_status(platform::system_path(text), &status_);
  if (!exists_) return;

  if (!platform::path_is_absolute(text) && !path::HasDrive(text)) {
    fullPath_ = platform::current_directory();
    if (!fullPath_.empty() && fullPath_.back() != platform::kPathSeparator) {
      fullPath_ += platform::kPathSeparator;
    }
  }
  fullPath_ += text;
  asIs_ = fullPath_.size();
  const std::size_t separator = fullPath_.find_last_of("/\\");
  if (separator == std::string::npos) {
    Split(0, 0);
  } else {
    Split(separator, separator + 1);
  }
}

void MP_FileItem::AttachEntry(const std::string& directory, const std::string& name,
                              const platform::FileStatus* status) {
  exists_ = status != nullptr;
  if (!exists_) return;
  status_ = *status;
  fullPath_ = directory;
  if (directory.empty() || !path::IsSeparator(directory.back())) {
    fullPath_ += platform::kPathSeparator;
  }
  asIs_ = fullPath_.size();
  fullPath_ += name;
  Split(asIs_ - 1, asIs_);
}

void MP_FileItem::Split(std::size_t directoryLength, std::size_t name) {
  directory_.assign(fullPath_, 0, directoryLength);
  name_ = name;
  const std::size_t dot = fullPath_.rfind('.');
  const bool hasDot = dot != std::string::npos && dot >= name;
  suffix_ = hasDot ? dot + 1 : fullPath_.size();
  baseName_ = fullPath_.substr(name, hasDot ? dot - name : std::string::npos);
}

std::string MP_FileItem::SystemPath() const {
  return platform::system_path(fullPath_.substr(0, asIs_).c_str()) + fullPath_.substr(asIs_);
}

void MP_FileItem::Delete() {
  if (!exists_) return;
  if (status_.directory) {
    platform::directory_remove(SystemPath());
  } else {
    platform::file_remove(SystemPath());
  }
}

void MP_FileItem::Renew() {
  if (!fullPath_.empty()) exists_ = platform::file_status(SystemPath(), &status_);
}

int MP_FileItem::IsModified() {
  if (!exists_) return -1;
  platform::FileStatus now;
  exists_ = platform::file_status(SystemPath(), &now);
  if (!exists_) return -1;
  return now.modified != status_.modified || now.size != status_.size ? 1 : 0;
}

bool MP_FileItem::DiskInfo(const char* path, long long* blockSize, long long* totalBlocks,
                           long long* freeBlocks) {
  std::uint64_t total = 0;
  std::uint64_t free = 0;
  if (!platform::volume_space(platform::system_path(path), &total, &free)) return false;
  *blockSize = kDiskBlock;
  *totalBlocks = static_cast<long long>(total / kDiskBlock);
  *freeBlocks = static_cast<long long>(free / kDiskBlock);
  return true;
}
