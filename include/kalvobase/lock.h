// Locks, the scope guard and the guarded counter.
//
//   Kalvo_Lock lock;
//   Kalvo_Counter served;
//   {
//     Kalvo_AutoLock guard(&lock);  // released at the end of the block
//     served.Inc();
//   }
//
// Kalvo_BaseLock guards nothing; it stands wherever a lock is asked for and none
// is wanted. An uncontended Kalvo_Lock makes no system call.

#ifndef KALVOBASE_LOCK_H_
#define KALVOBASE_LOCK_H_

#include "kalvobase/types.h"

class MP_Lock;

// The lock that does nothing, and the interface of all locks.
class KALVO_API Kalvo_BaseLock {
 public:
  Kalvo_BaseLock();
  Kalvo_BaseLock(const Kalvo_BaseLock& other);
  Kalvo_BaseLock& operator=(const Kalvo_BaseLock& other);
  virtual ~Kalvo_BaseLock();

  virtual void Lock();
  virtual void Unlock();
};

// A recursive lock between the threads of one process: the thread that holds it
// can take it again and must release it as often. Unlocking a lock that the
// caller does not hold has no effect.
//
// A copy shares the lock of its source with no count of users: of the handles
// that share one lock exactly one may be destroyed, and after that the others
// must not be used. Assignment leaves the lock that the left side had to nobody.
class KALVO_API Kalvo_Lock : public Kalvo_BaseLock {
 public:
  Kalvo_Lock();
  Kalvo_Lock(const Kalvo_Lock& other);
  Kalvo_Lock& operator=(const Kalvo_Lock& other);
  ~Kalvo_Lock() override;

  void Lock() override;
  void Unlock() override;

 private:
  MP_Lock* impl_;
};

// Holds a lock from its construction to its destruction. It does not own the
// lock object, which must outlive it.
class KALVO_API Kalvo_AutoLock {
 public:
  // Takes *lock. A null lock guards nothing.
  Kalvo_AutoLock(Kalvo_BaseLock* lock);
  Kalvo_AutoLock(const Kalvo_AutoLock& other);
  ~Kalvo_AutoLock();

  // Does nothing: the guard holds its lock already.
  void Lock();

  // Copies the pointer and neither takes nor releases anything, so both guards
  // then release the same lock.
  Kalvo_AutoLock& operator=(const Kalvo_AutoLock& other);

 private:
  Kalvo_BaseLock* lock_;
};

// A 32-bit signed number under a lock of its own. It wraps on overflow.
//
// A copy takes the value and shares the lock of its source, under the rule of
// Kalvo_Lock: of counters that share a lock exactly one may be destroyed.
class KALVO_API Kalvo_Counter {
 public:
  // Value 0.
  Kalvo_Counter();
  Kalvo_Counter(const Kalvo_Counter& other);
  ~Kalvo_Counter();

  // Copies value and lock of `other` without taking any lock.
  Kalvo_Counter& operator=(const Kalvo_Counter& other);

  // Sets the value and returns it.
  int operator=(int value);

  long Get();

  // Each of these returns the new value.
  long Set(long value);
  long Inc();
  long Dec();
  long Add(int n);

 private:
  Kalvo_Long value_;
  Kalvo_Lock lock_;
};

#endif  // KALVOBASE_LOCK_H_
