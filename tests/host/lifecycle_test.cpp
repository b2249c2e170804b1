// Coming up and going down by hand, and hosts that outlive main.

#include <gtest/gtest.h>
#include <kalvobase/kalvobase.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "host/ping.h"

namespace {

// Dies after main, when other static objects are gone already; the library is still there.
struct LateHost {
  ~LateHost() {
    Kalvo_String s;
    s.sprintf("%d", 1);
    Kalvo_Queue queue(1, 1);
    if (!(s == "1")) _exit(7);
  }
} lateHost;

TEST(Lifecycle, ASecondInitAndFiniAreHarmless) {
  klbase_init();
  klbase_fini();
  klbase_fini();
  Kalvo_String s("alive");
  EXPECT_EQ(s.length(), 5u);
  klbase_init();
}

// The blocked signals of the library's own threads, which are known by their names.
std::vector<std::uint64_t> MasksOfTheLibrary() {
  std::vector<std::uint64_t> masks;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream file(task.path() / "status");
    bool ours = false;
    for (std::string line; std::getline(file, line);) {
      for (const char* name : {"Name:\tKalvo_", "Name:\tMP_Timer", "Name:\tSock"}) {
        ours = ours || line.compare(0, std::strlen(name), name) == 0;
      }
      if (!ours || line.compare(0, 8, "SigBlk:\t") != 0) continue;
      masks.push_back(std::stoull(line.substr(8), nullptr, 16));
    }
  }
  return masks;
}

bool Blocks(std::uint64_t mask, int signal) { return (mask >> (signal - 1) & 1) != 0; }

// The host's signals are the host's: it may wait for them with signalfd or sigwait.
TEST(Lifecycle, ThreadsOfTheLibraryTakeNoSignalOfTheHost) {
  Pong pong;
  pong.Start();
  Kalvo_Timer timer;
  Kalvo_Log log;
  const auto masks = MasksOfTheLibrary();
  EXPECT_EQ(masks.size(), 6u);  // monitor, timers, two engines
  for (const std::uint64_t mask : masks) {
    for (const int signal :
         {SIGTERM, SIGHUP, SIGINT, SIGCHLD, SIGUSR1, SIGALRM, SIGXFSZ, SIGRTMIN}) {
      EXPECT_TRUE(Blocks(mask, signal)) << signal;
    }
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGRTMAX - 1}) {
      EXPECT_FALSE(Blocks(mask, signal)) << signal;
    }
  }

  // A thread of the host has its maker's mask, but for the reserved signal.
  sigset_t usual;
  sigset_t more;
  sigemptyset(&more);
  sigaddset(&more, SIGUSR1);
  sigaddset(&more, SIGRTMAX - 1);
  pthread_sigmask(SIG_BLOCK, &more, &usual);
  static sigset_t seen;
  static std::atomic<bool> begun{false};
  Kalvo_Thread thread(
      [](void*) {
        pthread_sigmask(SIG_SETMASK, nullptr, &seen);
        begun = true;
        return 0ul;
      },
      nullptr, 1, "host's", nullptr, 0);
  pthread_sigmask(SIG_SETMASK, &usual, nullptr);
  while (!begun) Kalvo_Thread_Sleep(1);
  thread.WaitFor(60000);
  EXPECT_EQ(sigismember(&seen, SIGUSR1), 1);
  EXPECT_EQ(sigismember(&seen, SIGTERM), sigismember(&usual, SIGTERM));
  EXPECT_EQ(sigismember(&seen, SIGRTMAX - 1), 0);
  // The maker's own mask is what it was.
  pthread_sigmask(SIG_SETMASK, nullptr, &more);
  for (int signal = 1; signal < SIGRTMAX; ++signal) {
    EXPECT_EQ(sigismember(&more, signal), sigismember(&usual, signal)) << signal;
  }
}

}  // namespace
