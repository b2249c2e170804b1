#include "platform/process.h"

#include <unistd.h>

#include <cstddef>
#include <cstdlib>

namespace platform {

std::string executable_path() {
  std::string path(256, '\0');
  for (;;) {
    const ssize_t n = readlink("/proc/self/exe", &path[0], path.size());
    if (n < 0) return std::string();
    if (static_cast<std::size_t>(n) < path.size()) {
      path.resize(static_cast<std::size_t>(n));
      break;
    }
    path.resize(path.size() * 2);
  }
  // The kernel marks the path of a program whose file was replaced while it runs, as an
  // upgrade does. The program still lives where it was started.
  const std::string mark = " (deleted)";
  if (path.size() > mark.size() &&
      path.compare(path.size() - mark.size(), mark.size(), mark) == 0 &&
      access(path.c_str(), F_OK) != 0) {
    path.resize(path.size() - mark.size());
  }
  return path;
}

std::uint32_t process_id() { return static_cast<std::uint32_t>(getpid()); }

const char* environment_variable(const char* name) { return std::getenv(name); }

}  // namespace platform
