#include "files/mp_file_item.h"

#include "text/mp_string.h"

namespace {

constexpr int kDiskBlock = 512;

}  // namespace

void MP_FileItem::Attach(const char* name) {
  MP_String given;
  given.AppendText(name);
  given.Trim();
  const char* text = given.Text();
  const std::string systemText = platform::system_path(text);
  fullPath_.clear();
  exists_ = *text != '\0' && platform::file_status(systemText, &status_);
  if (!exists_) return;

  std::string current;
  if (!platform::path_is_absolute(text) && !path::HasDrive(text)) {
    current = platform::current_directory();
    if (!current.empty() && current.back() != platform::kPathSeparator) {
      current += platform::kPathSeparator;
    }
  }
  fullPath_ = current + text;
  systemPath_ = current + systemText;
  const std::size_t separator = fullPath_.find_last_of("/\\");
  if (separator == std::string::npos) {
    Split(0, 0);
  } else {
    Split(separator, separator + 1);
  }
}

void MP_FileItem::AttachEntry(const path::Path& directory, const std::string& name,
                              const platform::FileStatus* status) {
  exists_ = status != nullptr;
  if (!exists_) return;
  status_ = *status;
  const auto join = [&name](const std::string& front) {
    const bool separated = !front.empty() && path::IsSeparator(front.back());
    return front + (separated ? std::string() : std::string(1, platform::kPathSeparator)) + name;
  };
  fullPath_ = join(directory.text);
  systemPath_ = directory.system != directory.text ? join(directory.system) : std::string();
  const std::size_t begin = fullPath_.size() - name.size();
  Split(begin - 1, begin);
}

void MP_FileItem::Split(std::size_t directoryLength, std::size_t name) {
  directory_.assign(fullPath_, 0, directoryLength);
  name_ = name;
  const std::size_t dot = fullPath_.rfind('.');
  const bool hasDot = dot != std::string::npos && dot >= name;
  suffix_ = hasDot ? dot + 1 : fullPath_.size();
  baseName_ = fullPath_.substr(name, hasDot ? dot - name : std::string::npos);
}

// Removes what has the name now, which may be another kind of file than the item knows.
void MP_FileItem::Delete() {
  platform::FileStatus now;
  if (fullPath_.empty() || !platform::name_status(SystemPath(), &now)) return;
  if (now.directory) {
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
  platform::VolumeSpace space;
  if (!platform::volume_space(platform::system_path(path), &space)) return false;
  *blockSize = kDiskBlock;
  *totalBlocks = static_cast<long long>(space.total / kDiskBlock);
  *freeBlocks = static_cast<long long>(space.free / kDiskBlock);
  return true;
}
