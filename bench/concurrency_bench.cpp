// Queues against the containers and primitives of the standard library.

#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "duel.h"
#include "kalvobase/kalvobase.h"

namespace {

class Item : public Kalvo_QueueObject {
 public:
  int number = 0;
};

constexpr int kHandedOver = 100000;

void PlainList(int length) {
  const std::string work = "add at the tail, remove at the head, " + std::to_string(length);
  duel::Ours(work, [length](benchmark::State& state) {
    Kalvo_Queue queue(0, 0);
    std::vector<Item> items(static_cast<std::size_t>(length));
    for (auto _ : state) {
      for (Item& item : items) queue.AddItemAtTail(&item);
      for (int i = 0; i < length; ++i) benchmark::DoNotOptimize(queue.RemoveItemAtHead(0));
    }
  });
  duel::Peer(work, "std::list<T*>", 1.0, [length](benchmark::State& state) {
    std::list<Item*> queue;
    std::vector<Item> items(static_cast<std::size_t>(length));
    for (auto _ : state) {
      for (Item& item : items) queue.push_back(&item);
      for (int i = 0; i < length; ++i) {
        benchmark::DoNotOptimize(queue.front());
        queue.pop_front();
      }
    }
  });
}

// What a host would write without the library.
class StandardQueue {
 public:
  void Add(Item* item) {
    {
      const std::lock_guard<std::mutex> guard(mutex_);
      items_.push_back(item);
    }
    ready_.notify_one();
  }

  Item* Remove() {
    std::unique_lock<std::mutex> guard(mutex_);
    ready_.wait(guard, [this] { return !items_.empty(); });
    Item* item = items_.front();
    items_.pop_front();
    return item;
  }

 private:
  std::mutex mutex_;
  std::condition_variable ready_;
  std::deque<Item*> items_;
};

void HandOver() {
  const std::string work = "hand over 100,000 items between two threads";
  duel::Ours(work, [](benchmark::State& state) {
    std::vector<Item> items(kHandedOver);
    for (auto _ : state) {
      Kalvo_Queue queue(1, 1);
      std::thread producer([&] {
        for (Item& item : items) queue.AddItemAtTail(&item);
      });
      for (int taken = 0; taken < kHandedOver;) {
        if (queue.RemoveItemAtHead(1000) != nullptr) ++taken;
      }
      producer.join();
    }
  });
  duel::Peer(work, "std::mutex + condition_variable + deque", 1.0, [](benchmark::State& state) {
    std::vector<Item> items(kHandedOver);
    for (auto _ : state) {
      StandardQueue queue;
      std::thread producer([&] {
        for (Item& item : items) queue.Add(&item);
      });
      for (int taken = 0; taken < kHandedOver; ++taken) benchmark::DoNotOptimize(queue.Remove());
      producer.join();
    }
  });
}

void PingPong() {
  const std::string work = "pass 1 item to and fro 10,000 times";
  constexpr int kTurns = 10000;
  duel::Ours(work, [](benchmark::State& state) {
    for (auto _ : state) {
      Kalvo_Queue there(1, 1);
      Kalvo_Queue back(1, 1);
      std::thread echo([&] {
        for (int i = 0; i < kTurns; ++i) back.AddItemAtTail(there.RemoveItemAtHead(10000));
      });
      Item item;
      for (int i = 0; i < kTurns; ++i) {
        there.AddItemAtTail(&item);
        benchmark::DoNotOptimize(back.RemoveItemAtHead(10000));
      }
      echo.join();
    }
  });
  duel::Peer(work, "std::mutex + condition_variable + deque", 1.0, [](benchmark::State& state) {
    for (auto _ : state) {
      StandardQueue there;
      StandardQueue back;
      std::thread echo([&] {
        for (int i = 0; i < kTurns; ++i) back.Add(there.Remove());
      });
      Item item;
      for (int i = 0; i < kTurns; ++i) {
        there.Add(&item);
        benchmark::DoNotOptimize(back.Remove());
      }
      echo.join();
    }
  });
}

unsigned long SetEvent(void* event) {
  static_cast<Kalvo_Event*>(event)->Set();
  return 0;
}

void RunThread() {
  const std::string work = "create, run and join a thread";
  duel::Ours(work, [](benchmark::State& state) {
    Kalvo_Event ran(1, 0, nullptr);
    for (auto _ : state) {
      ran.Reset();
      // A thread that is waited for before its routine has begun never begins it.
      Kalvo_Thread thread(SetEvent, &ran, 1, "bench", nullptr, 0);
      ran.Wait(10000);
      thread.WaitFor(10000);
    }
  });
  duel::Peer(work, "std::thread", 0.5, [](benchmark::State& state) {
    for (auto _ : state) std::thread([] {}).join();
  });
}

[[maybe_unused]] const bool registered =
    (PlainList(1), PlainList(1000), HandOver(), PingPong(), RunThread(), true);

}  // namespace
