// The record that ties one object to one queue, and the pool in which a queue keeps them.

#ifndef KALVOBASE_SRC_CONCURRENCY_MP_QUEUE_ITEM_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_QUEUE_ITEM_H_

#include <cstdint>

class Kalvo_Queue;
class Kalvo_QueueObject;

// A place in the list. The two ends are links without a record.
struct MP_QueueLink {
  MP_QueueLink* next = nullptr;      // null in the tail
  MP_QueueLink* previous = nullptr;  // null in the head
};

// Belongs to its object from the moment that this is put in a queue until it leaves it.
class MP_QueueItem : public MP_QueueLink {
 public:
  Kalvo_QueueObject* object = nullptr;
  Kalvo_Queue* owner = nullptr;  // the handle through which the object came
};

// Records in blocks of growing size, so that most insertions allocate nothing. A large pool
// gives its memory back when the last record is freed.
class MP_QueueItemPool {
 public:
  MP_QueueItemPool() = default;
  MP_QueueItemPool(const MP_QueueItemPool&) = delete;
  MP_QueueItemPool& operator=(const MP_QueueItemPool&) = delete;
  ~MP_QueueItemPool() { FreeBlocks(); }

  // Null if memory ran out.
  MP_QueueItem* New(Kalvo_QueueObject* object, Kalvo_Queue* owner) {
    if (spares_ == nullptr && !AddBlock()) return nullptr;
    MP_QueueItem* item = static_cast<MP_QueueItem*>(spares_);
    spares_ = item->next;
    ++used_;
    item->object = object;
    item->owner = owner;
    return item;
  }

  void Free(MP_QueueItem* item) {
    item->next = spares_;
    spares_ = item;
    if (--used_ == 0 && total_ > kKept) FreeBlocks();
  }

 private:
  static constexpr std::uint32_t kKept = 1024;

  struct Block;

  bool AddBlock();
  void FreeBlocks();

  MP_QueueLink* spares_ = nullptr;  // chained by `next`
  Block* blocks_ = nullptr;
  std::uint32_t total_ = 0;
  std::uint32_t used_ = 0;
};

#endif  // KALVOBASE_SRC_CONCURRENCY_MP_QUEUE_ITEM_H_
