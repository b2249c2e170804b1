#include "platform/process.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>

namespace platform {
namespace {

std::atomic<std::uint32_t> forks{0};

}  // namespace

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

std::uint32_t fork_count() { return forks.load(std::memory_order_relaxed); }

// The C library forgets these when the library is unloaded.
void watch_forks(void (*before)(), void (*after)(), void (*inChild)()) {
  static const int counting = pthread_atfork(nullptr, nullptr, [] { ++forks; });
  static_cast<void>(counting);
  pthread_atfork(before, after, inChild);
}

const char* environment_variable(const char* name) { return std::getenv(name); }

}  // namespace platform
