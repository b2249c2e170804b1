#include "concurrency/mp_queue.h"

#include <new>
#include <utility>

namespace {

void Unlink(MP_QueueLink* link) {
  link->previous->next = link->next;
  link->next->previous = link->previous;
}

void LinkBefore(MP_QueueLink* link, MP_QueueLink* behind) {
  link->next = behind;
  link->previous = behind->previous;
  behind->previous->next = link;
  behind->previous = link;
}

MP_QueueItem* ItemOf(MP_QueueLink* link) { return static_cast<MP_QueueItem*>(link); }

// Sorts `from` by merging runs of doubling width to and fro between the two arrays, and
// gives the one that holds the result. A tie goes to the right run.
Kalvo_QueueObject** MergeSort(Kalvo_QueueObject** from, Kalvo_QueueObject** to, std::size_t count,
                              MP_Queue::Compare compare, void* context) {
  for (std::size_t width = 1; width < count; width *= 2) {
    for (std::size_t start = 0; start < count; start += 2 * width) {
      const std::size_t middle = start + width < count ? start + width : count;
      const std::size_t end = middle + width < count ? middle + width : count;
      std::size_t left = start;
      std::size_t right = middle;
      for (std::size_t i = start; i < end; ++i) {
        const bool takeLeft =
            right == end || (left < middle && compare(from[left], from[right], context) < 0);
        to[i] = takeLeft ? from[left++] : from[right++];
      }
    }
    std::swap(from, to);
  }
  return from;
}

}  // namespace

void MP_Queue::Lock(MP_Queue* queue) {
  if (queue->lock_ != nullptr) queue->lock_->MP_Lock::Lock();
}

void MP_Queue::Unlock(MP_Queue* queue) {
  if (queue->lock_ != nullptr) queue->lock_->MP_Lock::Unlock();
}

class MP_Queue::Guard {
 public:
  explicit Guard(MP_Queue* queue) : queue_(queue) { Lock(queue_); }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;
  ~Guard() { Unlock(queue_); }

 private:
  MP_Queue* queue_;
};

// Holds the lock of the queue that an object is in, or none. Waiting for the lock, the
// object may leave the queue or get into another one.
class MP_Queue::ObjectGuard {
 public:
  explicit ObjectGuard(Kalvo_QueueObject* object) : queue_(object->queue_) {
    while (queue_ != nullptr) {
      Lock(queue_);
      MP_Queue* now = object->queue_;
      if (now == queue_) return;
      Unlock(queue_);
      queue_ = now;
    }
  }
  ObjectGuard(const ObjectGuard&) = delete;
  ObjectGuard& operator=(const ObjectGuard&) = delete;
  ~ObjectGuard() {
    if (queue_ != nullptr) Unlock(queue_);
  }

  MP_Queue* queue() const { return queue_; }

 private:
  MP_Queue* queue_;
};

MP_Queue::MP_Queue(bool locked, bool signalling) {
  head_.next = &tail_;
  tail_.previous = &head_;
  Init(locked, signalling);
}

MP_Queue::~MP_Queue() {
  RemoveAll();
  platform::event_destroy(event_);
}

void MP_Queue::Init(bool locked, bool signalling) {
  if (count_ != 0) return;
  lock_.reset(locked ? new (std::nothrow) MP_Lock : nullptr);
  platform::event_destroy(event_);
  event_ = signalling ? platform::event_create() : nullptr;
}

// The link in front of which position `index` is; the tail for every index outside.
MP_QueueLink* MP_Queue::Target(std::int32_t index) {
  const std::uint32_t position = static_cast<std::uint32_t>(index);
  if (index < 0 || position >= count_) return &tail_;
  MP_QueueLink* link;
  if (position > count_ / 2) {
    link = &tail_;
    for (std::uint32_t steps = count_ - position; steps > 0; --steps) link = link->previous;
  } else {
    link = head_.next;
    for (std::uint32_t steps = position; steps > 0; --steps) link = link->next;
  }
  return link;
}

// The item at `index`, the last one for every index outside; null if there is none.
MP_QueueItem* MP_Queue::FindItem(std::int32_t index) {
  if (count_ == 0) return nullptr;
  MP_QueueLink* target = Target(index);
  return ItemOf(target == &tail_ ? tail_.previous : target);
}

// True if event_wake must follow.
bool MP_Queue::PutIn(MP_QueueItem* item, MP_QueueLink* behind) {
  item->object->item_ = item;
  item->object->queue_.store(this, std::memory_order_release);
  LinkBefore(item, behind);
  ++edits_;
  // With items in it the queue is signalled already.
  return ++count_ == 1 && event_ != nullptr && platform::event_signal(event_);
}

void MP_Queue::TakeOut(MP_QueueItem* item) {
  Unlink(item);
  ++edits_;
  if (--count_ == 0 && event_ != nullptr) platform::event_reset(event_);
  // The analyser does not follow the links and takes every first item for the same one.
  item->object->item_ = nullptr;  // NOLINT(clang-analyzer-cplusplus.NewDelete)
  item->object->queue_.store(nullptr, std::memory_order_release);
}

Kalvo_QueueObject* MP_Queue::TakeOutAndFree(MP_QueueItem* item) {
  Kalvo_QueueObject* object = item->object;
  TakeOut(item);
  items_.Free(item);
  return object;
}

Kalvo_QueueObject* MP_Queue::InsertItemAt(Kalvo_QueueObject* object, std::int32_t index,
                                          Kalvo_Queue* owner) {
  if (object == nullptr) return nullptr;
  if (object->queue_ != nullptr)
    Remove(object);  // before this queue is locked: two locks are never held at once
  const platform::Event* event = event_;
  bool wake;
  {
    Guard guard(this);
    MP_QueueItem* item = items_.New(object, owner);
    if (item == nullptr) return nullptr;
    wake = PutIn(item, Target(index));
  }
  // Whoever is woken finds the lock free. The queue may be gone by now.
  if (wake) platform::event_wake(event);
  return object;
}

Kalvo_QueueObject* MP_Queue::PeekItemAt(std::int32_t index, std::int32_t ms) {
  return Access(index, ms, false);
}

Kalvo_QueueObject* MP_Queue::RemoveItemAt(std::int32_t index, std::int32_t ms) {
  return Access(index, ms, true);
}

// A queue with items is signalled, so it need not be waited for.
Kalvo_QueueObject* MP_Queue::Access(std::int32_t index, std::int32_t ms, bool remove) {
  for (bool mayWait = ms > 0;; mayWait = false) {
    {
      Guard guard(this);
      if (MP_QueueItem* item = FindItem(index)) {
        return remove ? TakeOutAndFree(item) : item->object;
      }
    }
    if (!mayWait || WaitData(ms) != 0) return nullptr;
  }
}

std::uint32_t MP_Queue::GetItemCount() {
  Guard guard(this);
  return count_;
}

void MP_Queue::RemoveAll() {
  Guard guard(this);
  while (count_ != 0) delete TakeOutAndFree(ItemOf(head_.next));
  platform::event_reset(event_);
}

int MP_Queue::WaitData(std::int32_t ms) {
  if (event_ == nullptr) return platform::kWaitSignalled;
  return static_cast<int>(platform::event_wait(event_, static_cast<std::uint32_t>(ms)));
}

void MP_Queue::Signal() { platform::event_set(event_); }

void MP_Queue::TakeFromQueue(Kalvo_QueueObject* object) {
  const ObjectGuard guard(object);
  if (guard.queue() != nullptr) guard.queue()->TakeOutAndFree(object->item_);
}

// Moving within the queue changes neither count nor event.
void MP_Queue::MoveBefore(MP_QueueItem* item, MP_QueueLink* behind) {
  if (item == behind) return;
  ++edits_;
  Unlink(item);
  LinkBefore(item, behind);
}

void MP_Queue::MoveToHead(Kalvo_QueueObject* object) {
  const ObjectGuard guard(object);
  if (guard.queue() != nullptr) guard.queue()->MoveBefore(object->item_, guard.queue()->head_.next);
}

void MP_Queue::MoveToTail(Kalvo_QueueObject* object) {
  const ObjectGuard guard(object);
  if (guard.queue() != nullptr) guard.queue()->MoveBefore(object->item_, &guard.queue()->tail_);
}

Kalvo_QueueObject* MP_Queue::Next(Kalvo_QueueObject* object) {
  const ObjectGuard guard(object);
  if (guard.queue() == nullptr) return nullptr;
  MP_QueueLink* link = object->item_->next;
  return link != &guard.queue()->tail_ ? ItemOf(link)->object : nullptr;
}

Kalvo_QueueObject* MP_Queue::Previous(Kalvo_QueueObject* object) {
  const ObjectGuard guard(object);
  if (guard.queue() == nullptr) return nullptr;
  MP_QueueLink* link = object->item_->previous;
  return link != &guard.queue()->head_ ? ItemOf(link)->object : nullptr;
}

Kalvo_QueueObject* MP_Queue::AddBefore(Kalvo_QueueObject* place, Kalvo_QueueObject* object) {
  return AddBeside(place, object, false);
}

Kalvo_QueueObject* MP_Queue::AddAfter(Kalvo_QueueObject* place, Kalvo_QueueObject* object) {
  return AddBeside(place, object, true);
}

Kalvo_QueueObject* MP_Queue::AddBeside(Kalvo_QueueObject* place, Kalvo_QueueObject* object,
                                       bool after) {
  if (object == nullptr || object == place || place->queue_ == nullptr) return nullptr;
  Remove(object);  // before the queue is locked: two locks are never held at once
  const ObjectGuard guard(place);
  MP_Queue* queue = guard.queue();
  if (queue == nullptr) return nullptr;  // another thread took `place` out in between
  MP_QueueItem* item = queue->items_.New(object, place->item_->owner);
  if (item == nullptr) return nullptr;
  queue->PutIn(item, after ? place->item_->next : place->item_);
  return object;
}

Kalvo_Queue* MP_Queue::GetOwner(Kalvo_QueueObject* object) {
  const ObjectGuard guard(object);
  return guard.queue() != nullptr ? object->item_->owner : nullptr;
}

// The objects stay in the queue while copies of their pointers are sorted, and change their
// records at the end: other threads find the queue whole, and a comparison that throws
// changes nothing. The lock is recursive, so a comparison may edit the queue; then there is
// nothing left to sort by.
void MP_Queue::QSort(Compare compare, void* context, Kalvo_Queue* owner) {
  Guard guard(this);
  const std::uint32_t count = count_;
  const std::uint32_t edits = edits_;
  if (count < 2) return;
  MP_QueueItem* first = ItemOf(head_.next);
  MP_QueueItem* last = ItemOf(tail_.previous);
  const int forward = compare(first->object, last->object, context);
  if (edits_ != edits) return;
  if (count == 2) {
    if (forward > 0) SwapObjects(first, last);
    return;
  }
  if (forward != 0) {
    // A comparison that contradicts itself here would sort by nothing.
    const int backward = compare(last->object, first->object, context);
    if (static_cast<unsigned int>(backward) != 0u - static_cast<unsigned int>(forward)) return;
    if (edits_ != edits) return;
  }
  const std::unique_ptr<Kalvo_QueueObject*[]> objects(
      new (std::nothrow) Kalvo_QueueObject*[2 * std::size_t{count}]);
  if (objects == nullptr) return;
  std::size_t filled = 0;
  for (MP_QueueLink* link = head_.next; link != &tail_; link = link->next) {
    objects[filled++] = ItemOf(link)->object;
  }
  Kalvo_QueueObject* const* sorted =
      MergeSort(objects.get(), objects.get() + count, count, compare, context);
  if (edits_ != edits) return;
  for (MP_QueueLink* link = head_.next; link != &tail_; link = link->next) {
    MP_QueueItem* item = ItemOf(link);
    item->object = *sorted++;
    item->object->item_ = item;
    item->owner = owner;
  }
}

void MP_Queue::SwapObjects(MP_QueueItem* a, MP_QueueItem* b) {
  std::swap(a->object, b->object);
  a->object->item_ = a;
  b->object->item_ = b;
}
