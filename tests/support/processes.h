// Children of a test: what they do in their own process, and how they end.

#ifndef KALVOBASE_TESTS_SUPPORT_PROCESSES_H_
#define KALVOBASE_TESTS_SUPPORT_PROCESSES_H_

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace support {

// A name that no other test, and no other run of this one, uses.
inline std::string UniqueName(const std::string& what) {
  static int count = 0;
  return "kalvobase test/" + what + " " + std::to_string(getpid()) + "." + std::to_string(++count);
}

// Runs `body` in a child of its own, which tells the parent that it is ready by Ready() and
// then goes on.
class Child {
 public:
  template <class Body>
  explicit Child(Body body) {
    if (pipe(ready_) != 0) return;
    pid_ = fork();
    if (pid_ != 0) return;
    body(*this);
    _exit(0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    Kill();
    close(ready_[0]);
    close(ready_[1]);
  }

  // For the child.
  void Ready() {
    const char byte = 1;
    if (write(ready_[1], &byte, 1) != 1) _exit(99);
  }
  [[noreturn]] void WaitForTheEnd() {
    for (;;) pause();
  }

  // For the parent.
  void WaitUntilReady() {
    char byte = 0;
    if (read(ready_[0], &byte, 1) != 1) byte = 0;
  }
  void Kill() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    Join();
  }
  int Join() {
    int status = -1;
    if (pid_ > 0) waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  int ready_[2] = {-1, -1};
  pid_t pid_ = -1;
};

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_PROCESSES_H_
