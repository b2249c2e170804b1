// A directory of a test's own, and what a process holds open.

#ifndef KALVOBASE_TESTS_SUPPORT_FOLDER_H_
#define KALVOBASE_TESTS_SUPPORT_FOLDER_H_

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace support {

// Gone, with all it holds, at the end.
class Folder {
 public:
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "kalvobase_test.XXXXXX").string();
    // Without a folder of its own a test would work on the root of the file system.
    if (mkdtemp(&name[0]) == nullptr) std::abort();
    path_ = name;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::string& Path() const { return path_; }
  std::string Path(const std::string& name) const { return path_ + "/" + name; }

  // Writes a file, making its directories, and returns its path.
  std::string Write(const std::string& name, const std::string& content) const {
    const std::string path = Path(name);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

 private:
  std::string path_;
};

// The bytes of a file; "" if there is none.
inline std::string Content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

inline std::set<std::string> Names(const std::string& directory) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

inline long OpenDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<long>(std::distance(begin(descriptors), end(descriptors)));
}

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_FOLDER_H_
