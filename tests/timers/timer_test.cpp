// Timers: when they fire, in which order, and what they may do meanwhile.

#include "kalvobase/timer.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "frame/messages.h"
#include "platform/clock.h"
#include "support/channel.h"
#include "support/stopwatch.h"
#include "timers/mp_timer_core.h"

namespace {

struct Firing {
  std::uint32_t id;
  std::uint32_t count;
  std::uint32_t owner;
};

// The engine without its thread: a test moves the clock, which stands still else, and runs the
// passes.
class Engine : public MP_TimerCore {
 public:
  explicit Engine(std::uint32_t tick = 1000) { PassAt(tick); }
  ~Engine() override { platform::shift_tick_count_for_test(0); }

  std::uint32_t Add(std::uint32_t ms, std::uint32_t owner = 0, std::uint32_t count = 1) {
    MP_TimerInfo timer;
    timer.ms = ms;
    timer.owner = owner;
    return Set(count, timer, nullptr);
  }

  // A pass at a tick: what fired in it.
  std::vector<Firing> PassAt(std::uint32_t tick) {
    platform::hold_tick_count_for_test(tick);
    RunPass();
    fired_.clear();
    DeliverFired();
    return fired_;
  }

  void Dispatch(MP_TimerInfo* info) override {
    fired_.push_back({info->id, info->count, info->owner});
  }

 private:
  std::vector<Firing> fired_;
};

std::vector<std::uint32_t> Owners(const std::vector<Firing>& firings) {
  std::vector<std::uint32_t> owners;
  for (const Firing& firing : firings) owners.push_back(firing.owner);
  return owners;
}

using Ids = std::vector<std::uint32_t>;

TEST(TimerEngine, FiresInOrderAndNeverMoreThanTheSlackEarly) {
  for (const std::uint32_t start : {1000u, 0xFFFFFFFFu - 150, 0x7FFFFFFFu - 150}) {
    Engine engine(start);
    engine.Add(200, 1);
    engine.Add(100, 2);
    engine.Add(100, 3);
    engine.Add(300, 4);
    engine.Add(3, 5);
    engine.Add(0xFFFFFFFF, 6);
    EXPECT_EQ(Owners(engine.PassAt(start)), Ids{5});
    EXPECT_EQ(Owners(engine.PassAt(start + 90)), Ids());
    EXPECT_EQ(Owners(engine.PassAt(start + 95)), Ids());
    EXPECT_EQ(Owners(engine.PassAt(start + 96)), (Ids{2, 3}));
    EXPECT_EQ(Owners(engine.PassAt(start + 190)), Ids());
    EXPECT_EQ(Owners(engine.PassAt(start + 250)), Ids{1});
    engine.Add(10, 7);
    EXPECT_EQ(Owners(engine.PassAt(start + 400)), (Ids{7, 4}));
  }
}

TEST(TimerEngine, RepeatsWithoutCarryingLatenessOrSpinning) {
  Engine engine;
  const std::uint32_t id = engine.Add(100, 1, 3);
  const std::uint32_t tiny = engine.Add(2, 2, MP_TimerCore::kWithoutEnd);
  const std::uint32_t none = engine.Add(0, 3, MP_TimerCore::kWithoutEnd);
  const std::uint32_t six = engine.Add(6, 4, MP_TimerCore::kWithoutEnd);
  std::uint32_t now = 1000;
  int tinies = 0;
  int nones = 0;
  int sixes = 0;
  std::vector<Firing> firings;
  // Ten passes in each millisecond, as when callbacks keep the thread awake.
  for (int i = 0; i < 4000; ++i) {
    for (const Firing& firing : engine.PassAt(now + static_cast<std::uint32_t>(i / 10))) {
      if (firing.id == tiny) ++tinies;
      if (firing.id == none) ++nones;
      if (firing.id == six) ++sixes;
      if (firing.id == id) firings.push_back(firing);
    }
  }
  EXPECT_EQ(tinies, 199);
  EXPECT_EQ(nones, 400);
  EXPECT_EQ(sixes, 66);
  ASSERT_EQ(firings.size(), 3u);
  for (std::uint32_t i = 0; i < 3; ++i) EXPECT_EQ(firings[i].count, i + 1);
  // Late by a second: the next interval is a whole one.
  const std::uint32_t late = engine.Add(100, 4, 2);
  now += 2000;
  const auto fires = [&](std::uint32_t tick) {
    int n = 0;
    for (const Firing& firing : engine.PassAt(tick)) n += firing.id == late ? 1 : 0;
    return n;
  };
  EXPECT_EQ(fires(now), 1);
  EXPECT_EQ(fires(now + 99), 0);
  EXPECT_EQ(fires(now + 100), 1);
  EXPECT_EQ(engine.Reset(late, 0), 0u);  // it has ended
}

TEST(TimerEngine, NumbersItsTimersAndKnowsTheStaleOnes) {
  Engine engine;
  support::Channel channel;
  EXPECT_EQ(engine.Add(100, 0, 0), 0u);
  const std::uint32_t first = engine.Add(100);
  EXPECT_EQ(first, 1u);
  EXPECT_EQ(channel.Logged().size(), 1u);
  EXPECT_EQ(channel.Printed().size(), 1u);
  const std::uint32_t second = engine.Add(100);
  EXPECT_EQ(second, 0x00010002u);
  engine.Clear(first);
  engine.Clear(0);
  EXPECT_TRUE(channel.Logged().empty());

  const auto line = [](const char* format, std::uint32_t a, std::uint32_t b) {
    char text[200];
    std::snprintf(text, sizeof(text), format, a, b);
    return "0 " + std::string(text);
  };
  engine.Clear(first);
  engine.Clear(second + 1);
  engine.Clear(0x01000001);
  EXPECT_EQ(engine.Reset(first, 5), 0u);
  EXPECT_EQ(engine.Watch(first, true), 0xFFFFFFFFu);
  EXPECT_EQ(engine.Watch(0x01000001, false), 0xFFFFFFFFu);
  EXPECT_EQ(channel.Logged(),
            (std::vector<std::string>{line(messages::kTimerClearMismatch, first, 0),
                                      line(messages::kTimerClearMismatch, second + 1, second),
                                      line(messages::kTimerClearMissing, 0x01000001, 0),
                                      line(messages::kTimerClearMismatch, first, 0),
                                      line(messages::kTimerWatchMismatch, first, 0),
                                      line(messages::kTimerWatchMissing, 0x01000001, 0)}));
  EXPECT_TRUE(channel.Printed().empty());
  EXPECT_EQ(engine.Reset(0, 5), 0u);
  EXPECT_EQ(engine.Watch(0, true), 0u);
  // Places are used in turn, and the count leaves 0 out.
  std::uint32_t id = 0;
  for (std::uint32_t i = 3; i <= 65536 + 3; ++i) {
    id = engine.Add(100);
    ASSERT_EQ(id & 0xFFFF, i <= 65535 ? i : i - 65535);
    engine.Clear(id);
  }
}

TEST(TimerEngine, ResetsAndWatches) {
  Engine engine;
  const std::uint32_t id = engine.Add(1000, 1);
  const std::uint32_t behind = engine.Add(1100, 2);
  engine.PassAt(1400);
  EXPECT_EQ(engine.Watch(id, false), 400u);
  EXPECT_EQ(engine.Reset(id, 0), id);
  EXPECT_EQ(Owners(engine.PassAt(2095)), Ids());
  EXPECT_EQ(Owners(engine.PassAt(2096)), Ids{2});
  EXPECT_EQ(engine.Watch(behind, false), 0xFFFFFFFFu);
  EXPECT_EQ(engine.Reset(id, 50), id);
  EXPECT_EQ(engine.Watch(id, true), 0u);
  EXPECT_EQ(Owners(engine.PassAt(9000)), Ids());
}

TEST(TimerEngine, TakesAsManyAsThereAreNumbers) {
  Engine engine;
  support::Channel channel;
  std::vector<std::uint32_t> ids(65536);
  for (std::uint32_t i = 0; i < 65536; ++i) {
    // In no order, so that every list is filled at any place.
    ids[i] = engine.Add(1000 + i * 7919 % 65536);
    ASSERT_NE(ids[i], 0u);
  }
  EXPECT_EQ(channel.Printed().size(), 256u);
  EXPECT_EQ(channel.Logged().size(), 256u);
  EXPECT_EQ(engine.Add(1234), 0u);
  char text[200];
  std::snprintf(text, sizeof(text), messages::kTimerNoResource, 1234, 0, 0, 0, "NULL");
  EXPECT_EQ(channel.Logged(), std::vector<std::string>{"-4097 " + std::string(text)});
  for (std::uint32_t i = 0; i < 65536; i += 2) engine.Clear(ids[i]);
  EXPECT_EQ(engine.PassAt(1000 + 1000 + 32768 - 1).size(), 16384u);
  EXPECT_EQ(engine.PassAt(1000 + 1000 + 65536).size(), 16384u);
}

TEST(TimerEngine, NoneOvertakesAnother) {
  // A tick resets a watchdog, whose interval is a little longer.
  for (const std::uint32_t longer : {1u, 3u, 4u}) {
    Engine engine;
    engine.Add(100, 1, MP_TimerCore::kWithoutEnd);
    const std::uint32_t watchdog = engine.Add(100 + longer, 2);
    int ticks = 0;
    for (std::uint32_t tick = 1000; tick < 3000; ++tick) {
      for (const Firing& firing : engine.PassAt(tick)) {
        ++ticks;
        EXPECT_EQ(firing.owner, 1u) << longer << " at " << tick;
        EXPECT_EQ(engine.Reset(watchdog, 0), watchdog);
      }
    }
    EXPECT_EQ(ticks, 20);  // the first one is early
  }
  // Due at the same time, a repeating one that was armed first comes first.
  Engine engine;
  engine.Add(50, 1, 2);
  engine.PassAt(1050);
  engine.Add(50, 2);
  EXPECT_EQ(Owners(engine.PassAt(1097)), Ids());
  EXPECT_EQ(Owners(engine.PassAt(1100)), (Ids{1, 2}));
  // Also if they are in different lists.
  const std::uint32_t first = engine.Add(60000);
  for (int i = 0; i < 254; ++i) engine.Add(60000);
  engine.Add(50, 3);
  engine.Add(50, 4);
  engine.Clear(first);
  engine.Add(50, 5);
  EXPECT_EQ(Owners(engine.PassAt(1150)), (Ids{3, 4, 5}));
}

// --- With the thread ------------------------------------------------------------------

class Listener : public Kalvo_Timer {
 public:
  using Event = std::function<void(unsigned long id, unsigned long count, unsigned long owner)>;

  explicit Listener(Event event = nullptr) : event_(std::move(event)) {}

  void OnTimer(unsigned long id, unsigned long count, unsigned long owner, unsigned long attr,
               unsigned long seq, const char* data) override {
    {
      const std::lock_guard<std::mutex> guard(lock_);
      told_.push_back(std::to_string(count) + " " + std::to_string(owner) + " " +
                      std::to_string(attr) + " " + std::to_string(seq) + " " +
                      (data != nullptr ? data : "null"));
    }
    if (event_) event_(id, count, owner);
  }

  std::vector<std::string> Told() {
    const std::lock_guard<std::mutex> guard(lock_);
    return told_;
  }

  // Waits for that many firings.
  std::vector<std::string> Told(std::size_t count) {
    const support::Stopwatch waited;
    while (Told().size() < count && waited.Milliseconds() < 30000) usleep(500);
    return Told();
  }

 private:
  std::mutex lock_;
  std::vector<std::string> told_;
  const Event event_;
};

TEST(Timer, HandsOverWhatItWasSetWith) {
  Listener listener;
  const support::Stopwatch took;
  std::string data = "text";
  listener.SetRepeatTimer(2, 30, 0xFFFFFFFF, 7, 8, data.c_str());
  data = "changed";
  EXPECT_EQ(listener.Told(2),
            (std::vector<std::string>{"1 4294967295 7 8 text", "2 4294967295 7 8 text"}));
  EXPECT_GE(took.Milliseconds(), 52);
  listener.SetTimer(0, 1, 2, 3, nullptr);
  EXPECT_EQ(listener.Told(3).at(2), "1 1 2 3 null");
}

// The thread sleeps a second if it knows of nothing to do.
TEST(Timer, WakesTheThread) {
  Listener listener;
  const support::Stopwatch took;
  for (std::size_t i = 1; i <= 30; ++i) {
    const bool anew = i % 2 == 0;
    const unsigned long id = listener.SetTimer(anew ? 60000 : 1, 0, 0, 0, nullptr);
    if (anew) listener.ResetTimer(id, 1);
    listener.Told(i);
    usleep(5000);  // until it sleeps again
  }
  EXPECT_LT(took.Milliseconds(), 10000);
}

TEST(Timer, MayDoAnythingToTimersMeanwhile) {
  support::Channel channel;
  auto victim = std::make_unique<Listener>();
  Listener* self = nullptr;
  const unsigned long kept = victim->SetTimer(60000, 0, 0, 0, nullptr);
  Listener listener([&](unsigned long id, unsigned long count, unsigned long owner) {
    if (owner == 9) throw 1;
    switch (count) {
      case 1:
        self->SetTimer(10, 9, 0, 0, nullptr);
        throw 1;
      case 2:
        victim.reset();
        break;
      case 3:
        self->ClearTimer(id);
        self->ClearTimer(id);  // which is refused
        break;
    }
  });
  self = &listener;
  victim->SetRepeatTimer(0xFFFFFFFF, 5, 1, 0, 0, nullptr);
  const unsigned long endless = listener.SetRepeatTimer(0xFFFFFFFF, 20, 5, 0, 0, nullptr);
  const std::vector<std::string> told = listener.Told(4);
  EXPECT_EQ(told.size(), 4u);
  EXPECT_EQ(victim, nullptr);
  usleep(50000);
  EXPECT_EQ(listener.Told().size(), 4u);
  EXPECT_EQ(listener.Watch(endless, 0), 0xFFFFFFFFul);
  EXPECT_NE(listener.Watch(kept, 1), 0xFFFFFFFFul);  // it ran on for nobody
  EXPECT_EQ(channel.Logged("-4097 <error> OnTimer Fatal ERROR!!!").size(), 2u);
}

// OnTimer uses the object to its end, which the sanitizers watch.
TEST(Timer, ADestructorThatClearsWaitsForDeliveries) {
  struct Owner : Kalvo_Timer {
    Owner() { id = SetRepeatTimer(20, 1, 0, 0, 0, nullptr); }
    ~Owner() override { ClearTimer(id); }
    void OnTimer(unsigned long, unsigned long, unsigned long, unsigned long, unsigned long,
                 const char*) override {
      text += 'x';
      usleep(300);
      text += 'y';
    }
    unsigned long id;
    std::string text = std::string(100, 't');
  };
  for (int i = 0; i < 100; ++i) {
    auto owner = std::make_unique<Owner>();
    usleep(static_cast<useconds_t>(i * 20));
  }

  std::atomic<int> inside{0};
  std::atomic<bool> goOn{false};
  const auto hold = [&](unsigned long, unsigned long, unsigned long) {
    ++inside;
    while (!goOn) usleep(100);
  };
  // Both have fired in one pass. The second waits for its turn, and a clear for the second.
  Listener first(hold);
  Listener second;
  unsigned long id = 0;
  Listener starter([&](unsigned long, unsigned long, unsigned long) {
    first.SetTimer(1, 1, 0, 0, nullptr);
    id = second.SetTimer(1, 2, 0, 0, nullptr);
    usleep(5000);
  });
  starter.SetTimer(0, 0, 0, 0, nullptr);
  while (inside == 0) usleep(100);
  second.ClearTimer(second.SetTimer(60000, 0, 0, 0, nullptr));  // another timer does not wait
  std::thread release([&] {
    usleep(20000);
    goOn = true;
  });
  second.ClearTimer(id);
  EXPECT_EQ(second.Told().size(), 1u);
  release.join();

  // A host that holds a lock for which OnTimer waits is not stuck for good.
  goOn = false;
  inside = 0;
  const unsigned long held = first.SetTimer(1, 1, 0, 0, nullptr);
  while (inside == 0) usleep(100);
  first.ClearTimer(held);
  EXPECT_EQ(inside, 1);
  goOn = true;
}

#if !defined(__SANITIZE_THREAD__)  // which allows a forked child no threads
// The child makes a timer thread of its own, and the one that forked leaves the service.
TEST(Timer, MayBeForkedInACall) {
  std::atomic<int> result{-1};
  Listener last([](unsigned long, unsigned long, unsigned long) { _exit(0); });
  Listener after;
  Listener forking([&](unsigned long, unsigned long, unsigned long) {
    const pid_t child = fork();
    if (child == 0) {
      last.SetTimer(20, 0, 0, 0, nullptr);
      usleep(5000);
      return;
    }
    int status = -1;
    waitpid(child, &status, 0);
    result = status;
  });
  Listener starter([&](unsigned long, unsigned long, unsigned long) {
    forking.SetTimer(1, 0, 0, 0, "text of a length that is no part of the string object");
    for (int i = 0; i < 20; ++i) after.SetTimer(1, 0, 0, 0, "another text of such a length");
    usleep(5000);
  });
  starter.SetTimer(0, 0, 0, 0, nullptr);
  EXPECT_EQ(after.Told(20).size(), 20u);
  EXPECT_EQ(result, 0);
}
#endif

TEST(Timer, TakesOperationsFromManyThreads) {
  constexpr int kThreads = 4;
  std::atomic<std::size_t> left{0};
  Listener listener;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&listener, &left] {
      for (int i = 0; i < 3000; ++i) {
        const bool ends = i % 5 != 0;
        const unsigned long ms = ends ? 60000 : static_cast<unsigned long>(i % 50 + 1);
        const unsigned long id = listener.SetTimer(60000, 0, 0, 0, "some text");
        listener.ResetTimer(id, ms);
        if (i % 5 == 1) {
          listener.Watch(id, 1);
        } else if (ends) {
          listener.ClearTimer(id);
        } else {
          ++left;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(listener.Told(left).size(), left);
}

}  // namespace
