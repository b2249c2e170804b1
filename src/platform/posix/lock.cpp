#include "platform/lock.h"

#include <pthread.h>

#include <new>

namespace platform {

struct Lock {
  pthread_mutex_t mutex;
};

Lock* lock_create() {
  Lock* lock = new (std::nothrow) Lock;
  if (lock == nullptr) return nullptr;
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&lock->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
  return lock;
}

void lock_destroy(Lock* lock) {
  if (lock == nullptr) return;
  pthread_mutex_destroy(&lock->mutex);
  delete lock;
}

void lock_enter(Lock* lock) {
  if (lock != nullptr) pthread_mutex_lock(&lock->mutex);
}

void lock_leave(Lock* lock) {
  if (lock != nullptr) pthread_mutex_unlock(&lock->mutex);
}

}  // namespace platform
