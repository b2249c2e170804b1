// Kalvo_Queue, the library's one container, and Kalvo_QueueObject, its items.
//
// A queue is a doubly linked list of objects that derive from Kalvo_QueueObject.
// An object is in one queue at a time and knows which; it can step to its
// neighbours, move and remove itself. Locking and signalling are chosen when the
// queue is made: with both it is a blocking queue between threads, with neither a
// plain list.
//
//   struct Job : Kalvo_QueueObject {
//     int number = 0;
//   };
//   Kalvo_Queue jobs(1, 1);
//   jobs.AddItemAtTail(new Job);                                // one thread
//   Job* job = static_cast<Job*>(jobs.RemoveItemAtHead(1000));  // another; null after 1 s
//   delete job;
//
// Items belong to whoever made them. The queue deletes the items that it still
// holds in RemoveAll and in its destructor.
//
// Positions count from 0. A negative position and one beyond the end mean the end
// of the list: peeks and removals then give the last item, and null only for an
// empty queue. Access by position walks from the nearer end.

#ifndef KALVOBASE_QUEUE_H_
#define KALVOBASE_QUEUE_H_

#include <atomic>

#include "kalvobase/types.h"

class Kalvo_Queue;
class Kalvo_String;
class MP_Queue;
class MP_QueueItem;

// Base class of everything that can be put in a queue. An object may be deleted
// while it is in a queue: it leaves the queue first.
//
// With a locked queue each operation is atomic. A pointer to a neighbour stays good
// only as long as nobody deletes that object, so a walk over a shared queue needs a
// lock of the caller's around it.
class KALVO_API Kalvo_QueueObject {
 public:
  // In no queue.
  Kalvo_QueueObject();

  // A copy is in no queue, and assignment leaves the left side in the queue that it
  // is in: the place in a queue belongs to the object, not to its value.
  Kalvo_QueueObject(const Kalvo_QueueObject& other);
  Kalvo_QueueObject& operator=(const Kalvo_QueueObject& other);

  virtual ~Kalvo_QueueObject();

  // 0, unless a derived class tells another number.
  virtual int GetType();

  // Assigns "unknown" to *out and returns its text; with a null `out` returns
  // "unknown". Derived classes tell their own name.
  virtual const char* GetTypename(Kalvo_String* out);

  // Leaves the queue. Nothing happens in no queue.
  void Remove();

  // Moves to the first or last place of its queue.
  void ToHead();
  void ToTail();

  // The neighbour; null at the end of the list and in no queue.
  Kalvo_QueueObject* Next();
  Kalvo_QueueObject* Pre();

  // Puts `item` directly before or after this object, taking it out of the queue
  // that it is in. Returns `item`; null, with nothing moved, if `item` is null or
  // this object, or if this object is in no queue.
  Kalvo_QueueObject* AddItemBefore(Kalvo_QueueObject* item);
  Kalvo_QueueObject* AddItemAfter(Kalvo_QueueObject* item);

  // The queue, or null.
  Kalvo_Queue* GetOwner();

 private:
  friend class MP_Queue;

  MP_QueueItem* item_;            // null in no queue
  std::atomic<MP_Queue*> queue_;  // whose lock guards item_; null in no queue
};

// A copy shares the list of its source with no count of users: of the handles that
// share one list exactly one may be destroyed, and after that the others must not be
// used. Assignment leaves the list that the left side had to nobody.
//
// Peeks and removals wait only if `ms` is above 0; there is no endless wait but
// WaitData(-1).
class KALVO_API Kalvo_Queue {
 public:
  // `locked` not 0: operations are atomic between threads. `signalling` not 0: the
  // queue can be waited for.
  Kalvo_Queue(int locked = 1, int signalling = 1);
  Kalvo_Queue(const Kalvo_Queue& other);
  Kalvo_Queue& operator=(const Kalvo_Queue& other);

  // Deletes the items that are left.
  virtual ~Kalvo_Queue();

  // Chooses locking and signalling anew. Only on an empty queue that no other thread
  // uses; a queue with items is left as it is.
  void Init(int locked, int signalling);

  // Puts `item` at a position, taking it out of the queue that it is in. Returns
  // `item`; null for a null item or if memory ran out, in which case the item is in
  // no queue.
  Kalvo_QueueObject* InsertItemAt(Kalvo_QueueObject* item, long index);
  Kalvo_QueueObject* AddItemAtHead(Kalvo_QueueObject* item);
  Kalvo_QueueObject* AddItemAtTail(Kalvo_QueueObject* item);

  // The item at a position, which stays in the queue. With `ms` above 0 the call
  // waits up to that many milliseconds for the queue to be signalled, and gives null
  // if it is not.
  Kalvo_QueueObject* PeekItemAt(long index, long ms);
  Kalvo_QueueObject* PeekHead(long ms);
  Kalvo_QueueObject* PeekTail(long ms);

  // The same, and the item leaves the queue; the caller owns it.
  Kalvo_QueueObject* RemoveItemAt(long index, long ms);
  Kalvo_QueueObject* RemoveItemAtHead(long ms);
  Kalvo_QueueObject* RemoveItemAtTail(long ms);

  unsigned long GetItemCount();

  // Deletes all items and takes the signal away.
  void RemoveAll();

  // Waits until the queue holds an item or was signalled: 0, or 258 after `ms`
  // milliseconds. 0xFFFFFFFF or -1 waits without limit. A queue made without
  // signalling returns 0 at once.
  int WaitData(long ms);

  // Wakes those who wait with no item added. The queue stays signalled until its
  // count next drops to 0 or RemoveAll runs.
  void Signal();

  // Sorts by `compare`, which gets two items and `context` and returns below 0, 0 or
  // above 0. It runs under the queue's lock. Two equal items keep their order; three
  // or more are not sorted stably. If `compare` contradicts itself on the first and
  // last item, the queue stays as it was, as it does if `compare` throws or edits the queue.
  void QSort(int (*compare)(Kalvo_QueueObject*, Kalvo_QueueObject*, void*), void* context);

 private:
  MP_Queue* impl_;
};

#endif  // KALVOBASE_QUEUE_H_
