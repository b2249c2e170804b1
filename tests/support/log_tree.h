// What a log has written.

#ifndef KALVOBASE_TESTS_SUPPORT_LOG_TREE_H_
#define KALVOBASE_TESTS_SUPPORT_LOG_TREE_H_

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "support/folder.h"

namespace support {

// The files below a directory by their paths from there, sorted, links left out.
inline std::vector<std::string> LogPaths(const std::string& directory) {
  namespace fs = std::filesystem;
  std::vector<std::string> paths;
  if (!fs::exists(directory)) return paths;
  for (const auto& entry : fs::recursive_directory_iterator(directory)) {
    if (entry.is_symlink() || !entry.is_regular_file()) continue;
    paths.push_back(fs::relative(entry.path(), directory).string());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

// The same with their content.
inline std::map<std::string, std::string> LogFiles(const std::string& directory) {
  std::map<std::string, std::string> files;
  for (const std::string& path : LogPaths(directory)) {
    files[path] = Content(directory + "/" + path);
  }
  return files;
}

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_LOG_TREE_H_
