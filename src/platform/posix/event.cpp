#include "platform/event.h"

#include <climits>
#include <new>

#include "platform/byte_order.h"
#include "platform/posix/deadline.h"
#include "platform/posix/futex.h"
#include "platform/posix/spin.h"

namespace platform {

// The low half is the word that sleepers sleep on. It is odd while the event is signalled,
// and every change counts it up, so a sleeper that finds it moved knows that a set came,
// even if a reset has followed. The high half counts the sleepers. Both are one atomic, so
// that a set learns of sleepers in the step that lets them go: whoever is woken may destroy
// the event at once.
struct Event {
  std::atomic<std::uint64_t> state{0};
};

namespace {

constexpr std::uint64_t kSleeper = std::uint64_t{1} << 32;

std::uint32_t WordOf(std::uint64_t state) { return static_cast<std::uint32_t>(state); }

std::uint64_t Counted(std::uint64_t state) {
  return (state - WordOf(state)) + static_cast<std::uint32_t>(WordOf(state) + 1);
}

const std::atomic<std::uint32_t>* WordAddress(const Event* event) {
  static_assert(sizeof(event->state) == 2 * sizeof(std::atomic<std::uint32_t>),
                "the kernel looks at one half");
  return reinterpret_cast<const std::atomic<std::uint32_t>*>(&event->state) +
         (kLeastSignificantFirst ? 0 : 1);
}

}  // namespace

Event* event_create() { return new (std::nothrow) Event; }

void event_destroy(Event* event) { delete event; }

bool event_set(Event* event) {
  if (event == nullptr) return false;
  if (event_signal(event)) event_wake(event);
  return true;
}

bool event_signal(Event* event) {
  if (event == nullptr) return false;
  std::uint64_t seen = event->state.load();
  do {
    if ((WordOf(seen) & 1) != 0) return false;
  } while (!event->state.compare_exchange_weak(seen, Counted(seen)));
  return seen >= kSleeper;
}

void event_wake(const Event* event) {
  futex_wake(WordAddress(event), INT_MAX, FutexScope::kProcess);
}

bool event_reset(Event* event) {
  if (event == nullptr) return false;
  std::uint64_t seen = event->state.load();
  while ((WordOf(seen) & 1) != 0 && !event->state.compare_exchange_weak(seen, Counted(seen))) {
  }
  return true;
}

std::uint32_t event_wait(Event* event, std::uint32_t ms) {
  if (event == nullptr) return kWaitFailed;
  const std::uint32_t seen = WordOf(event->state.load());
  if ((seen & 1) != 0) return kWaitSignalled;
  if (ms == 0) return kWaitTimedOut;
  const auto moved = [event, seen] { return WordOf(event->state.load()) != seen; };
  // A thread that is about to set the event does so sooner than the kernel could put this
  // one to sleep and wake it again.
  if (spin_until(moved)) return kWaitSignalled;

  const timespec deadline = ms == kNoLimit ? timespec() : deadline_after(ms);
  event->state.fetch_add(kSleeper);
  bool inTime = true;
  while (inTime && !moved()) {
    inTime = futex_wait(WordAddress(event), seen, ms == kNoLimit ? nullptr : &deadline,
                        FutexScope::kProcess);
  }
  const std::uint32_t now = WordOf(event->state.fetch_sub(kSleeper));
  return now != seen ? kWaitSignalled : kWaitTimedOut;
}

}  // namespace platform
