// Locks, the scope guard and the counter.

#include "kalvobase/lock.h"

#include <gtest/gtest.h>

#include <climits>
#include <thread>
#include <vector>

namespace {

TEST(Lock, ExcludesAndRecurses) {
  Kalvo_Lock lock;
  Kalvo_BaseLock* base = &lock;
  long shared = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) {
        Kalvo_AutoLock outer(base);
        Kalvo_AutoLock inner(&lock);
        inner.Lock();  // takes nothing
        ++shared;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(shared, 80000);
}

TEST(Lock, AReleaseByAStrangerHasNoEffect) {
  Kalvo_Lock lock;
  lock.Lock();
  bool taken = false;
  std::thread stranger([&] {
    lock.Unlock();
    lock.Lock();
    taken = true;
    lock.Unlock();
  });
  lock.Lock();
  EXPECT_FALSE(taken);
  lock.Unlock();
  EXPECT_FALSE(taken);
  lock.Unlock();
  stranger.join();
  EXPECT_TRUE(taken);
  lock.Unlock();  // held by nobody
  lock.Lock();
  lock.Unlock();
}

TEST(Lock, NothingToGuard) {
  Kalvo_AutoLock none(nullptr);
  Kalvo_BaseLock base;
  Kalvo_AutoLock guard(&base);
  Kalvo_AutoLock same(none);
  same = none;
  // Of the handles that share a lock one is destroyed.
  Kalvo_Lock lock;
  alignas(Kalvo_Lock) unsigned char storage[sizeof(Kalvo_Lock)];
  Kalvo_Lock* copy = new (storage) Kalvo_Lock(lock);
  copy->Lock();
  lock.Unlock();
  std::thread([&] { Kalvo_AutoLock other(&lock); }).join();
}

TEST(Counter, CountsAndWraps) {
  Kalvo_Counter counter;
  EXPECT_EQ(counter.Dec(), -1);
  EXPECT_EQ(counter.Set(INT_MAX), INT_MAX);
  EXPECT_EQ(counter.Inc(), INT_MIN);
  EXPECT_EQ(counter.Add(-1), INT_MAX);
  EXPECT_EQ(counter.Add(INT_MIN), -1);
  EXPECT_EQ((counter = 7), 7);
  EXPECT_EQ(counter.Get(), 7);
#if LONG_MAX > 2147483647L
  EXPECT_EQ(counter.Set(0x1FFFFFFFFL), -1);
#endif
  counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) counter.Inc();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter.Get(), 80000);
}

}  // namespace
