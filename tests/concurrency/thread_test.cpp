// Threads: their lines, their gates, and what is left of one that has been ended by force.

#include "kalvobase/thread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "kalvobase/log.h"
#include "kalvobase/timer.h"
#include "support/channel.h"
#include "support/folder.h"
#include "support/log_tree.h"
#include "support/processes.h"
#include "support/stopwatch.h"

namespace {

using Function = std::function<unsigned long()>;

template <class Condition>
void WaitUntil(Condition condition) {
  const support::Stopwatch waited;
  bool met = condition();
  while (!met && waited.Milliseconds() < 30000) {
    sched_yield();
    met = condition();
  }
  EXPECT_TRUE(met);
}

std::atomic<int> begun{0};

unsigned long Run(void* function) {
  ++begun;
  return (*static_cast<Function*>(function))();
}

// Lets a parked thread go on and returns when its routine runs: one that is waited for before
// never runs it.
void Release(Kalvo_Thread* thread) {
  const int before = begun;
  EXPECT_EQ(thread->Resume(), 0ul);
  WaitUntil([before] { return begun > before; });
}

// A thread that runs a function.
std::unique_ptr<Kalvo_Thread> Start(Function* function, long run = 1, const char* name = "test") {
  const int before = begun;
  auto thread = std::make_unique<Kalvo_Thread>(Run, function, run, name, nullptr, 0);
  if (run != 0) WaitUntil([before] { return begun > before; });
  return thread;
}

bool ThreadExists(unsigned long id) {
  return std::filesystem::exists("/proc/self/task/" + std::to_string(id));
}

std::ptrdiff_t Mappings() {
  std::ifstream maps("/proc/self/maps");
  return std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
}

// The text of a line in which `%x` and `%d` stand for numbers of the run.
std::string Line(const std::string& format, unsigned long a, unsigned long b) {
  char text[200];
  std::snprintf(text, sizeof(text), format.c_str(), static_cast<unsigned>(a),
                static_cast<unsigned>(b));
  return text;
}

TEST(Thread, TellsOfItsLifeOnBothStreams) {
  support::Channel channel;
  const unsigned long self = static_cast<unsigned long>(gettid());
  const unsigned long process = static_cast<unsigned long>(getpid());
  Function body = [] { return 42ul; };
  unsigned long id = 0;
  unsigned long code = 7;
  {
    const auto thread = Start(&body, 0, nullptr);
    id = thread->GetId();
    EXPECT_STREQ(thread->GetThreadName(), "anonymous");
    EXPECT_EQ(thread->GetRealId(), self);
    EXPECT_EQ(thread->GetExitCode(code), 0);
    Release(thread.get());
    thread->WaitFor(10000);
    EXPECT_EQ(thread->IsValid(), 0);
    EXPECT_EQ(thread->GetExitCode(code), 1);
    EXPECT_EQ(code, 42ul);
    EXPECT_EQ(thread->Kill(9), 1);  // nothing any more
    EXPECT_EQ(thread->GetExitCode(code), 1);
    EXPECT_EQ(code, 42ul);
  }
  // Those of the monitor's thread come in between.
  const auto own = [](std::vector<std::string> all) {
    all.erase(std::remove_if(all.begin(), all.end(),
                             [](const std::string& line) {
                               return line.find("KObjManager") != std::string::npos;
                             }),
              all.end());
    return all;
  };
  const std::vector<std::string> lines = own(channel.Logged());
  const std::vector<std::string> printed = own(channel.Printed());
  EXPECT_TRUE(std::is_permutation(lines.begin(), lines.end(), printed.begin(), printed.end()));
  ASSERT_EQ(lines.size(), 8u);
  EXPECT_EQ(lines[0], Line("2 Thread(anonymous)[0x%x] create by thread[0x%x] suspend", id, self));
  EXPECT_NE(lines[1].find(Line("]create THREAD[%x:%d](anonymous)\n", id, process)),
            std::string::npos);
  EXPECT_EQ(lines[2], Line("3 THREAD[0x%x:%d](anonymous) runing\n", id, process));
  EXPECT_EQ(lines[3], Line("3 THREAD[0x%x:%d](anonymous) exit.\n", id, process));
  EXPECT_EQ(lines[4], Line("-1 thread[%x](anonymous) state=-1 WaitFor(end) return 0.\n", id, 0));
  EXPECT_EQ(lines[5], Line("-1 thread[%x](anonymous) state=-1 WaitFor return 0.\n", id, 0));
  EXPECT_EQ(lines[6], Line("1 Thread[0x%x] kill thread(0x%x)", self, id));
  EXPECT_EQ(lines[7].rfind("6 ~MP_Thread ,addr=0x", 0), 0u);
  EXPECT_FALSE(ThreadExists(id));
}

TEST(Thread, ThatWasNeverReleasedNeverRuns) {
  support::Channel channel;
  std::atomic<bool> ran{false};
  Function body = [&] {
    ran = true;
    return 0ul;
  };
  Start(&body, 0, "parked").reset();
  EXPECT_FALSE(ran);
  const std::vector<std::string> lines = channel.Printed("parked");
  ASSERT_GE(lines.size(), 3u);
  EXPECT_EQ(lines[0].substr(lines[0].size() - 7), "suspend");
  EXPECT_NE(lines[1].find("create THREAD"), std::string::npos);
  EXPECT_NE(lines[2].find("(parked) destroy without running\n"), std::string::npos);
}

TEST(Thread, CatchesWhatItsRoutineThrows) {
  support::Channel channel;
  Function body = []() -> unsigned long { throw 1; };
  Start(&body, 1, "thrower")->WaitFor(10000);
  EXPECT_EQ(channel.Logged("(thrower) Error.\n").at(0).substr(0, 6), "-4097 ");
  EXPECT_EQ(channel.Printed("(thrower) Error.\n").at(0).substr(0, 2), "3 ");
}

TEST(Thread, SpinsAndIsGoneAfterStop) {
  support::Channel channel;
  Function spin = []() -> unsigned long {
    for (;;) {
      asm volatile("");
    }
  };
  const auto thread = Start(&spin, 1, "spinner");
  const unsigned long id = thread->GetId();
  const support::Stopwatch took;
  thread->Stop();
  EXPECT_GE(took.Milliseconds(), 1990);
  EXPECT_EQ(thread->IsValid(), 0);
  WaitUntil([&] { return !ThreadExists(id); });
  EXPECT_EQ(channel.Printed("(spinner) not exit normally...,Kill it.\n").size(), 1u);
}

TEST(Thread, IsKilledWithACodeAndWaitedForWithoutDelay) {
  Function body = []() -> unsigned long {
    for (;;) usleep(1000);
  };
  // What a host may do does not shield the thread.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  const auto thread = Start(&body);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  EXPECT_EQ(thread->Terminate(-5), 1);
  EXPECT_EQ(thread->IsValid(), 1);  // until somebody waits for it
  const support::Stopwatch took;
  thread->WaitFor(0xFFFFFFFF);
  EXPECT_LT(took.Milliseconds(), 5000);
  unsigned long code = 0;
  EXPECT_EQ(thread->GetExitCode(code), 1);
  EXPECT_EQ(code, 0xFFFFFFFBul);
}

TEST(Thread, EndsItselfWithoutUnwinding) {
  support::Channel channel;
  struct Witness {
    bool* gone;
    ~Witness() { *gone = true; }
  };
  for (const bool kill : {false, true}) {
    bool unwound = false;
    Kalvo_Thread* self = nullptr;
    Function body = [&]() -> unsigned long {
      const Witness witness{&unwound};
      if (kill) {
        self->Kill(77);
      } else {
        self->Exit(77);
      }
      return 1;
    };
    const auto thread = Start(&body, 0, "leaver");
    self = thread.get();
    Release(thread.get());
    thread->WaitFor(10000);
    unsigned long code = 0;
    EXPECT_EQ(thread->GetExitCode(code), 1);
    EXPECT_EQ(code, 77ul);
    EXPECT_FALSE(unwound);
  }
  EXPECT_TRUE(channel.Printed("(leaver) exit").empty());
}

#if !defined(_LIBCPP_VERSION)  // its catch (...) cannot continue the forced unwinding
TEST(Thread, MayLeaveByTheSystemsOwnMeans) {
  support::Channel channel;
  Function body = []() -> unsigned long { pthread_exit(nullptr); };
  Start(&body, 1, "leaver")->WaitFor(10000);
  EXPECT_EQ(channel.Printed("(leaver) exit.\n").size(), 1u);
}
#endif

TEST(Thread, DestroysItself) {
  support::Channel channel;
  Kalvo_Thread* self = nullptr;
  Function body = [&] {
    self->Destroy();
    return 0ul;
  };
  self = Start(&body, 0, "suicide").release();
  self->Resume();
  WaitUntil([&] { return !channel.Printed("(suicide) destroy by self\n").empty(); });
}

#if !defined(KALVOBASE_SANITIZED)
TEST(Thread, TakesTwoCallsOnANullHandle) {
  Kalvo_Thread* volatile none = nullptr;
  none->NotifyQuit();
  none->Destroy();
}
#endif

TEST(Thread, StandsStillWhenSuspendReturns) {
  std::atomic<unsigned long> count{0};
  std::atomic<bool> end{false};
  Function body = [&] {
    while (!end) count.fetch_add(1, std::memory_order_relaxed);
    return 3ul;
  };
  const auto thread = Start(&body);
  for (int i = 0; i < 2000; ++i) {
    ASSERT_EQ(thread->Suspend(), 0ul);
    const unsigned long before = count;
    if (i % 100 == 0) usleep(2000);
    ASSERT_EQ(count, before);
    ASSERT_EQ(thread->Suspend(), 0ul);  // does not count
    ASSERT_EQ(thread->Resume(), 1ul);
  }
  EXPECT_EQ(thread->Suspend(), 0ul);
  end = true;
  thread->WaitFor(10000);  // lets it go on first
  unsigned long code = 0;
  EXPECT_EQ(thread->GetExitCode(code), 1);
  EXPECT_EQ(code, 3ul);
  EXPECT_EQ(thread->Suspend(), 0ul);
  EXPECT_EQ(thread->Resume(), 0ul);
}

#if !defined(KALVOBASE_SANITIZED)
// The sanitizers' allocators have locks of their own that everything needs.
TEST(Thread, IsHeldInsideTheAllocator) {
  std::atomic<bool> end{false};
  Function body = [&] {
    while (!end) std::free(std::malloc(1000000));
    return 0ul;
  };
  const auto thread = Start(&body);
  for (int i = 0; i < 500; ++i) {
    ASSERT_EQ(thread->Suspend(), 0ul);
    ASSERT_EQ(thread->Resume(), 1ul);
  }
  end = true;
  thread->WaitFor(10000);
  EXPECT_EQ(thread->IsValid(), 0);
}
#endif

#if !defined(KALVOBASE_SANITIZED)
// Whatever of the library it was in.
TEST(Thread, IsKilledWithoutALockOfTheLibrary) {
  const support::Folder folder;
  Kalvo_Log log;
  log.SetMainDir(folder.Path().c_str());
  log.Init("killed", 1);
  Kalvo_Timer timer;
  Function logs = [&]() -> unsigned long {
    for (;;) log.Trace(1, "%s", "a record");
  };
  Function sets = [&]() -> unsigned long {
    for (;;) timer.ClearTimer(timer.SetTimer(100000, 0, 0, 0, nullptr));
  };
  for (int i = 0; i < 300; ++i) {
    const auto thread = Start(i % 2 == 0 ? &logs : &sets);
    usleep(static_cast<useconds_t>(i % 10 * 10));
    ASSERT_EQ(thread->Suspend(), 0ul);
    log.Trace(1, "whole");
    timer.ClearTimer(timer.SetTimer(100000, 0, 0, 0, nullptr));
    thread->Kill(1);
    log.Trace(1, "whole");
    timer.ClearTimer(timer.SetTimer(100000, 0, 0, 0, nullptr));
  }
  for (const auto& file : support::LogFiles(folder.Path())) {
    std::istringstream lines(file.second);
    for (std::string line; std::getline(lines, line);) {
      ASSERT_TRUE(line.substr(31) == "whole" || line.substr(31) == "a record") << line;
    }
  }
}
#endif

// What a thread does when its thread-local objects are destroyed.
struct AtEnd {
  std::function<void()> what;
  ~AtEnd() {
    if (what) what();
  }
};
thread_local AtEnd atEnd;

#ifndef KALVOBASE_SANITIZED  // what is not unwound is a leak to them
TEST(Thread, EndsWhereverItSaysSo) {
  Kalvo_Thread* self = nullptr;
  std::atomic<bool> wentOn{false};
  std::atomic<bool> wasThere{false};
  Function body = [&] {
    atEnd.what = [&] {
      wasThere = true;
      self->Exit(5);
      wentOn = true;
    };
    return 4ul;
  };
  {
    const auto thread = Start(&body, 0);
    self = thread.get();
    Release(self);
    WaitUntil([&] { return wasThere.load(); });
  }
  EXPECT_FALSE(wentOn);
}
#endif

TEST(Thread, MakesAnotherWhenItHasClosedItself) {
  Kalvo_Thread* self = nullptr;
  std::atomic<unsigned long> code{0};
  Function inner = [] { return 6ul; };
  Function body = [&] {
    atEnd.what = [&] {
      const auto thread = Start(&inner);
      thread->WaitFor(10000);
      unsigned long result = 99;
      thread->GetExitCode(result);
      code = result;
    };
    delete self;
    return 0ul;
  };
  self = Start(&body, 0).release();
  Release(self);
  WaitUntil([&] { return code != 0; });
  EXPECT_EQ(code, 6ul);
}

TEST(Thread, HandsNothingOfAKilledThreadToTheNext) {
  static pthread_key_t key;
  static std::atomic<int> destroyed{0};
  ASSERT_EQ(pthread_key_create(&key, [](void*) { ++destroyed; }), 0);
  std::atomic<bool> set{false};
  Function killed = [&]() -> unsigned long {
    pthread_setspecific(key, &set);
    set = true;
    for (;;) usleep(1000);
  };
  Function next = [] { return pthread_getspecific(key) == nullptr ? 0ul : 1ul; };
  for (int i = 0; i < 20; ++i) {
    set = false;
    const auto first = Start(&killed);
    WaitUntil([&] { return set.load(); });
    first->WaitFor(0);
    const auto second = Start(&next);
    second->WaitFor(10000);
    unsigned long code = 9;
    EXPECT_EQ(second->GetExitCode(code), 1);
    EXPECT_EQ(code, 0ul);
  }
  EXPECT_EQ(destroyed, 0);
  pthread_key_delete(key);
}

TEST(Thread, HasAPriorityOfTheSystem) {
  std::atomic<bool> end{false};
  Function body = [&] {
    while (!end) usleep(1000);
    return 0ul;
  };
  const auto thread = Start(&body);
  const int own = getpriority(PRIO_PROCESS, 0);
  EXPECT_EQ(thread->GetPriority(), own);
  EXPECT_EQ(thread->SetPriority(own + 1), 0);
  EXPECT_EQ(thread->GetPriority(), own + 1);
  EXPECT_NE(thread->GetHandle(), nullptr);
  end = true;
  thread->WaitFor(10000);
  EXPECT_EQ(thread->SetPriority(0), 1);
}

// Neither is lost, whoever comes first.
TEST(Thread, IsSuspendedAndResumedByTwoThreads) {
  std::atomic<bool> end{false};
  Function body = [&] {
    while (!end) sched_yield();
    return 3ul;
  };
  for (int i = 0; i < 300; ++i) {
    end = false;
    const auto thread = Start(&body);
    std::thread other([&thread] {
      for (int k = 0; k < 20; ++k) thread->Resume();
    });
    for (int k = 0; k < 5; ++k) thread->Suspend();
    other.join();
    end = true;
    thread->WaitFor(20000);
    unsigned long code = 0;
    ASSERT_EQ(thread->GetExitCode(code), 1);
    ASSERT_EQ(code, 3ul);
  }
}

#if !defined(KALVOBASE_SANITIZED)
// One waits for the end while another kills, when the thread is about to end by itself.
TEST(Thread, IsKilledAtItsEnd) {
  std::atomic<bool> end{false};
  Function body = [&] {
    while (!end) {
    }
    return 3ul;
  };
  for (int i = 0; i < 3000; ++i) {
    end = false;
    const auto thread = Start(&body);
    std::thread other([&thread] { thread->WaitFor(20000); });
    end = true;
    for (volatile int k = 0; k < i % 100 * 30; k = k + 1) {
    }
    thread->Kill(1);
    other.join();
    ASSERT_EQ(thread->IsValid(), 0);
  }
}
#endif

TEST(Thread, LeavesNothingBehind) {
#if defined(KALVOBASE_SANITIZED)
  constexpr int kThreads = 1000;
#else
  constexpr int kThreads = 10000;
#endif
  Kalvo_Thread* self = nullptr;
  std::atomic<int> gone{0};
  Function plain = [] { return 0ul; };
  Function suicide = [&] {
    delete self;
    ++gone;
    return 0ul;
  };
  Function stuck = []() -> unsigned long {
    for (;;) usleep(1000);
  };
  const auto round = [&](int i) {
    const auto thread = Start(&plain, i % 2);
    if (i % 4 == 0) {
      self = Start(&suicide, 0).release();
      const int before = gone;
      self->Resume();
      WaitUntil([&] { return gone > before; });
    }
    if (i % 100 == 0) Start(&stuck)->WaitFor(0);
  };
  for (int i = 0; i < 200; ++i) round(i);
  [[maybe_unused]] const std::ptrdiff_t mappings = Mappings();
  const long descriptors = support::OpenDescriptors();
  for (int i = 0; i < kThreads; ++i) round(i);
  WaitUntil([] { return support::Names("/proc/self/task").size() <= 3; });
  EXPECT_EQ(support::OpenDescriptors(), descriptors);
#if !defined(KALVOBASE_SANITIZED)
  EXPECT_LE(Mappings(), mappings + 8);
#endif
}

#if !defined(__SANITIZE_THREAD__)
// The thread sanitizer ends a child that makes threads.
TEST(Thread, WorksInAForkedChild) {
  Function body = [] { return 5ul; };
  const auto before = Start(&body, 0);
  support::Child child([&](support::Child&) {
    const support::Stopwatch took;
    before->WaitFor(10000);  // which the child does not have
    const auto thread = Start(&body);
    thread->WaitFor(10000);
    unsigned long code = 0;
    if (thread->GetExitCode(code) != 1 || code != 5) _exit(1);
    std::exit(took.Milliseconds() > 8000 ? 2 : 0);
  });
  EXPECT_EQ(child.Join(), 0);
}
#endif

}  // namespace
