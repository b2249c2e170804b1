#include "platform/lock.h"

#include <new>

#include "platform/posix/futex.h"
#include "platform/posix/spin.h"
#include "platform/thread_number.h"

namespace platform {
namespace {

constexpr std::uint32_t kFree = 0;
constexpr std::uint32_t kHeld = 1;
constexpr std::uint32_t kContended = 2;  // held, and somebody may sleep

}  // namespace

struct Lock {
  std::atomic<std::uint32_t> state{kFree};
  std::atomic<std::uint64_t> owner{0};  // by thread_number
  std::uint32_t depth = 0;              // how often the owner took it again
};

namespace {

bool TryTake(Lock* lock) {
  std::uint32_t expected = kFree;
  return lock->state.compare_exchange_strong(expected, kHeld, std::memory_order_acquire,
                                             std::memory_order_relaxed);
}

// Spins for a moment, since locks are held for a moment, and sleeps then.
void TakeContended(Lock* lock) {
  const bool taken = spin_until(
      [lock] { return lock->state.load(std::memory_order_relaxed) == kFree && TryTake(lock); });
  if (taken) return;
  while (lock->state.exchange(kContended, std::memory_order_acquire) != kFree) {
    futex_wait(&lock->state, kContended, nullptr, FutexScope::kProcess);
  }
}

}  // namespace

Lock* lock_create() { return new (std::nothrow) Lock; }

void lock_destroy(Lock* lock) { delete lock; }

void lock_enter(Lock* lock) {
  if (lock == nullptr) return;
  const std::uint64_t self = thread_number();
  if (lock->owner.load(std::memory_order_relaxed) == self) {
    ++lock->depth;
    return;
  }
  if (!TryTake(lock)) TakeContended(lock);
  lock->owner.store(self, std::memory_order_relaxed);
}

void lock_take_over(Lock* lock) {
  if (lock == nullptr || lock->owner == thread_number()) return;
  lock->depth = 0;
  lock->owner = 0;
  lock->state = kFree;
}

void lock_leave(Lock* lock) {
  if (lock == nullptr) return;
  if (lock->owner.load(std::memory_order_relaxed) != thread_number()) return;
  if (lock->depth > 0) {
    --lock->depth;
    return;
  }
  lock->owner.store(0, std::memory_order_relaxed);
  // Only the address is used once the lock is free: its next holder may destroy it.
  if (lock->state.exchange(kFree, std::memory_order_release) == kContended) {
    futex_wake(&lock->state, 1, FutexScope::kProcess);
  }
}

}  // namespace platform
