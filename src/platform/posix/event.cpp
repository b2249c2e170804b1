#include "platform/event.h"

#include <climits>
#include <new>

#include "platform/posix/deadline.h"
#include "platform/posix/futex.h"
#include "platform/posix/spin.h"

namespace platform {
struct Event {
  // Odd while signalled. Every change counts up, so a sleeper that finds the word moved
  // knows that a set came, even if a reset has followed it.
  std::atomic<std::uint32_t> word{0};
  std::atomic<std::uint32_t> sleepers{0};
};

Event* event_create() { return new (std::nothrow) Event; }

void event_destroy(Event* event) { delete event; }

bool event_set(Event* event) {
  if (event == nullptr) return false;
  if (event_signal(event)) event_wake(event);
  return true;
}

bool event_signal(Event* event) {
  if (event == nullptr) return false;
  std::uint32_t seen = event->word.load();
  while ((seen & 1) == 0 && !event->word.compare_exchange_weak(seen, seen + 1)) {
  }
  return event->sleepers.load() != 0;
}

void event_wake(const Event* event) { futex_wake(&event->word, INT_MAX, FutexScope::kProcess); }

bool event_reset(Event* event) {
  if (event == nullptr) return false;
  std::uint32_t seen = event->word.load();
  while ((seen & 1) != 0 && !event->word.compare_exchange_weak(seen, seen + 1)) {
  }
  return true;
}

std::uint32_t event_wait(Event* event, std::uint32_t ms) {
  if (event == nullptr) return kWaitFailed;
  const std::uint32_t seen = event->word.load();
  if ((seen & 1) != 0) return kWaitSignalled;
  if (ms == 0) return kWaitTimedOut;
  // A thread that is about to set the event does so sooner than the kernel could put this
  // one to sleep and wake it again.
  if (spin_until([&] { return event->word.load() != seen; })) return kWaitSignalled;

  const timespec deadline = ms == kNoLimit ? timespec() : deadline_after(ms);
  event->sleepers.fetch_add(1);
  bool inTime = true;
  while (inTime && event->word.load() == seen) {
    inTime =
        futex_wait(&event->word, seen, ms == kNoLimit ? nullptr : &deadline, FutexScope::kProcess);
  }
  event->sleepers.fetch_sub(1);
  return event->word.load() != seen ? kWaitSignalled : kWaitTimedOut;
}

}  // namespace platform
