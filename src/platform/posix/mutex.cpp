#include "platform/mutex.h"

#include <errno.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <utility>

#include "platform/posix/deadline.h"
#include "platform/posix/named_object.h"
#include "platform/thread_number.h"

#if KALVOBASE_HAS_CLOCKLOCK
// The thread sanitizer knows every lock call but the one with a clock of its own choice.
// These are its announcements; they are there only in a process that runs under it.
extern "C" {
__attribute__((weak)) void __tsan_mutex_pre_lock(void* address, unsigned flags);
__attribute__((weak)) void __tsan_mutex_post_lock(void* address, unsigned flags, int recursion);
}
#endif

namespace platform {
namespace {

struct SharedMutex {
  pthread_mutex_t mutex;
  std::atomic<std::uint64_t> owner;  // the thread that holds it, or 0
  std::uint32_t levels;              // how often it holds it; the owner's own
  bool abandoned;                    // seen by a probe, which the next to take it is told
  // The process that took the mutex last. Only looked at while somebody holds it.
  std::atomic<pid_t> lastProcess;
};

// How a mutex knows the calling thread. Between processes only the kernel's number will do.
std::uint64_t CallerOf(bool named) {
  return named ? static_cast<std::uint64_t>(syscall(SYS_gettid)) : thread_number();
}

// The kernel keeps a list of the robust mutexes that a thread holds, linked through the
// mutexes themselves. So the memory of one must stay while a thread of this process holds
// it, also when the host has given it back: such a mutex is parked until it is free.
std::mutex parked_lock;
Mutex* parked_head = nullptr;

}  // namespace

struct Mutex {
  NamedObject* named;  // null for a mutex of this process
  SharedMutex local;
  Mutex* nextParked;

  std::uint64_t caller() const { return CallerOf(named != nullptr); }
  SharedMutex* shared() {
    return named != nullptr ? static_cast<SharedMutex*>(named_memory(named)) : &local;
  }
};

namespace {

bool Initialise(SharedMutex* shared, bool named, bool owned) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  if (named) pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
  const bool made = pthread_mutex_init(&shared->mutex, &attributes) == 0;
  pthread_mutexattr_destroy(&attributes);
  if (!made) return false;
  shared->lastProcess = getpid();
  shared->owner = 0;
  shared->levels = 0;
  shared->abandoned = false;
  if (owned) {
    // Nobody else can have it yet.
    if (pthread_mutex_trylock(&shared->mutex) != 0) return false;
    shared->owner = CallerOf(named);
    shared->levels = 1;
  }
  return true;
}

bool InitialiseNamed(void* memory, const void* owned) {
  return Initialise(new (memory) SharedMutex, true, *static_cast<const bool*>(owned));
}

#if KALVOBASE_HAS_CLOCKLOCK
int LockBefore(pthread_mutex_t* mutex, const timespec& deadline) {
  const int result = pthread_mutex_clocklock(mutex, CLOCK_MONOTONIC, &deadline);
  if ((result == 0 || result == EOWNERDEAD) && __tsan_mutex_pre_lock != nullptr) {
    constexpr unsigned kTryLockOfRecursive = (1u << 1) | (1u << 4);
    __tsan_mutex_pre_lock(mutex, kTryLockOfRecursive);
    __tsan_mutex_post_lock(mutex, kTryLockOfRecursive, 1);
  }
  return result;
}
#else
// pthread_mutex_timedlock goes by the wall clock: setting that back would lengthen the wait.
int LockBefore(pthread_mutex_t* mutex, const timespec& deadline) {
  constexpr long kLongestPauseNs = 8000000;
  for (long pauseNs = 1000000;; pauseNs = std::min(2 * pauseNs, kLongestPauseNs)) {
    const int result = pthread_mutex_trylock(mutex);
    if (result != EBUSY || has_passed(deadline)) return result;
    timespec pause = time_until(deadline);
    if (pause.tv_sec > 0 || pause.tv_nsec > pauseNs) pause = {0, pauseNs};
    nanosleep(&pause, nullptr);
  }
}
#endif

// Releases what the calling thread holds. False if another thread of this process holds the mutex.
bool IsUnused(void* context) {
  Mutex* const mutex = static_cast<Mutex*>(context);
  while (mutex_release(mutex)) {
  }
  const bool ours = mutex->named == nullptr || mutex->shared()->lastProcess == getpid();
  return !(ours && mutex_is_held_elsewhere(mutex));
}

// Frees `mutex`, unless it is the last of its kind in this process and another thread of the
// process holds it.
bool TryDestroy(Mutex* mutex) {
  if (mutex->named != nullptr) {
    if (!named_close(mutex->named, IsUnused, mutex)) return false;
  } else {
    if (!IsUnused(mutex)) return false;
    pthread_mutex_destroy(&mutex->local.mutex);
  }
  delete mutex;
  return true;
}

void DestroyParked() {
  std::lock_guard<std::mutex> guard(parked_lock);
  for (Mutex** link = &parked_head; *link != nullptr;) {
    Mutex* mutex = *link;
    Mutex* next = mutex->nextParked;
    if (TryDestroy(mutex)) {
      *link = next;
    } else {
      link = &mutex->nextParked;
    }
  }
}

}  // namespace

Mutex* mutex_open(const char* name, bool owned) {
  DestroyParked();
  Mutex* mutex = new (std::nothrow) Mutex{};
  if (mutex == nullptr) return nullptr;
  bool made;
  if (name != nullptr && *name != '\0') {
    mutex->named =
        named_open(name, NamedKind::kMutex, sizeof(SharedMutex), InitialiseNamed, &owned);
    made = mutex->named != nullptr;
  } else {
    made = Initialise(&mutex->local, false, owned);
  }
  if (made) return mutex;
  delete mutex;
  return nullptr;
}

void mutex_close(Mutex* mutex) {
  if (TryDestroy(mutex)) return;
  std::lock_guard<std::mutex> guard(parked_lock);
  mutex->nextParked = parked_head;
  parked_head = mutex;
}

std::uint32_t mutex_wait(Mutex* mutex, std::uint32_t ms) {
  SharedMutex* shared = mutex->shared();
  int result = pthread_mutex_trylock(&shared->mutex);
  if (result == EBUSY && ms != 0) {
    result = ms == kNoLimit ? pthread_mutex_lock(&shared->mutex)
                            : LockBefore(&shared->mutex, deadline_after(ms));
  }
  switch (result) {
    case 0:
      ++shared->levels;
      break;
    case EOWNERDEAD:
      pthread_mutex_consistent(&shared->mutex);
      shared->levels = 1;
      break;
    case EBUSY:
    case ETIMEDOUT:
      return kWaitTimedOut;
    default:
      return kWaitFailed;
  }
  shared->owner = mutex->caller();
  if (mutex->named != nullptr) shared->lastProcess = getpid();
  const bool abandoned = std::exchange(shared->abandoned, false);
  return result == 0 && !abandoned ? kWaitSignalled : kWaitAbandoned;
}

bool mutex_is_held_elsewhere(Mutex* mutex) {
  SharedMutex* shared = mutex->shared();
  const std::uint64_t owner = shared->owner;
  if (owner == 0 || owner == mutex->caller()) return false;
  // The owner may have ended without releasing, which only taking the mutex can tell.
  const int result = pthread_mutex_trylock(&shared->mutex);
  if (result != 0 && result != EOWNERDEAD) return result == EBUSY;
  if (result == EOWNERDEAD) {
    pthread_mutex_consistent(&shared->mutex);
    shared->abandoned = true;
    shared->levels = 0;
    shared->owner = 0;
  }
  pthread_mutex_unlock(&shared->mutex);
  return false;
}

bool mutex_release(Mutex* mutex) {
  SharedMutex* shared = mutex->shared();
  if (shared->owner != mutex->caller()) return false;
  if (--shared->levels == 0) shared->owner = 0;
  if (pthread_mutex_unlock(&shared->mutex) == 0) return true;
  // A fork took the owner's place but not its hold.
  ++shared->levels;
  shared->owner = mutex->caller();
  return false;
}

}  // namespace platform
