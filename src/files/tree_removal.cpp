#include "files/tree_removal.h"

#include <algorithm>
#include <climits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "files/path.h"
#include "files/wildcard.h"
#include "platform/directory.h"
#include "platform/file.h"

namespace {

// A pattern of files in a directory: the sub-directories that it names, and the pattern of their
// files.
struct Pattern {
  std::vector<std::string> directories;
  std::string name;
};

// False for a pattern that leads out of the directory, or names no files.
bool SplitPattern(std::string_view text, Pattern* pattern) {
  for (;;) {
    const std::size_t end = std::min(text.find_first_of("/\\"), text.size());
    const std::string_view part = text.substr(0, end);
    const bool last = end == text.size();
    if (last) {
      pattern->name = part;
      return !part.empty() && part != "." && part != "..";
    }
    if (part == "..") {
      if (pattern->directories.empty()) return false;
      pattern->directories.pop_back();
    } else if (!part.empty() && part != ".") {
      pattern->directories.emplace_back(part);
    }
    text.remove_prefix(end + 1);
  }
}

// One walk. Whatever the depth, it has few directories open, and goes back through "..",
// after which it makes sure that it stands where it came from. If somebody has moved the
// directory meanwhile, what is left of that branch is given up.
class Removal {
 public:
  Removal(const Pattern& pattern, bool recursive, bool withDirectories)
      : directories_(pattern.directories),
        wildcard_(pattern.name, false),
        recursive_(recursive),
        withDirectories_(withDirectories) {}

  // The number of files that matched.
  int Run(platform::Directory* root) {
    root_ = root;
    directory_ = platform::directory_open_child(root, ".");
    if (directory_ == nullptr) return 0;
    Enter(std::string());
    while (!levels_.empty()) {
      if (levels_.back().directories.empty()) {
        Leave();
        continue;
      }
      const std::string name = std::move(levels_.back().directories.back());
      levels_.back().directories.pop_back();
      Descend(name);
    }
    return matched_;
  }

 private:
  struct Level {
    std::string name;
    platform::FileIdentity identity;
    std::vector<std::string> directories;  // still to be entered
  };

  void Descend(const std::string& name) {
    platform::DirectoryHandle child =
        platform::directory_open_child(directory_.get(), name.c_str());
    // Where there is no way back, there is none further down either.
    if (child != nullptr && platform::directory_open_parent(child.get()) != nullptr) {
      directory_ = std::move(child);
      Enter(name);
      return;
    }
    if (child != nullptr) Visit(child.get());
    Remove(name);  // what cannot be read may be empty
  }

  void Enter(const std::string& name) {
    Level level{name, platform::directory_identity(directory_.get()), {}};
    level.directories = Visit(directory_.get());
    levels_.push_back(std::move(level));
  }

  // Does what is to be done in the directory that becomes the next level, and gives the
  // directories in it that are to be entered. The directories of a pattern lead from each
  // directory that is searched to the one that holds its files.
  std::vector<std::string> Visit(platform::Directory* directory) {
    const std::size_t step = levels_.size() % (directories_.size() + 1);
    if (step < directories_.size()) return {directories_[step]};
    return DeleteFiles(directory);
  }

  // Deletes the files of a directory, once all its names are known, and gives the directories
  // that are to be entered.
  std::vector<std::string> DeleteFiles(platform::Directory* directory) {
    std::vector<std::string> files;
    std::vector<std::string> directories;
    platform::Entry entry;
    while (platform::directory_next(directory, &entry)) {
      if (entry.kind == platform::EntryKind::kDirectory) {
        if (recursive_) directories.push_back(std::move(entry.name));
      } else if (wildcard_.Matches(entry.name)) {
        files.push_back(std::move(entry.name));
      }
    }
    for (const std::string& file : files) {
      platform::entry_remove_file(directory, file.c_str());
      if (matched_ < INT_MAX) ++matched_;
    }
    return directories;
  }

  void Leave() {
    const std::string name = std::move(levels_.back().name);
    levels_.pop_back();
    if (levels_.empty()) return;
    platform::DirectoryHandle parent = platform::directory_open_parent(directory_.get());
    if (parent != nullptr && IsAt(parent.get(), levels_.back())) {
      directory_ = std::move(parent);
      Remove(name);
    } else {
      FindBack();
    }
  }

  // Goes down from the root as far as everything is where it was.
  void FindBack() {
    directory_ = platform::directory_open_child(root_, ".");
    std::size_t depth = directory_ != nullptr ? 1 : 0;
    while (depth > 0 && depth < levels_.size()) {
      platform::DirectoryHandle next =
          platform::directory_open_child(directory_.get(), levels_[depth].name.c_str());
      if (next == nullptr || !IsAt(next.get(), levels_[depth])) break;
      directory_ = std::move(next);
      ++depth;
    }
    levels_.resize(depth);
  }

  static bool IsAt(platform::Directory* directory, const Level& level) {
    return platform::directory_identity(directory) == level.identity;
  }

  void Remove(const std::string& name) {
    if (withDirectories_) platform::entry_remove_directory(directory_.get(), name.c_str());
  }

  const std::vector<std::string> directories_;
  const Wildcard wildcard_;
  const bool recursive_;
  const bool withDirectories_;
  int matched_ = 0;
  platform::Directory* root_ = nullptr;
  platform::DirectoryHandle directory_;  // that of the last level
  std::vector<Level> levels_;
};

bool DeleteTree(platform::Directory* parent, platform::Directory* root, const std::string& name) {
  Removal({{}, "*"}, true, true).Run(root);
  // By now the name may be that of another directory.
  return platform::entry_identity(parent, name.c_str()) == platform::directory_identity(root) &&
         platform::entry_remove_directory(parent, name.c_str());
}

// The root has a name of its own, which tells even where its identity does not.
bool IsNameOfRoot(const std::string& path) {
  return path.find_first_not_of(platform::kPathSeparator) == std::string::npos;
}

}  // namespace

platform::DirectoryHandle OpenForRemoval(const std::string& path, bool follow,
                                         bool (*isRoot)(platform::Directory*)) {
  // Relative paths are left only where the current directory cannot be told.
  if (IsNameOfRoot(path) || path::LastComponent(path) == "..") return nullptr;
  const std::string resolved = platform::resolve_links(path);
  if (!resolved.empty() && IsNameOfRoot(resolved)) return nullptr;
  platform::DirectoryHandle directory = platform::directory_open(path, follow);
  return directory != nullptr && !isRoot(directory.get()) ? std::move(directory) : nullptr;
}

int DeleteMatchingFiles(const char* directory, const char* pattern, bool recursive) {
  Pattern parts;
  if (pattern == nullptr || !SplitPattern(pattern, &parts)) return 0;
  const platform::DirectoryHandle root =
      OpenForRemoval(path::Normalise(directory).system, true, platform::directory_is_root);
  return root != nullptr ? Removal(parts, recursive, false).Run(root.get()) : 0;
}

bool DeleteDirectoryTree(const char* directory) {
  const std::string path = path::Normalise(directory).system;
  const platform::DirectoryHandle root = OpenForRemoval(path, false, platform::directory_is_root);
  if (root == nullptr) return platform::directory_remove(path);  // it may be empty
  const platform::DirectoryHandle parent = platform::directory_open_parent(root.get());
  if (parent == nullptr) return platform::directory_remove(path);
  return DeleteTree(parent.get(), root.get(), path::LastComponent(path));
}

bool DeleteDirectoryTree(platform::Directory* parent, const std::string& name) {
  const platform::DirectoryHandle root = platform::directory_open_child(parent, name.c_str());
  if (root == nullptr) return platform::entry_remove_directory(parent, name.c_str());
  return DeleteTree(parent, root.get(), name);
}
