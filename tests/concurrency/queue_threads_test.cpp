// The queue between threads.

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "kalvobase/queue.h"

namespace {

struct Item : Kalvo_QueueObject {
  int number = 0;
};

TEST(QueueThreads, NothingIsLostOrDoubled) {
  constexpr int kProducers = 3;
  constexpr int kConsumers = 3;
  constexpr int kEach = 5000;
  Kalvo_Queue queue(1, 1);
  std::vector<std::atomic<int>> seen(kProducers * kEach);
  std::atomic<int> taken{0};
  std::vector<std::thread> threads;
  for (int p = 0; p < kProducers; ++p) {
    threads.emplace_back([&, p] {
      for (int i = 0; i < kEach; ++i) {
        Item* item = new Item;
        item->number = p * kEach + i;
        if (i % 3 == 0) {
          queue.AddItemAtHead(item);
        } else {
          queue.AddItemAtTail(item);
        }
      }
    });
  }
  for (int c = 0; c < kConsumers; ++c) {
    threads.emplace_back([&] {
      while (taken < kProducers * kEach) {
        const std::unique_ptr<Kalvo_QueueObject> item(queue.RemoveItemAtHead(50));
        if (item == nullptr) continue;
        ++seen[static_cast<std::size_t>(static_cast<Item*>(item.get())->number)];
        ++taken;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::atomic<int>& count : seen) ASSERT_EQ(count, 1);
  EXPECT_EQ(queue.GetItemCount(), 0u);
  EXPECT_EQ(queue.WaitData(0), 258);
}

// Objects are moved between queues, and removed, by several threads at once.
TEST(QueueThreads, MovingObjects) {
  Kalvo_Queue a(1, 1);
  Kalvo_Queue b(1, 1);
  std::vector<Item> items(50);
  for (Item& item : items) a.AddItemAtTail(&item);
  std::vector<std::thread> threads;
  std::atomic<long> moves{0};
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&, t] {
      Kalvo_Queue* from = t % 2 == 0 ? &a : &b;
      Kalvo_Queue* to = t % 2 == 0 ? &b : &a;
      for (int i = 0; i < 5000; ++i) {
        Kalvo_QueueObject* item = from->RemoveItemAtHead(0);
        if (item == nullptr) continue;
        to->AddItemAtTail(item);
        ++moves;
      }
    });
  }
  for (int i = 0; i < 5000; ++i) {
    Item& item = items[static_cast<std::size_t>(i) % items.size()];
    item.GetOwner();
    item.ToHead();
    item.Next();
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(moves, 0);
  EXPECT_EQ(a.GetItemCount() + b.GetItemCount(), items.size());
}

// Sorting is one step for the others: an object that is deleted or moved meanwhile is waited
// for, and stays where it was moved to.
TEST(QueueThreads, SortingIsAtomic) {
  Kalvo_Queue queue(1, 1);
  Kalvo_Queue other(1, 1);
  for (int i = 0; i < 200; ++i) queue.AddItemAtTail(new Item);
  std::thread sorter([&] {
    for (int i = 0; i < 100; ++i) {
      queue.QSort([](Kalvo_QueueObject*, Kalvo_QueueObject*, void*) { return 0; }, nullptr);
    }
  });
  for (int i = 0; i < 100; ++i) {
    delete queue.RemoveItemAtTail(0);
    Item* moved = new Item;
    queue.AddItemAtHead(moved);
    std::this_thread::yield();
    other.AddItemAtTail(moved);
  }
  sorter.join();
  EXPECT_EQ(queue.GetItemCount(), 100u);
  EXPECT_EQ(other.GetItemCount(), 100u);
}

// An item's destructor may wait for a thread that waits for data.
TEST(QueueThreads, WaitingNeedsNoLock) {
  struct Joining : Kalvo_QueueObject {
    explicit Joining(Kalvo_Queue* queue) : waiter([queue] { queue->WaitData(20); }) {}
    Joining(const Joining&) = delete;
    Joining& operator=(const Joining&) = delete;
    ~Joining() override { waiter.join(); }
    std::thread waiter;
  };
  Kalvo_Queue queue(1, 1);
  queue.AddItemAtTail(new Joining(&queue));
  queue.RemoveAll();
}

TEST(QueueThreads, WaitersAreWoken) {
  Kalvo_Queue queue(1, 1);
  std::vector<std::thread> waiters;
  std::atomic<int> woken{0};
  for (int t = 0; t < 4; ++t) {
    waiters.emplace_back([&] {
      if (queue.WaitData(60000) == 0) ++woken;
    });
  }
  queue.Signal();
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(woken, 4);
}

// The consumer of the last item owns the queue and ends it at once.
TEST(QueueThreads, WhoeverIsWokenMayDestroyIt) {
  for (int round = 0; round < 2000; ++round) {
    auto queue = std::make_unique<Kalvo_Queue>(1, 1);
    Item item;
    std::thread producer([&, raw = queue.get()] { raw->AddItemAtTail(&item); });
    if (round % 2 == 0) {
      EXPECT_EQ(queue->RemoveItemAtHead(60000), &item);
    } else {
      EXPECT_EQ(queue->WaitData(60000), 0);
      queue->RemoveItemAtHead(0);
    }
    queue.reset();
    producer.join();
  }
}

}  // namespace
