// Events.

#include "platform/event.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "kalvobase/process.h"
#include "kalvobase/waitable.h"
#include "support/stopwatch.h"
#include "support/threads.h"

namespace {

constexpr unsigned long kLong = 60000;

TEST(Event, States) {
  Kalvo_Event manual;
  EXPECT_EQ(manual.Wait(0), 0);
  EXPECT_EQ(manual.Wait(0), 0);
  EXPECT_EQ(manual.Set(), 0);
  EXPECT_NE(manual.Reset(), 0);
  EXPECT_EQ(manual.Wait(0), 258);
  EXPECT_NE(manual.Set(), 0);
  EXPECT_EQ(manual.Wait(0xFFFFFFFF), 0);

  Kalvo_Event automatic(0, 7, "a name is of no account");
  EXPECT_EQ(automatic.Wait(0), 0);
  EXPECT_EQ(automatic.Wait(0), 258);
  EXPECT_EQ(automatic.Wait(20), 258);
  EXPECT_NE(automatic.Set(), 0);
  EXPECT_EQ(automatic.Set(), 0);
  EXPECT_EQ(automatic.Wait(kLong), 0);
  EXPECT_EQ(automatic.Wait(0), 258);
  EXPECT_EQ(automatic.IsManualReset(), 1);
  EXPECT_EQ(automatic.Pulse(), 1);
  EXPECT_EQ(automatic.Wait(0), 258);

  Kalvo_BaseEvent base;
  EXPECT_EQ(base.Set() + base.Reset() + base.Wait(kLong), 0);
  EXPECT_EQ(base.Pulse() + base.IsManualReset(), 2);
}

TEST(Event, TheHandleBlocksUntilTheFirstSet) {
  Kalvo_Event event(1, 1, nullptr);
  platform::Event* handle = static_cast<platform::Event*>(event.GetHandle());
  EXPECT_EQ(event.Wait(0), 0);
  EXPECT_EQ(platform::event_wait(handle, 0), platform::kWaitTimedOut);
  EXPECT_EQ(event.Set(), 0);
  EXPECT_EQ(platform::event_wait(handle, 0), platform::kWaitSignalled);
}

// Also under automatic reset, which resets the state and selects nobody.
TEST(Event, OneSetWakesAllThatWait) {
  for (const int manual : {0, 1}) {
    Kalvo_Event event(manual, 0, nullptr);
    support::Sleeper sleepers[4];
    std::atomic<int> woken{0};
    std::vector<std::thread> threads;
    for (support::Sleeper& sleeper : sleepers) {
      threads.emplace_back([&] {
        sleeper.AboutToBlock();
        if (event.Wait(kLong) == 0) ++woken;
      });
    }
    for (const support::Sleeper& sleeper : sleepers) sleeper.WaitUntilAsleep();
    event.Set();
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(woken, 4);
  }
}

TEST(Event, ASetAndResetDoesNotLoseThoseWhoBlock) {
  platform::Event* event = platform::event_create();
  for (int round = 0; round < 200; ++round) {
    support::Sleeper sleeper;
    std::uint32_t result = platform::kWaitFailed;
    std::thread waiter([&] {
      sleeper.AboutToBlock();
      result = platform::event_wait(event, kLong);
    });
    sleeper.WaitUntilAsleep();
    platform::event_set(event);
    platform::event_reset(event);
    waiter.join();
    EXPECT_EQ(result, platform::kWaitSignalled);
  }
  platform::event_destroy(event);
}

TEST(Event, WhoeverIsWokenMayDestroyIt) {
  for (int round = 0; round < 2000; ++round) {
    auto event = std::make_unique<Kalvo_Event>(round % 2, 0, nullptr);
    std::thread setter([raw = event.get()] { raw->Set(); });
    EXPECT_EQ(event->Wait(kLong), 0);
    event.reset();
    setter.join();
  }
}

// A signal every millisecond or so, with a handler that makes the calls under it fail with
// EINTR.
TEST(Event, WaitsKeepTheirLengthUnderSignals) {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  struct sigaction old;
  sigaction(SIGUSR1, &action, &old);
  std::atomic<bool> done{false};
  const pthread_t target = pthread_self();
  std::thread storm([&] {
    while (!done) {
      pthread_kill(target, SIGUSR1);
      Kalvo_Thread_Sleep(1);
    }
  });
  Kalvo_Event event(1, 0, nullptr);
  Kalvo_Semaphore semaphore;
  semaphore.Init(0, 1, nullptr);
  support::Stopwatch watch;
  EXPECT_EQ(event.Wait(150), 258);
  EXPECT_GE(watch.Milliseconds(), 150);
  EXPECT_EQ(semaphore.Wait(150), 258u);
  EXPECT_GE(watch.Milliseconds(), 300);
  Kalvo_Thread_Sleep(150);
  EXPECT_GE(watch.Milliseconds(), 450);
  done = true;
  storm.join();
  sigaction(SIGUSR1, &old, nullptr);
}

}  // namespace
