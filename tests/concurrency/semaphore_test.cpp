// Semaphores, in one process and between processes.

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "kalvobase/waitable.h"
#include "support/processes.h"
#include "support/threads.h"

namespace {

using support::Child;
using support::UniqueName;

TEST(Semaphore, Counts) {
  Kalvo_Semaphore semaphore;
  EXPECT_EQ(semaphore.IsValid(), 0);
  EXPECT_EQ(semaphore.Post(1), 0);
  EXPECT_EQ(semaphore.Wait(0), 0xFFFFFFFFu);
  EXPECT_EQ(semaphore.Init(-1, 1, nullptr), 0);
  EXPECT_EQ(semaphore.Init(2, 1, nullptr), 0);
  EXPECT_EQ(semaphore.Init(0, 0, nullptr), 0);
  EXPECT_EQ(semaphore.Init(1, 3, nullptr), 1);
  EXPECT_EQ(semaphore.Post(0), 0);
  EXPECT_EQ(semaphore.Post(-1), 0);
  EXPECT_EQ(semaphore.Post(3), 0);
  EXPECT_EQ(semaphore.Post(INT_MAX), 0);
  EXPECT_EQ(semaphore.Post(2), 1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(semaphore.Wait(-1), 0u);
  EXPECT_EQ(semaphore.Wait(0), 258u);
  EXPECT_EQ(semaphore.Wait(20), 258u);
  EXPECT_EQ(semaphore.Init(0, 0, nullptr), 0);  // and the old one is gone
  EXPECT_EQ(semaphore.IsValid(), 0);
}

TEST(Semaphore, LetsThroughAsManyAsArePosted) {
  Kalvo_Semaphore semaphore;
  semaphore.Init(0, INT_MAX, nullptr);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 2000; ++i) ASSERT_EQ(semaphore.Wait(60000), 0u);
    });
  }
  for (int i = 0; i < 4000; ++i) semaphore.Post(2);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(semaphore.Wait(0), 258u);
}

TEST(Semaphore, ItsEndLetsOneWaiterOut) {
  for (int round = 0; round < 200; ++round) {
    auto semaphore = std::make_unique<Kalvo_Semaphore>();
    semaphore->Init(0, 1, nullptr);
    support::Sleeper sleeper;
    unsigned long result = 1;
    std::thread waiter([&, raw = semaphore.get()] {
      sleeper.AboutToBlock();
      result = raw->Wait(60000);
    });
    sleeper.WaitUntilAsleep();
    semaphore.reset();
    waiter.join();
    EXPECT_EQ(result, 0u);
  }
}

TEST(Semaphore, WhoeverIsLetThroughMayDestroyIt) {
  for (int round = 0; round < 2000; ++round) {
    auto semaphore = std::make_unique<Kalvo_Semaphore>();
    semaphore->Init(0, 5, nullptr);
    std::thread poster([raw = semaphore.get()] { raw->Post(1); });
    EXPECT_EQ(semaphore->Wait(60000), 0u);
    semaphore.reset();
    poster.join();
  }
}

TEST(Semaphore, BetweenProcesses) {
  std::string name = UniqueName("between");
  Kalvo_Semaphore semaphore;
  ASSERT_EQ(semaphore.Init(0, 10, &name[0]), 1);
  Child poster([&](Child& self) {
    Kalvo_Semaphore mine;
    if (mine.Init(9, 9, &name[0]) != 1) _exit(1);  // the counts of the first one stay
    self.Ready();
    _exit(mine.Post(10) == 1 && mine.Post(1) == 0 ? 0 : 2);
  });
  poster.WaitUntilReady();
  EXPECT_EQ(poster.Join(), 0);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(semaphore.Wait(60000), 0u);
  EXPECT_EQ(semaphore.Wait(0), 258u);
}

}  // namespace
