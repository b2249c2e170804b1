// Events, mutexes and semaphores.
//
//   Kalvo_Event ready(0, 0, 0);     // automatic reset, not signalled
//   ready.Set();                    // one thread
//   int result = ready.Wait(1000);  // another: 0
//
// Time-outs are milliseconds on a clock that no change of the wall clock touches;
// 0xFFFFFFFF or -1 means no limit. Wait results are 0 signalled, 258 timed out,
// 0xFFFFFFFF failed (-1 where the result is an int).
//
// Every operation is safe from several threads at once, Init and destruction
// excepted. A copy shares the object of its source with no count of users: of the
// handles that share one object exactly one may be destroyed, and after that the
// others must not be used. Assignment leaves the object that the left side had to
// nobody.

#ifndef KALVOBASE_WAITABLE_H_
#define KALVOBASE_WAITABLE_H_

#include "kalvobase/types.h"

class MP_Event;
class MP_Mutex;
class MP_Semaphore;

// The event that does nothing: it is always signalled.
class KALVO_API Kalvo_BaseEvent {
 public:
  Kalvo_BaseEvent();
  Kalvo_BaseEvent(const Kalvo_BaseEvent& other);
  Kalvo_BaseEvent& operator=(const Kalvo_BaseEvent& other);
  virtual ~Kalvo_BaseEvent();

  virtual int Set();                   // 0
  virtual int Reset();                 // 0
  virtual int Wait(unsigned long ms);  // 0 at once
  virtual int Pulse();                 // 1
  virtual int IsManualReset();         // 1
};

// An event between the threads of one process. A Set wakes every thread that is
// in Wait at that moment, also on an event with automatic reset: automatic reset
// resets the state, it does not select one waiter.
//
// Pulse and IsManualReset are the base's on every event: Pulse does nothing, and
// both return 1.
class KALVO_API Kalvo_Event : public Kalvo_BaseEvent {
 public:
  // `manual` and `signalled` are false if 0 and true otherwise. `name` is accepted
  // and not used: no event is ever named.
  Kalvo_Event(int manual = 1, int signalled = 1, const char* name = nullptr);
  Kalvo_Event(const Kalvo_Event& other);
  Kalvo_Event& operator=(const Kalvo_Event& other);
  ~Kalvo_Event() override;

  // Signals the event. Non-zero if it was not signalled before, 0 if it was.
  int Set() override;

  // Takes the signal away. Non-zero on success.
  int Reset() override;

  // Waits for the signal. An event with automatic reset is unsignalled afterwards.
  int Wait(unsigned long ms) override;

  // The system's event behind this one, owned by it. On Windows a handle for the
  // system's own waits, which block until the first Set also on an event that was made
  // signalled. On POSIX an address that tells events apart and serves for nothing else:
  // it is no descriptor, and poll or select cannot wait for it. Null if the event could
  // not be made.
  void* GetHandle();

 private:
  MP_Event* impl_;
};

// A mutex that its owner can take again and must release as often. With a name
// it is one object for all processes of the user that give the same name; it goes
// when its last user has gone, also when that process was killed. A name of a
// living semaphore is refused.
class KALVO_API Kalvo_Mutex {
 public:
  // Makes no mutex yet: until Init, every operation gives 0.
  Kalvo_Mutex();
  Kalvo_Mutex(const Kalvo_Mutex& other);
  Kalvo_Mutex& operator=(const Kalvo_Mutex& other);

  // Gives the mutex back. If no other handle of this process has it, levels that the
  // calling thread holds are released first.
  virtual ~Kalvo_Mutex();

  // Makes or opens the mutex. `owned` not 0: a mutex that this call makes is held
  // by the caller at once; one that exists already is not. `name` may be null or
  // empty for a mutex of this process, and may hold any other bytes; it is not
  // kept. Returns 1 on success, 0 on failure, which is what IsValid gives then.
  // A second Init opens the new mutex, then gives the old one back.
  int Init(int owned, char* name);

  int IsValid();

  // Takes the mutex, waiting at most `ms` milliseconds. 1 if it was taken in the
  // ordinary way, else 0: timed out, failed, or abandoned. After an abandonment
  // (the owner's thread or process ended without releasing) the caller holds the
  // mutex although the result is 0.
  int Lock(int ms);

  // Releases one level. 1 on success, 0 if the caller does not hold the mutex.
  int Unlock();

  // 1 if another living thread holds the mutex, else 0. A free mutex stays free, and an
  // abandoned one is still told as such by the next Lock.
  int IsLocked();

 private:
  MP_Mutex* impl_;
};

// A counting semaphore with a maximum. Names are those of Kalvo_Mutex.
class KALVO_API Kalvo_Semaphore {
 public:
  // Makes no semaphore yet: until Init, Post gives 0 and Wait 0xFFFFFFFF.
  Kalvo_Semaphore();
  Kalvo_Semaphore(const Kalvo_Semaphore& other);
  Kalvo_Semaphore& operator=(const Kalvo_Semaphore& other);

  // Posts once, so that one thread that is still in Wait gets out, then gives the
  // semaphore back.
  virtual ~Kalvo_Semaphore();

  // Makes or opens the semaphore. Needs 0 <= initial <= maximum and maximum >= 1;
  // one that exists already under the name keeps its counts. Returns 1 on success,
  // 0 on failure, which is what IsValid gives then.
  int Init(int initial, int maximum, char* name);

  int IsValid();

  // Adds `count`. 1 on success; 0, with nothing added, if `count` is below 1, if
  // the maximum would be passed or if the semaphore is not valid.
  int Post(int count);

  // Takes one, waiting at most `ms` milliseconds. Gives the wait result.
  unsigned long Wait(int ms);

 private:
  MP_Semaphore* impl_;
};

#endif  // KALVOBASE_WAITABLE_H_
