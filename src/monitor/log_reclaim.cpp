#include "monitor/log_reclaim.h"

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <vector>

#include "files/path.h"
#include "files/tree_removal.h"
#include "frame/messages.h"
#include "frame/mp_kernel_debug.h"
#include "platform/directory.h"

namespace {

constexpr std::uint64_t kMebibyte = 0x100000;
constexpr std::uint64_t kEnough = 500;  // MiB

// Of the last day.
constexpr std::size_t kFilesLeft = 50;
constexpr std::size_t kFilesAtOnce = 10;

// Whether a directory gives room: days stand `depth` levels below it, and it holds one, or
// nothing at all. What holds only other things is somebody else's.
bool GivesRoom(platform::Directory* parent, const std::string& name, int depth) {
  const platform::DirectoryHandle directory = platform::directory_open_child(parent, name.c_str());
  if (directory == nullptr) return false;
  bool empty = true;
  platform::Entry entry;
  while (platform::directory_next(directory.get(), &entry)) {
    empty = false;
    if (entry.kind != platform::EntryKind::kDirectory) continue;
    if (depth == 1 || GivesRoom(directory.get(), entry.name, depth - 1)) return true;
  }
  return empty;
}

// An open directory of the tree.
class Level {
 public:
  Level(platform::DirectoryHandle directory, std::string path)
      : directory_(std::move(directory)), path_(std::move(path)) {}

  platform::Directory* directory() const { return directory_.get(); }
  std::string PathOf(const std::string& name) const {
    return path_ + platform::kPathSeparator + name;
  }

  Level Child(const std::string& name) const {
    return Level(platform::directory_open_child(directory_.get(), name.c_str()), PathOf(name));
  }

  // The names of the directories that give room, or of the files with a suffix, oldest first.
  std::vector<std::string> Directories(int depth) const {
    return Sorted([this, depth](const platform::Entry& entry) {
      return entry.kind == platform::EntryKind::kDirectory &&
             (depth == 0 || GivesRoom(directory(), entry.name, depth));
    });
  }
  std::vector<std::string> Files() const {
    return Sorted([](const platform::Entry& entry) {
      return entry.kind == platform::EntryKind::kFile && entry.name.find('.') != std::string::npos;
    });
  }

 private:
  // Those that were made at the same time are sorted by name, which tells the date.
  using Age = std::tuple<std::int64_t, std::int32_t, std::string>;

  template <class Counts>
  std::vector<std::string> Sorted(Counts counts) const {
    std::vector<Age> found;
    platform::Entry entry;
    while (directory_ != nullptr && platform::directory_next(directory_.get(), &entry)) {
      platform::FileStatus status;
      if (!counts(entry)) continue;
      platform::entry_status(directory_.get(), entry.name.c_str(), &status);
      found.emplace_back(status.created, status.createdNanoseconds, entry.name);
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> names;
    names.reserve(found.size());
    for (const Age& age : found) names.push_back(std::get<2>(age));
    return names;
  }

  platform::DirectoryHandle directory_;
  std::string path_;
};

void TellDeleted(const char* format, const std::string& path) {
  kernel_debug::Tell(kernel_debug::kError, 3, format, path.c_str());
}

// Deletes what is the oldest: a day, or a month or year without one.
void DeleteOldest(const Level& main) {
  const std::vector<std::string> years = main.Directories(2);
  if (years.empty()) return;
  const Level year = main.Child(years.front());
  const std::vector<std::string> months = year.Directories(1);
  if (months.empty()) {
    platform::entry_remove_directory(main.directory(), years.front().c_str());
    return;
  }
  const Level month = year.Child(months.front());
  const std::vector<std::string> days = month.Directories(0);
  if (days.empty()) {
    platform::entry_remove_directory(year.directory(), months.front().c_str());
    return;
  }
  if (years.size() > 1 || months.size() > 1 || days.size() > 1) {
    DeleteDirectoryTree(month.directory(), days.front());
    TellDeleted(messages::kMonitorDeletedDirectory, month.PathOf(days.front()));
    return;
  }
  // The last day, which may be today.
  const Level day = month.Child(days.front());
  const std::vector<std::string> files = day.Files();
  if (files.size() < kFilesLeft) return;
  for (std::size_t i = 0; i < kFilesAtOnce; ++i) {
    TellDeleted(messages::kMonitorDeletedFile, day.PathOf(files[i]));
    platform::entry_remove_file(day.directory(), files[i].c_str());
  }
}

}  // namespace

bool ReclaimLogSpace(const std::string& mainDirectory) {
  const path::Path path = path::Normalise(mainDirectory.c_str());
  platform::VolumeSpace space;
  if (!platform::volume_space(path.system, &space)) return false;
  if (space.available / kMebibyte > kEnough) return false;
  platform::DirectoryHandle directory = platform::directory_open(path.system, true);
  if (directory != nullptr) DeleteOldest(Level(std::move(directory), path.text));
  return true;
}
