// The recursive lock between the threads of one process.
//
// Uncontended, entering and leaving make no system call.

#ifndef KALVOBASE_SRC_PLATFORM_LOCK_H_
#define KALVOBASE_SRC_PLATFORM_LOCK_H_

namespace platform {

struct Lock;

// Null if memory ran out. The other calls take a null lock and do nothing with it.
Lock* lock_create();
void lock_destroy(Lock* lock);

void lock_enter(Lock* lock);

// For a child of fork, which has one thread: frees a lock that another thread held.
void lock_take_over(Lock* lock);

// No effect if the calling thread does not hold the lock.
void lock_leave(Lock* lock);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_LOCK_H_
