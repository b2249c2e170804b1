// Objects made on first use.

#include "frame/process_object.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

struct Counted {
  Counted() {
    ++made;
    std::this_thread::yield();
  }
  ~Counted() { ++freed; }

  static std::atomic<int> made;
  static std::atomic<int> freed;
};

std::atomic<int> Counted::made{0};
std::atomic<int> Counted::freed{0};

ProcessObject<Counted> object;

TEST(ProcessObject, IsMadeOnceByTheFirstAndAnewAfterTheEnd) {
  object.Free();
  EXPECT_EQ(Counted::freed, 0);
  for (int round = 1; round <= 50; ++round) {
    std::vector<std::thread> threads;
    std::atomic<Counted*> first{nullptr};
    std::atomic<int> strangers{0};
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&] {
        Counted* expected = nullptr;
        Counted* mine = object.Get();
        if (!first.compare_exchange_strong(expected, mine) && expected != mine) ++strangers;
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(strangers, 0);
    EXPECT_EQ(Counted::made, round);
    object.Free();
    object.Free();
    EXPECT_EQ(Counted::freed, round);
  }
}

}  // namespace
