#include "files/mp_file_item.h"
#include "files/path.h"
#include "files/tree_removal.h"
#include "kalvobase/text.h"

Kalvo_FileItem::Kalvo_FileItem() : impl_(new MP_FileItem) {}
Kalvo_FileItem::Kalvo_FileItem(const Kalvo_FileItem& other) = default;
Kalvo_FileItem& Kalvo_FileItem::operator=(const Kalvo_FileItem& other) = default;
Kalvo_FileItem::~Kalvo_FileItem() { delete impl_; }

void Kalvo_FileItem::AttachFile(const char* name) { impl_->Attach(name); }
int Kalvo_FileItem::IsExist() { return impl_->Exists() ? 1 : 0; }
int Kalvo_FileItem::IsDir() { return impl_->IsDirectory() ? 1 : 0; }
void Kalvo_FileItem::Delete() { impl_->Delete(); }
const char* Kalvo_FileItem::GetFullPathName2() { return impl_->FullPath(); }
const char* Kalvo_FileItem::GetPath() { return impl_->Directory(); }
const char* Kalvo_FileItem::GetName() { return impl_->Name(); }
const char* Kalvo_FileItem::GetBaseName() { return impl_->BaseName(); }
const char* Kalvo_FileItem::GetSuffix() { return impl_->Suffix(); }
long Kalvo_FileItem::GetFileSize() { return impl_->Number(&platform::FileStatus::size); }
long Kalvo_FileItem::GetFileAccessTime() { return impl_->Number(&platform::FileStatus::accessed); }
long Kalvo_FileItem::GetFileModifyTime() { return impl_->Number(&platform::FileStatus::modified); }
long Kalvo_FileItem::GetFileCreateTime() { return impl_->Number(&platform::FileStatus::created); }
void Kalvo_FileItem::RenewFileInfo() { impl_->Renew(); }
int Kalvo_FileItem::IsModifiedSinceLastCheck() { return impl_->IsModified(); }

// --- The file system ----------------------------------------------------------------

void Kalvo_FileItem::CreateDir(const char* path, int) { path::MakeDirectory(path); }

int Kalvo_FileItem::SafeOpenFile(const char* path, int mode) {
  return path::SafeOpen(
      path, platform::kOpenReadWrite | platform::kOpenCreate | platform::kOpenBinary, mode);
}

const char* Kalvo_FileItem::GetRealPathName(const char* path, Kalvo_String& out) {
  return path::StoreNormalised(path, &out);
}

int Kalvo_FileItem::DeleteFiles(const char* dir, const char* pattern, int recursive) {
  return DeleteMatchingFiles(dir, pattern, recursive != 0);
}

int Kalvo_FileItem::DeleteTree(const char* dir) { return DeleteDirectoryTree(dir) ? 1 : 0; }

int Kalvo_FileItem::GetDiskInfo(const char* path, long long& blockSize, long long& totalBlocks,
                                long long& freeBlocks) {
  return MP_FileItem::DiskInfo(path, &blockSize, &totalBlocks, &freeBlocks) ? 1 : 0;
}
