#include "monitor/log_reclaim.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <tuple>
#include <vector>

#include "files/path.h"
#include "files/tree_removal.h"
#include "frame/messages.h"
#include "frame/mp_kernel_debug.h"
#include "logging/log_file.h"
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

// The date in the name of a directory or a file of the tree, and what follows it, which sorts by
// time. Base names may hold digits, too. Empty if there is no date.
std::string DateIn(const std::string& name) {
  const std::size_t base = name.rfind('_');
  const std::size_t date = name.find_first_of("0123456789", base != std::string::npos ? base : 0);
  return date != std::string::npos ? name.substr(date) : std::string();
}

// What is known of the age of an entry.
struct Age {
  std::string name;
  platform::FileStatus status;

  bool IsOlderByBirth(const Age& other) const {
    return std::tie(status.created, status.createdNanoseconds, name) <
           std::tie(other.status.created, other.status.createdNanoseconds, other.name);
  }

  // What has no date counts as the youngest.
  bool IsOlderByName(const Age& other) const {
    const std::string date = DateIn(name);
    const std::string otherDate = DateIn(other.name);
    return std::make_tuple(date.empty(), std::cref(date), std::cref(name)) <
           std::make_tuple(otherDate.empty(), std::cref(otherDate), std::cref(other.name));
  }
};

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
  // By birth, and what was born at the same time by name. By the dates in the names where the file
  // system keeps no birth time: the last change is of no use, each deletion changes a directory.
  template <class Counts>
  std::vector<std::string> Sorted(Counts counts) const {
    std::vector<Age> found;
    bool birthKnown = true;
    platform::Entry entry;
    while (directory_ != nullptr && platform::directory_next(directory_.get(), &entry)) {
      if (!counts(entry)) continue;
      Age age{entry.name, {}};
      platform::entry_status(directory_.get(), entry.name.c_str(), &age.status);
      birthKnown = birthKnown && age.status.birthKnown;
      found.push_back(std::move(age));
    }
    std::sort(found.begin(), found.end(), [birthKnown](const Age& a, const Age& b) {
      return birthKnown ? a.IsOlderByBirth(b) : a.IsOlderByName(b);
    });
    std::vector<std::string> names;
    names.reserve(found.size());
    for (Age& age : found) names.push_back(std::move(age.name));
    return names;
  }

  platform::DirectoryHandle directory_;
  std::string path_;
};

void TellDeleted(const char* format, const std::string& path) {
  kernel_debug::Tell(kernel_debug::kError, 3, format, path.c_str());
}

void DeleteOldestFiles(const Level& day) {
  const std::vector<std::string> files = day.Files();
  if (files.size() < kFilesLeft) return;
  for (std::size_t i = 0; i < kFilesAtOnce; ++i) {
    TellDeleted(messages::kMonitorDeletedFile, day.PathOf(files[i]));
    platform::entry_remove_file(day.directory(), files[i].c_str());
  }
}

// Deletes what is the oldest: a day, or a month or year without one. Today's directory is never
// deleted, the oldest files of the last day are.
void DeleteOldest(const Level& main, const std::string& today) {
  const std::vector<std::string> years = main.Directories(2);
  for (const std::string& yearName : years) {
    const Level year = main.Child(yearName);
    const std::vector<std::string> months = year.Directories(1);
    if (months.empty()) {
      platform::entry_remove_directory(main.directory(), yearName.c_str());
      return;
    }
    for (const std::string& monthName : months) {
      const Level month = year.Child(monthName);
      const std::vector<std::string> days = month.Directories(0);
      if (days.empty()) {
        platform::entry_remove_directory(year.directory(), monthName.c_str());
        return;
      }
      if (years.size() == 1 && months.size() == 1 && days.size() == 1) {
        DeleteOldestFiles(month.Child(days.front()));
        return;
      }
      for (const std::string& day : days) {
        if (std::string(yearName).append("/").append(monthName).append("/").append(day) == today) {
          continue;
        }
        DeleteDirectoryTree(month.directory(), day);
        TellDeleted(messages::kMonitorDeletedDirectory, month.PathOf(day));
        return;
      }
    }
  }
}

}  // namespace

bool ReclaimLogSpace(const std::string& mainDirectory, const std::tm& today) {
  const path::Path path = path::Normalise(mainDirectory.c_str());
  platform::VolumeSpace space;
  if (!platform::volume_space(path.system, &space)) return false;
  if (space.available / kMebibyte > kEnough) return false;
  platform::DirectoryHandle directory = platform::directory_open(path.system, true);
  if (directory == nullptr) return true;
  DeleteOldest(Level(std::move(directory), path.text), LogDayDirectory(today));
  return true;
}
