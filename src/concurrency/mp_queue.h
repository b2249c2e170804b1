// The list behind Kalvo_Queue.

#ifndef KALVOBASE_SRC_CONCURRENCY_MP_QUEUE_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_QUEUE_H_

#include <cstdint>
#include <memory>

#include "concurrency/mp_lock.h"
#include "concurrency/mp_queue_item.h"
#include "kalvobase/queue.h"
#include "platform/event.h"

// Every operation takes the queue's lock itself, if it has one; WaitData and Signal need
// none. The static ones act on an object in whatever queue it is.
class MP_Queue {
 public:
  using Compare = int (*)(Kalvo_QueueObject*, Kalvo_QueueObject*, void*);

  MP_Queue(bool locked, bool signalling);
  MP_Queue(const MP_Queue&) = delete;
  MP_Queue& operator=(const MP_Queue&) = delete;
  ~MP_Queue();

  void Init(bool locked, bool signalling);
  Kalvo_QueueObject* InsertItemAt(Kalvo_QueueObject* object, std::int32_t index,
                                  Kalvo_Queue* owner);
  Kalvo_QueueObject* PeekItemAt(std::int32_t index, std::int32_t ms);
  Kalvo_QueueObject* RemoveItemAt(std::int32_t index, std::int32_t ms);
  std::uint32_t GetItemCount();
  void RemoveAll();
  int WaitData(std::int32_t ms);
  void Signal();
  void QSort(Compare compare, void* context, Kalvo_Queue* owner);

  static void Remove(Kalvo_QueueObject* object) {
    if (object->queue_ != nullptr) TakeFromQueue(object);
  }
  static void MoveToHead(Kalvo_QueueObject* object);
  static void MoveToTail(Kalvo_QueueObject* object);
  static Kalvo_QueueObject* Next(Kalvo_QueueObject* object);
  static Kalvo_QueueObject* Previous(Kalvo_QueueObject* object);
  static Kalvo_QueueObject* AddBefore(Kalvo_QueueObject* place, Kalvo_QueueObject* object);
  static Kalvo_QueueObject* AddAfter(Kalvo_QueueObject* place, Kalvo_QueueObject* object);
  static Kalvo_Queue* GetOwner(Kalvo_QueueObject* object);

 private:
  class Guard;
  class ObjectGuard;

  static void TakeFromQueue(Kalvo_QueueObject* object);
  static void Lock(MP_Queue* queue);
  static void Unlock(MP_Queue* queue);
  static Kalvo_QueueObject* AddBeside(Kalvo_QueueObject* place, Kalvo_QueueObject* object,
                                      bool after);
  Kalvo_QueueObject* Access(std::int32_t index, std::int32_t ms, bool remove);

  // These expect the lock to be held.
  static void SwapObjects(MP_QueueItem* a, MP_QueueItem* b);
  void MoveBefore(MP_QueueItem* item, MP_QueueLink* behind);
  MP_QueueLink* Target(std::int32_t index);
  MP_QueueItem* FindItem(std::int32_t index);
  bool PutIn(MP_QueueItem* item, MP_QueueLink* behind);
  void TakeOut(MP_QueueItem* item);
  Kalvo_QueueObject* TakeOutAndFree(MP_QueueItem* item);

  MP_QueueLink head_;
  MP_QueueLink tail_;
  std::uint32_t count_ = 0;
  MP_QueueItemPool items_;

  std::uint32_t edits_ = 0;  // counts every change of the list

  // Null where the queue was made without. The event is signalled while count_ is not 0,
  // and by Signal. Waiting and signalling need no lock.
  std::unique_ptr<MP_Lock> lock_;
  platform::Event* event_ = nullptr;
};

#endif  // KALVOBASE_SRC_CONCURRENCY_MP_QUEUE_H_
