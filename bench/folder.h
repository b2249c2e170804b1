// Where the files of the benchmarks lie.

#ifndef KALVOBASE_BENCH_FOLDER_H_
#define KALVOBASE_BENCH_FOLDER_H_

#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

// One for the program, until that ends.
class Folder {
 public:
  static std::string Path(const std::string& name) {
    static const Folder folder;
    return (folder.path_ / name).string();
  }

 private:
  Folder()
      : path_(std::filesystem::temp_directory_path() /
              ("kalvobase_bench." + std::to_string(getpid()))) {
    std::filesystem::create_directories(path_);
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::filesystem::path path_;
};

#endif  // KALVOBASE_BENCH_FOLDER_H_
