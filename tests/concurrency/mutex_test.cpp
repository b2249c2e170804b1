// Mutexes, in one process and between processes.

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "kalvobase/waitable.h"
#include "support/processes.h"
#include "support/stopwatch.h"

namespace {

using support::Child;
using support::UniqueName;

int InOtherThread(Kalvo_Mutex* mutex, int ms) {
  int result = -1;
  std::thread([&] {
    result = mutex->Lock(ms);
    if (result == 1) mutex->Unlock();
  }).join();
  return result;
}

TEST(Mutex, BeforeInit) {
  Kalvo_Mutex mutex;
  EXPECT_EQ(mutex.IsValid() + mutex.Lock(0) + mutex.Lock(-1) + mutex.Unlock() + mutex.IsLocked(),
            0);
}

TEST(Mutex, CountsLevels) {
  Kalvo_Mutex mutex;
  EXPECT_EQ(mutex.Init(1, nullptr), 1);
  EXPECT_EQ(mutex.IsValid(), 1);
  EXPECT_EQ(mutex.Lock(-1), 1);
  EXPECT_EQ(mutex.IsLocked(), 0);  // not by another thread
  EXPECT_EQ(InOtherThread(&mutex, 0), 0);
  EXPECT_EQ(InOtherThread(&mutex, 20), 0);
  EXPECT_EQ(mutex.Unlock(), 1);
  EXPECT_EQ(InOtherThread(&mutex, 0), 0);
  EXPECT_EQ(mutex.Unlock(), 1);
  EXPECT_EQ(mutex.Unlock(), 0);
  EXPECT_EQ(mutex.IsLocked(), 0);
  EXPECT_EQ(InOtherThread(&mutex, 0), 1);  // asking did not take it
  std::thread([&] { EXPECT_EQ(mutex.Unlock(), 0); }).join();
}

TEST(Mutex, PassesOnWhenItsOwnersThreadEnds) {
  Kalvo_Mutex mutex;
  mutex.Init(0, nullptr);
  std::thread([&] { EXPECT_EQ(mutex.Lock(-1), 1); }).join();
  EXPECT_EQ(mutex.Lock(1000), 0);  // abandoned, and held
  EXPECT_EQ(InOtherThread(&mutex, 0), 0);
  EXPECT_EQ(mutex.Unlock(), 1);
  EXPECT_EQ(mutex.Lock(0), 1);
}

// The memory of a mutex must outlive its owner's hold on it, whatever the host does.
TEST(Mutex, DestroyedWhileAnotherThreadHoldsIt) {
  for (const bool named : {false, true}) {
    std::string name = named ? UniqueName("parked") : "";
    auto mutex = std::make_unique<Kalvo_Mutex>();
    mutex->Init(0, &name[0]);
    Kalvo_Event locked(1, 0, nullptr);
    Kalvo_Event go(1, 0, nullptr);
    std::thread owner([&] {
      mutex->Lock(-1);
      locked.Set();
      go.Wait(0xFFFFFFFF);
    });
    locked.Wait(0xFFFFFFFF);
    mutex.reset();
    // The name still finds it, and what is held by it stays held.
    Kalvo_Mutex again;
    EXPECT_EQ(again.Init(0, &name[0]), 1);
    EXPECT_EQ(again.IsLocked(), named ? 1 : 0);
    go.Set();
    owner.join();
    EXPECT_EQ(again.Lock(0), named ? 0 : 1);  // abandoned
    Kalvo_Mutex next;
    EXPECT_EQ(next.Init(0, nullptr), 1);
    EXPECT_EQ(again.Unlock(), 1);  // clearing up took no level away
  }
}

TEST(Mutex, OneObjectForOneName) {
  std::string name = UniqueName("one");
  Kalvo_Mutex a;
  Kalvo_Mutex b;
  EXPECT_EQ(a.Init(1, &name[0]), 1);
  EXPECT_EQ(b.Init(1, &name[0]), 1);  // it exists, so nothing is taken
  EXPECT_EQ(b.Unlock(), 1);
  EXPECT_EQ(b.Unlock(), 0);
  EXPECT_EQ(a.Lock(0), 1);
  EXPECT_EQ(InOtherThread(&b, 0), 0);
  {
    Kalvo_Mutex third;
    third.Init(0, &name[0]);
  }
  EXPECT_EQ(InOtherThread(&b, 0), 0);  // a handle less changes nothing
  EXPECT_EQ(a.Init(0, &name[0]), 1);
  EXPECT_EQ(b.Unlock(), 1);
  Kalvo_Semaphore semaphore;
  EXPECT_EQ(semaphore.Init(0, 1, &name[0]), 0);  // a name of another kind
}

TEST(Mutex, AbandonedByAKilledProcess) {
  std::string name = UniqueName("abandoned");
  Kalvo_Mutex mutex;
  ASSERT_EQ(mutex.Init(0, &name[0]), 1);
  Child owner([&](Child& self) {
    Kalvo_Mutex mine;
    if (mine.Init(0, &name[0]) != 1 || mine.Lock(-1) != 1) _exit(1);
    self.Ready();
    self.WaitForTheEnd();
  });
  owner.WaitUntilReady();
  EXPECT_EQ(mutex.IsLocked(), 1);
  EXPECT_EQ(mutex.Lock(20), 0);
  int result = -1;
  support::Stopwatch watch;
  std::thread waiter([&] {
    result = mutex.Lock(60000);
    EXPECT_EQ(mutex.Unlock(), 1);  // it was taken all the same
  });
  owner.Kill();
  waiter.join();
  EXPECT_EQ(result, 0);
  EXPECT_LT(watch.Milliseconds(), 30000);
  EXPECT_EQ(mutex.Lock(0), 1);
  EXPECT_EQ(mutex.Unlock(), 1);

  Child second([&](Child& self) {
    mutex.Lock(-1);
    self.Ready();
    self.WaitForTheEnd();
  });
  second.WaitUntilReady();
  second.Kill();
  EXPECT_EQ(mutex.IsLocked(), 0);
  EXPECT_EQ(mutex.Lock(0), 0);  // asking did not eat the news
  EXPECT_EQ(mutex.Unlock(), 1);
}

// Asking whether a mutex is held must not make others who ask believe that it is.
TEST(Mutex, AskingTakesNothing) {
  Kalvo_Mutex mutex;
  mutex.Init(0, nullptr);
  std::atomic<int> asking{0};
  const auto ask = [&] {
    for (++asking; asking < 2;) std::this_thread::yield();
    int held = 0;
    for (int i = 0; i < 200000; ++i) held += mutex.IsLocked();
    return held;
  };
  int heldThere = -1;
  std::thread other([&] { heldThere = ask(); });
  EXPECT_EQ(ask(), 0);
  other.join();
  EXPECT_EQ(heldThere, 0);
}

// A child has its parent's descriptors, and their locks, until it ends.
TEST(Mutex, AForkedChildKeepsTheName) {
  std::string name = UniqueName("forked");
  auto mutex = std::make_unique<Kalvo_Mutex>();
  ASSERT_EQ(mutex->Init(0, &name[0]), 1);
  {
    Child closing([&](Child&) { mutex.reset(); });
    EXPECT_EQ(closing.Join(), 0);
  }
  mutex->Lock(-1);
  Child peer([&](Child&) {
    Kalvo_Mutex mine;
    mine.Init(0, &name[0]);
    _exit(mine.IsLocked());
  });
  EXPECT_EQ(peer.Join(), 1);
}

TEST(Mutex, HandlesOfOneNameCloseAtOnce) {
  for (int round = 0; round < 200; ++round) {
    std::string name = UniqueName("at once");
    auto a = std::make_unique<Kalvo_Mutex>();
    auto b = std::make_unique<Kalvo_Mutex>();
    a->Init(1, &name[0]);
    b->Init(0, &name[0]);
    std::thread closing([&] { b.reset(); });
    a.reset();
    closing.join();
  }
}

TEST(Mutex, NamesGoWithTheirLastUser) {
  std::string name = UniqueName("gone");
  {
    Kalvo_Mutex mutex;
    ASSERT_EQ(mutex.Init(1, &name[0]), 1);
    Child other([&](Child&) {
      Kalvo_Mutex mine;
      mine.Init(0, &name[0]);
      _exit(mine.IsLocked());
    });
    EXPECT_EQ(other.Join(), 1);
  }
  Kalvo_Semaphore semaphore;
  EXPECT_EQ(semaphore.Init(2, 3, &name[0]), 1);  // free again, for any kind
}

TEST(Mutex, NamesGoWithAKilledUser) {
  std::string name = UniqueName("killed");
  Child user([&](Child& self) {
    Kalvo_Mutex mine;
    if (mine.Init(1, &name[0]) != 1) _exit(1);
    self.Ready();
    self.WaitForTheEnd();
  });
  user.WaitUntilReady();
  user.Kill();
  Kalvo_Mutex mutex;
  ASSERT_EQ(mutex.Init(0, &name[0]), 1);
  EXPECT_EQ(mutex.Lock(0), 1);  // a new one, not an abandoned one
}

TEST(Mutex, NamesHoldAnyBytes) {
  const std::string base = UniqueName("any");
  for (const std::string& tail : {std::string("/../../x"), std::string("\\Global\\y z"),
                                  std::string("\n\xFF%s"), std::string(5000, 'n')}) {
    std::string name = base + tail;
    Kalvo_Mutex mutex;
    EXPECT_EQ(mutex.Init(1, &name[0]), 1);
    Kalvo_Mutex same;
    EXPECT_EQ(same.Init(0, &name[0]), 1);
    EXPECT_EQ(InOtherThread(&same, 0), 0);
  }
}

// Thread numbers mean something else in another namespace of the kernel.
TEST(Mutex, InAnotherNumberSpace) {
  std::string name = UniqueName("space");
  Kalvo_Mutex mutex;
  ASSERT_EQ(mutex.Init(1, &name[0]), 1);
  Child mover([&](Child&) {
    if (unshare(CLONE_NEWPID) != 0) _exit(77);
    Child stranger([&](Child&) {
      Kalvo_Mutex others;
      _exit(others.Init(0, &name[0]) == 1 && others.Lock(0) == 1 ? 0 : 1);
    });
    _exit(stranger.Join());
  });
  const int result = mover.Join();
  if (result == 77) GTEST_SKIP() << "no right to a namespace of its own";
  EXPECT_EQ(result, 0);
}

// Its file is removed while it is in use. Who opens the name after that shares it again.
TEST(Mutex, WhenItsNameWasRemoved) {
  namespace fs = std::filesystem;
  std::string name = UniqueName("removed");
  int tell[2];
  ASSERT_EQ(pipe(tell), 0);
  Child other([&](Child&) {
    char go;
    if (read(tell[0], &go, 1) != 1) _exit(2);
    Kalvo_Mutex mine;
    _exit(mine.Init(0, &name[0]) == 1 && mine.Lock(0) == 0 ? 0 : 1);
  });
  Kalvo_Mutex orphan;
  ASSERT_EQ(orphan.Init(1, &name[0]), 1);
  int removed = 0;
  for (const auto& descriptor : fs::directory_iterator("/proc/self/fd")) {
    std::error_code ignored;
    const fs::path file = fs::read_symlink(descriptor, ignored);
    if (file.string().find("/kalvobase-") != std::string::npos) removed += fs::remove(file) ? 1 : 0;
  }
  ASSERT_EQ(removed, 1);
  Kalvo_Mutex mutex;
  ASSERT_EQ(mutex.Init(1, &name[0]), 1);
  ASSERT_EQ(write(tell[1], "g", 1), 1);
  EXPECT_EQ(other.Join(), 0);
  for (const int end : tell) close(end);
}

// Handles of few names come and go in many threads, some of which hold what they destroy.
TEST(Mutex, NamesThatAreClosedWhileTheyAreHeld) {
  std::vector<std::string> names;
  for (int i = 0; i < 3; ++i) names.push_back(UniqueName("held"));
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&names, t] {
      for (std::size_t i = 0; i < 1500; ++i) {
        Kalvo_Mutex mutex;
        mutex.Init(0, &names[(i + static_cast<std::size_t>(t)) % names.size()][0]);
        mutex.Lock(1);
      }
      for (std::string& name : names) {
        Kalvo_Mutex mutex;
        mutex.Init(0, &name[0]);
        while (mutex.Unlock() == 1) {
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
