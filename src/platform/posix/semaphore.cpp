#include "platform/semaphore.h"

#include <climits>
#include <new>

#include "platform/posix/deadline.h"
#include "platform/posix/futex.h"
#include "platform/posix/named_object.h"

namespace platform {
namespace {

struct SharedCount {
  std::atomic<std::uint32_t> count;
  // May stay too high after a sleeper was killed, which costs a needless wake a post.
  std::atomic<std::uint32_t> sleepers;
  std::int32_t maximum;
};

struct Counts {
  std::int32_t initial;
  std::int32_t maximum;
};

bool Initialise(void* memory, const void* context) {
  const Counts& counts = *static_cast<const Counts*>(context);
  SharedCount* shared = new (memory) SharedCount;
  shared->count = static_cast<std::uint32_t>(counts.initial);
  shared->sleepers = 0;
  shared->maximum = counts.maximum;
  return true;
}

bool IsBefore(const timespec& a, const timespec& b) {
  return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

bool TakeOne(SharedCount* shared) {
  std::uint32_t seen = shared->count.load();
  while (seen > 0) {
    if (shared->count.compare_exchange_weak(seen, seen - 1)) return true;
  }
  return false;
}

bool AddCount(SharedCount* shared, std::int32_t count) {
  std::uint32_t seen = shared->count.load();
  do {
    if (static_cast<std::int64_t>(seen) + count > shared->maximum) return false;
  } while (!shared->count.compare_exchange_weak(seen, seen + static_cast<std::uint32_t>(count)));
  return true;
}

}  // namespace

struct Semaphore {
  NamedObject* named;  // null for a semaphore of this process
  alignas(SharedCount) unsigned char local[sizeof(SharedCount)];
  // The handle, and every thread in a wait or a post: whoever a post lets out may close
  // the semaphore at once.
  std::atomic<std::int32_t> users;

  SharedCount* shared() {
    void* memory = named != nullptr ? named_memory(named) : local;
    return static_cast<SharedCount*>(memory);
  }
  FutexScope scope() const { return named != nullptr ? FutexScope::kShared : FutexScope::kProcess; }
};

namespace {

void AddUser(Semaphore* semaphore) { semaphore->users.fetch_add(1); }

// Sleeps until a post, or until the deadline, which gives false. A post of a process that was
// killed before it could wake anybody is found within a moment.
bool Sleep(Semaphore* semaphore, const timespec* deadline) {
  constexpr std::uint32_t kMomentMs = 100;
  const FutexScope scope = semaphore->scope();
  const timespec moment = deadline_after(kMomentMs);
  const bool shorter =
      scope == FutexScope::kShared && (deadline == nullptr || IsBefore(moment, *deadline));
  const bool inTime =
      futex_wait(&semaphore->shared()->count, 0, shorter ? &moment : deadline, scope);
  return inTime || shorter;
}

void DropUser(Semaphore* semaphore) {
  if (semaphore->users.fetch_sub(1) != 1) return;
  if (semaphore->named != nullptr) {
    named_close(
        semaphore->named, [](void*) { return true; }, nullptr);
  }
  delete semaphore;
}

}  // namespace

Semaphore* semaphore_open(const char* name, std::int32_t initial, std::int32_t maximum) {
  if (initial < 0 || maximum < 1 || initial > maximum) return nullptr;
  Semaphore* semaphore = new (std::nothrow) Semaphore{};
  if (semaphore == nullptr) return nullptr;
  semaphore->users = 1;
  const Counts counts{initial, maximum};
  if (name == nullptr || *name == '\0') {
    Initialise(semaphore->local, &counts);
    return semaphore;
  }
  semaphore->named =
      named_open(name, NamedKind::kSemaphore, sizeof(SharedCount), Initialise, &counts);
  if (semaphore->named != nullptr) return semaphore;
  delete semaphore;
  return nullptr;
}

void semaphore_close(Semaphore* semaphore) { DropUser(semaphore); }

bool semaphore_post(Semaphore* semaphore, std::int32_t count) {
  if (count < 1) return false;
  AddUser(semaphore);
  SharedCount* shared = semaphore->shared();
  const bool added = AddCount(shared, count);
  if (added && shared->sleepers.load() != 0) {
    // The one that is woken may be killed before it takes, if it is another process's.
    const bool all = semaphore->scope() == FutexScope::kShared;
    futex_wake(&shared->count, all ? INT_MAX : count, semaphore->scope());
  }
  DropUser(semaphore);
  return added;
}

std::uint32_t semaphore_wait(Semaphore* semaphore, std::uint32_t ms) {
  SharedCount* shared = semaphore->shared();
  if (TakeOne(shared)) return kWaitSignalled;
  if (ms == 0) return kWaitTimedOut;

  const timespec deadline = ms == kNoLimit ? timespec() : deadline_after(ms);
  AddUser(semaphore);
  shared->sleepers.fetch_add(1);
  bool inTime = true;
  bool taken = false;
  for (;;) {
    taken = TakeOne(shared);
    if (taken || !inTime) break;
    inTime = Sleep(semaphore, ms == kNoLimit ? nullptr : &deadline);
  }
  shared->sleepers.fetch_sub(1);
  DropUser(semaphore);
  return taken ? kWaitSignalled : kWaitTimedOut;
}

}  // namespace platform
