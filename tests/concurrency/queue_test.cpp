// The queue as a list.

#include "kalvobase/queue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <list>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "kalvobase/text.h"
#include "support/stopwatch.h"

namespace {

class Item : public Kalvo_QueueObject {
 public:
  explicit Item(int itemNumber = 0, int* aliveCount = nullptr)
      : number(itemNumber), alive(aliveCount) {
    if (alive != nullptr) ++*alive;
  }
  Item(const Item&) = default;
  Item& operator=(const Item&) = default;
  ~Item() override {
    if (alive != nullptr) --*alive;
  }

  int number;
  int* alive;
};

int NumberOf(Kalvo_QueueObject* object) {
  return object != nullptr ? static_cast<Item*>(object)->number : -1;
}

std::vector<int> Forwards(Kalvo_Queue* queue) {
  std::vector<int> numbers;
  for (Kalvo_QueueObject* o = queue->PeekHead(0); o != nullptr; o = o->Next()) {
    numbers.push_back(NumberOf(o));
  }
  return numbers;
}

std::vector<int> Backwards(Kalvo_Queue* queue) {
  std::vector<int> numbers;
  for (Kalvo_QueueObject* o = queue->PeekTail(0); o != nullptr; o = o->Pre()) {
    numbers.push_back(NumberOf(o));
  }
  std::reverse(numbers.begin(), numbers.end());
  return numbers;
}

TEST(Queue, Positions) {
  Kalvo_Queue queue(0, 0);
  EXPECT_EQ(queue.PeekItemAt(0, 0), nullptr);
  EXPECT_EQ(queue.RemoveItemAtHead(0), nullptr);
  EXPECT_EQ(queue.InsertItemAt(nullptr, 0), nullptr);
  for (const int n : {1, 2, 3}) queue.AddItemAtTail(new Item(n));
  EXPECT_EQ(NumberOf(queue.PeekItemAt(5, 0)), 3);
  EXPECT_EQ(NumberOf(queue.PeekItemAt(-7, 0)), 3);
  EXPECT_EQ(NumberOf(queue.PeekItemAt(LONG_MAX, 0)), 3);
  Item* x = new Item(9);
  EXPECT_EQ(queue.InsertItemAt(x, 5), x);
  EXPECT_EQ(Forwards(&queue), (std::vector<int>{1, 2, 3, 9}));
  queue.InsertItemAt(x, 1);  // it moves
  EXPECT_EQ(Forwards(&queue), (std::vector<int>{1, 9, 2, 3}));
  queue.InsertItemAt(x, 2);  // counted without itself
  EXPECT_EQ(Forwards(&queue), (std::vector<int>{1, 2, 9, 3}));
  EXPECT_EQ(queue.GetItemCount(), 4u);
}

TEST(Queue, ObjectsMoveThemselves) {
  Kalvo_Queue queue(1, 1);
  Kalvo_Queue other(1, 1);
  Item a(1);
  Item b(2);
  Item c(3);
  EXPECT_EQ(a.Next(), nullptr);
  EXPECT_EQ(a.GetOwner(), nullptr);
  EXPECT_EQ(a.AddItemAfter(&b), nullptr);
  a.Remove();
  a.ToHead();
  queue.AddItemAtHead(&a);
  a.ToHead();
  EXPECT_EQ(a.AddItemAfter(&a), nullptr);
  EXPECT_EQ(a.AddItemBefore(nullptr), nullptr);
  EXPECT_EQ(a.AddItemAfter(&b), &b);
  EXPECT_EQ(b.AddItemBefore(&c), &c);
  EXPECT_EQ(Forwards(&queue), (std::vector<int>{1, 3, 2}));
  EXPECT_EQ(Backwards(&queue), (std::vector<int>{1, 3, 2}));
  c.ToTail();
  b.ToHead();
  EXPECT_EQ(Forwards(&queue), (std::vector<int>{2, 1, 3}));
  EXPECT_EQ(c.GetOwner(), &queue);
  EXPECT_EQ(c.Next(), nullptr);
  EXPECT_EQ(b.Pre(), nullptr);
  Item d(4);
  other.AddItemAtTail(&d);
  d.AddItemBefore(&b);
  EXPECT_EQ(b.GetOwner(), &other);
  EXPECT_EQ(Forwards(&queue), (std::vector<int>{1, 3}));
  EXPECT_EQ(Forwards(&other), (std::vector<int>{2, 4}));
}

TEST(Queue, WhoDeletesWhat) {
  int alive = 0;
  {
    Kalvo_Queue queue;
    for (int i = 0; i < 5; ++i) queue.AddItemAtTail(new Item(i, &alive));
    delete queue.PeekItemAt(2, 0);  // leaves the queue first
    EXPECT_EQ(Forwards(&queue), (std::vector<int>{0, 1, 3, 4}));
    const std::unique_ptr<Kalvo_QueueObject> taken(queue.RemoveItemAtTail(0));
    EXPECT_EQ(NumberOf(taken.get()), 4);
    EXPECT_EQ(alive, 4);
    queue.RemoveAll();
    EXPECT_EQ(alive, 1);
    queue.AddItemAtTail(new Item(7, &alive));
  }
  EXPECT_EQ(alive, 0);
}

TEST(Queue, ACopyIsInNoQueue) {
  Kalvo_Queue queue(0, 0);
  Item a(1);
  Item b(2);
  queue.AddItemAtTail(&a);
  queue.AddItemAtTail(&b);
  {
    Item copy(a);
    EXPECT_EQ(copy.GetOwner(), nullptr);
    b = copy;
  }
  EXPECT_EQ(Forwards(&queue), (std::vector<int>{1, 1}));
}

TEST(Queue, TypeNames) {
  Item item;
  Kalvo_String out("old");
  EXPECT_EQ(item.GetType(), 0);
  EXPECT_STREQ(item.GetTypename(nullptr), "unknown");
  EXPECT_STREQ(item.GetTypename(&out), "unknown");
  EXPECT_EQ(out == "unknown", 1);
}

TEST(Queue, Signals) {
  Kalvo_Queue queue(0, 1);
  EXPECT_EQ(queue.WaitData(0), 258);
  EXPECT_EQ(queue.WaitData(20), 258);
  Item item;
  queue.AddItemAtTail(&item);
  EXPECT_EQ(queue.WaitData(-1), 0);
  item.ToTail();
  item.Remove();
  EXPECT_EQ(queue.WaitData(0), 258);
  queue.Signal();
  EXPECT_EQ(queue.WaitData(0), 0);
  EXPECT_EQ(queue.WaitData(0), 0);
  support::Stopwatch watch;
  EXPECT_EQ(queue.RemoveItemAtHead(60000), nullptr);  // signalled, and empty
  EXPECT_LT(watch.Milliseconds(), 30000);
  queue.AddItemAtTail(&item);
  item.Remove();
  EXPECT_EQ(queue.WaitData(0), 258);
  queue.Signal();
  queue.RemoveAll();
  EXPECT_EQ(queue.WaitData(0), 258);
  queue.Signal();
  queue.Init(1, 1);
  EXPECT_EQ(queue.WaitData(0), 258);
  // A removal waits for its time; one of 0 or less does not.
  support::Stopwatch removal;
  EXPECT_EQ(queue.RemoveItemAtHead(60), nullptr);
  EXPECT_GE(removal.Milliseconds(), 60);
  EXPECT_EQ(queue.RemoveItemAtHead(-1), nullptr);
  EXPECT_EQ(queue.PeekHead(0xFFFFFFFF), nullptr);

  Kalvo_Queue silent(1, 0);
  EXPECT_EQ(silent.WaitData(-1), 0);
  EXPECT_EQ(silent.RemoveItemAtHead(60000), nullptr);
}

int ByNumber(Kalvo_QueueObject* a, Kalvo_QueueObject* b, void*) {
  return NumberOf(a) - NumberOf(b);
}

TEST(Queue, Sorts) {
  std::mt19937 random(4);
  for (int count = 0; count < 70; ++count) {
    Kalvo_Queue queue(1, 1);
    std::vector<int> expected;
    for (int i = 0; i < count; ++i) {
      expected.push_back(static_cast<int>(random() % 50));
      queue.AddItemAtTail(new Item(expected.back()));
    }
    std::sort(expected.begin(), expected.end());
    queue.QSort(ByNumber, nullptr);
    EXPECT_EQ(Forwards(&queue), expected);
    EXPECT_EQ(Backwards(&queue), expected);
    EXPECT_EQ(queue.WaitData(0), count > 0 ? 0 : 258);
  }
}

TEST(Queue, SortsTiesAsTold) {
  const auto sorted = [](std::vector<int> numbers, auto compare) {
    Kalvo_Queue queue(0, 0);
    for (const int n : numbers) queue.AddItemAtTail(new Item(n));
    queue.QSort(compare, nullptr);
    return Forwards(&queue);
  };
  const auto equal = [](Kalvo_QueueObject*, Kalvo_QueueObject*, void*) { return 0; };
  EXPECT_EQ(sorted({1, 2}, equal), (std::vector<int>{1, 2}));
  EXPECT_EQ(sorted({1, 2, 3}, equal), (std::vector<int>{3, 2, 1}));  // to the right run
  const auto one = [](Kalvo_QueueObject*, Kalvo_QueueObject*, void*) { return 1; };
  EXPECT_EQ(sorted({1, 2}, one), (std::vector<int>{2, 1}));
  EXPECT_EQ(sorted({3, 1, 2}, one), (std::vector<int>{3, 1, 2}));  // contradicts itself
  const auto uneven = [](Kalvo_QueueObject* a, Kalvo_QueueObject* b, void*) {
    return NumberOf(a) < NumberOf(b) ? -1 : 2;
  };
  EXPECT_EQ(sorted({3, 1, 2}, uneven), (std::vector<int>{3, 1, 2}));
  const auto smallest = [](Kalvo_QueueObject*, Kalvo_QueueObject*, void*) { return INT_MIN; };
  sorted({3, 1, 2}, smallest);
}

TEST(Queue, AComparisonThatThrowsLosesNothing) {
  Kalvo_Queue queue(1, 1);
  for (const int n : {3, 4, 1, 2}) queue.AddItemAtTail(new Item(n));
  const auto throwing = [](Kalvo_QueueObject* a, Kalvo_QueueObject* b, void* callsLeft) {
    if (--*static_cast<int*>(callsLeft) == 0) throw std::runtime_error("tired");
    return ByNumber(a, b, nullptr);
  };
  for (int calls = 1; calls <= 6; ++calls) {
    int callsLeft = calls;
    EXPECT_THROW(queue.QSort(throwing, &callsLeft), std::runtime_error);
    EXPECT_EQ(Forwards(&queue), (std::vector<int>{3, 4, 1, 2}));
  }
  // One that edits the queue leaves it as edited.
  const auto editing = [](Kalvo_QueueObject* a, Kalvo_QueueObject* b, void*) {
    a->ToTail();
    return ByNumber(a, b, nullptr);
  };
  queue.QSort(editing, nullptr);
  EXPECT_EQ(Forwards(&queue), (std::vector<int>{4, 1, 2, 3}));
  queue.QSort(ByNumber, nullptr);
  EXPECT_EQ(Forwards(&queue), (std::vector<int>{1, 2, 3, 4}));
}

// Random operations against the same ones on a std::list.
TEST(Queue, AgreesWithASimpleModel) {
  std::mt19937 random(5);
  Kalvo_Queue queue(1, 1);
  std::list<int> model;
  const auto at = [&model](long index) {
    const long size = static_cast<long>(model.size());
    return std::next(model.begin(), index < 0 || index >= size ? size : index);
  };
  for (int step = 0; step < 30000; ++step) {
    const long index = static_cast<long>(random() % (model.size() + 4)) - 2;
    if (random() % 100 < (model.size() < 1500 ? 60u : 30u)) {
      model.insert(at(index), step);
      queue.InsertItemAt(new Item(step), index);
    } else if (!model.empty()) {
      auto place = at(index);
      if (place == model.end()) --place;
      const std::unique_ptr<Kalvo_QueueObject> item(queue.RemoveItemAt(index, 0));
      ASSERT_EQ(NumberOf(item.get()), *place);
      model.erase(place);
    }
    ASSERT_EQ(queue.GetItemCount(), model.size());
    ASSERT_EQ(queue.WaitData(0), model.empty() ? 258 : 0);
  }
  EXPECT_EQ(Forwards(&queue), std::vector<int>(model.begin(), model.end()));
}

}  // namespace
