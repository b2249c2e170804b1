#include "files/tree_removal.h"

#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "files/path.h"
#include "files/wildcard.h"
#include "platform/directory.h"

namespace {

// One walk. It has one directory open at a time, whatever the depth, and goes back through
// "..", after which it makes sure that it stands where it came from: a directory that
// somebody moves meanwhile ends the walk.
class Removal {
 public:
  Removal(const char* pattern, bool recursive, bool withDirectories)
      : wildcard_(pattern, false), recursive_(recursive), withDirectories_(withDirectories) {}

  // The number of files that matched.
  int Run(platform::DirectoryHandle root) {
    Enter(std::move(root), std::string());
    while (!levels_.empty()) {
      std::vector<std::string>& directories = levels_.back().directories;
      if (directories.empty()) {
        if (!Leave()) break;
        continue;
      }
      const std::string name = std::move(directories.back());
      directories.pop_back();
      platform::DirectoryHandle child =
          platform::directory_open_child(directory_.get(), name.c_str());
      if (child != nullptr) {
        Enter(std::move(child), name);
      } else if (withDirectories_) {  // what cannot be read may be empty
        platform::entry_remove_directory(directory_.get(), name.c_str());
      }
    }
    return matched_;
  }

 private:
  struct Level {
    std::string name;
    platform::FileIdentity identity;
    std::vector<std::string> directories;  // still to be entered
  };

  // Deletes the files of a directory, once all its names are known.
  void Enter(platform::DirectoryHandle directory, const std::string& name) {
    directory_ = std::move(directory);
    Level level{name, platform::directory_identity(directory_.get()), {}};
    std::vector<std::string> files;
    platform::Entry entry;
    while (platform::directory_next(directory_.get(), &entry)) {
      if (entry.kind == platform::EntryKind::kDirectory) {
        if (recursive_) level.directories.push_back(std::move(entry.name));
      } else if (wildcard_.Matches(entry.name)) {
        files.push_back(std::move(entry.name));
      }
    }
    for (const std::string& file : files) {
      platform::entry_remove_file(directory_.get(), file.c_str());
      if (matched_ < INT_MAX) ++matched_;
    }
    levels_.push_back(std::move(level));
  }

  bool Leave() {
    const std::string name = std::move(levels_.back().name);
    levels_.pop_back();
    if (levels_.empty()) return true;
    platform::DirectoryHandle parent = platform::directory_open_parent(directory_.get());
    if (parent == nullptr ||
        !(platform::directory_identity(parent.get()) == levels_.back().identity)) {
      return false;
    }
    directory_ = std::move(parent);
    if (withDirectories_) platform::entry_remove_directory(directory_.get(), name.c_str());
    return true;
  }

  const Wildcard wildcard_;
  const bool recursive_;
  const bool withDirectories_;
  int matched_ = 0;
  platform::DirectoryHandle directory_;  // that of the last level
  std::vector<Level> levels_;
};

// Null also for the root of the file system, from which nothing is deleted.
platform::DirectoryHandle OpenRoot(const std::string& normalised, bool follow) {
  if (normalised.empty()) return nullptr;
  platform::DirectoryHandle root =
      platform::directory_open(platform::system_path(normalised.c_str()), follow);
  if (root != nullptr && platform::directory_is_root(root.get())) return nullptr;
  return root;
}

}  // namespace

int DeleteMatchingFiles(const char* directory, const char* pattern, bool recursive) {
  if (pattern == nullptr) return 0;
  platform::DirectoryHandle root = OpenRoot(path::Normalise(directory), true);
  if (root == nullptr) return 0;
  return Removal(pattern, recursive, false).Run(std::move(root));
}

bool DeleteDirectoryTree(const char* directory) {
  const std::string normalised = path::Normalise(directory);
  platform::DirectoryHandle root = OpenRoot(normalised, false);
  if (root == nullptr) return false;
  Removal("*", true, true).Run(std::move(root));
  return platform::directory_remove(platform::system_path(normalised.c_str()));
}
