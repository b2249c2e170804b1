// The record that ties one object to one queue, and the pool in which a queue keeps them.

#ifndef KALVOBASE_SRC_CONCURRENCY_MP_QUEUE_ITEM_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_QUEUE_ITEM_H_

#include <new>

#include "frame/block_pool.h"

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

class MP_QueueItemPool {
 public:
  // Null if memory ran out.
  MP_QueueItem* New(Kalvo_QueueObject* object, Kalvo_Queue* owner) {
    void* memory = memory_.Take();
    if (memory == nullptr) return nullptr;
    MP_QueueItem* item = new (memory) MP_QueueItem;
    item->object = object;
    item->owner = owner;
    return item;
  }

  void Free(MP_QueueItem* item) { memory_.Give(item); }

 private:
  BlockPool<MP_QueueItem, 4, 256, 1024> memory_;
};

#endif  // KALVOBASE_SRC_CONCURRENCY_MP_QUEUE_ITEM_H_
