// Seeing that another thread of this process has come to rest.

#ifndef KALVOBASE_TESTS_SUPPORT_THREADS_H_
#define KALVOBASE_TESTS_SUPPORT_THREADS_H_

#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <string>

namespace support {

// A thread that tells who it is right before it blocks.
class Sleeper {
 public:
  // For the thread itself.
  void AboutToBlock() { number_ = syscall(SYS_gettid); }

  // For the others: returns when the kernel has put the thread to sleep.
  void WaitUntilAsleep() const {
    while (number_ == 0) sched_yield();
    const std::string path = "/proc/self/task/" + std::to_string(number_) + "/stat";
    for (;;) {
      std::ifstream file(path);
      std::string line;
      std::getline(file, line);
      const std::size_t name = line.rfind(')');
      if (name != std::string::npos && line.compare(name, 3, ") S") == 0) return;
      usleep(100);
    }
  }

 private:
  std::atomic<long> number_{0};
};

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_THREADS_H_
