#include "files/mp_find_files.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "files/mp_file_item.h"
#include "files/path.h"
#include "files/wildcard.h"
#include "platform/directory.h"

namespace {

class MP_FindResult : public Kalvo_QueueObject {
 public:
  Kalvo_FileItem item;
};

MP_FindResult* ResultOf(Kalvo_QueueObject* object) { return static_cast<MP_FindResult*>(object); }

struct Search {
  std::string directory;
  std::string pattern;
};

Search SplitSearch(const char* path) {
  platform::FileStatus status;
  if (platform::file_status(platform::system_path(path), &status) && status.directory) {
    std::string directory = path;
    if (path::IsSeparator(directory.back())) directory.pop_back();
    return {directory, "*.*"};
  }
  const std::string_view whole = path;
  const std::size_t separator = whole.find_last_of("/\\");
  if (separator == std::string_view::npos) return {std::string(), path};
  return {std::string(whole.substr(0, separator)), std::string(whole.substr(separator + 1))};
}

int Order(long a, long b) { return (a > b) - (a < b); }

int Compare(Kalvo_QueueObject* left, Kalvo_QueueObject* right, void* context) {
  Kalvo_FileItem& a = ResultOf(left)->item;
  Kalvo_FileItem& b = ResultOf(right)->item;
  switch (*static_cast<const MP_FindFiles::SortKey*>(context)) {
    case MP_FindFiles::SortKey::kSize:
      return Order(a.GetFileSize(), b.GetFileSize());
    case MP_FindFiles::SortKey::kModified:
      return Order(a.GetFileModifyTime(), b.GetFileModifyTime());
    case MP_FindFiles::SortKey::kCreated:
      return Order(a.GetFileCreateTime(), b.GetFileCreateTime());
    default:
      return Order(std::strcmp(a.GetName(), b.GetName()), 0);
  }
}

}  // namespace

unsigned long MP_FindFiles::Find(const char* path) {
  Free();
  sortKey_ = SortKey::kNone;
  if (path == nullptr) return 0;
  const Search search = SplitSearch(path);
  const path::Path directory = path::Normalise(search.directory.c_str());
  const platform::DirectoryHandle open =
      platform::directory_open(directory.system + platform::kPathSeparator, true);
  if (open == nullptr) return 0;

  const Wildcard wildcard(search.pattern, false);
  platform::Entry entry;
  while (platform::directory_next(open.get(), &entry)) {
    const bool matches = wildcard.Matches(entry.name);
    if (!matches && entry.kind == platform::EntryKind::kFile) continue;
    platform::FileStatus status;
    const bool known = platform::entry_status(open.get(), entry.name.c_str(), &status);
    const bool isDirectory =
        entry.kind == platform::EntryKind::kDirectory || (known && status.directory);
    if (!matches && !isDirectory) continue;
    MP_FindResult* result = new MP_FindResult;
    MP_FileItem::Of(result->item).AttachEntry(directory, entry.name, known ? &status : nullptr);
    results_.AddItemAtTail(result);
  }
  return Count();
}

Kalvo_FileItem* MP_FindFiles::MoveTo(Kalvo_QueueObject* result) {
  cursor_ = result;
  return result != nullptr ? &ResultOf(result)->item : nullptr;
}

Kalvo_FileItem* MP_FindFiles::Next() {
  return cursor_ != nullptr ? MoveTo(cursor_->Next()) : First();
}

Kalvo_FileItem* MP_FindFiles::Previous() {
  return cursor_ != nullptr ? MoveTo(cursor_->Pre()) : First();
}

void MP_FindFiles::Free() {
  cursor_ = nullptr;
  results_.RemoveAll();
}

void MP_FindFiles::Sort(SortKey key) {
  if (sortKey_ == key) return;
  sortKey_ = key;
  results_.QSort(Compare, &sortKey_);
}
