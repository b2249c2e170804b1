// The start and the stop of the library.

#include <atomic>
#include <initializer_list>

#include "kalvobase/lifecycle.h"
#include "platform/clock.h"

namespace {

struct ProcessObjectEntry {
  void (*make)();
  void (*free)();
};

// The process-wide objects in their start order; they are freed in the reverse order.
// A subsystem that needs one keeps it in a ProcessObject behind an accessor and adds its
// line here.
constexpr std::initializer_list<ProcessObjectEntry> kStartOrder = {};

std::atomic<bool> started{false};

// How long threads that were told to end get to leave the library's code.
constexpr std::uint32_t kRestMs = 20;

}  // namespace

extern "C" void klbase_init(void) {
  started = true;
  for (const ProcessObjectEntry& object : kStartOrder) object.make();
}

extern "C" void klbase_fini(void) {
  if (!started.exchange(false)) return;
  platform::sleep_ms(kRestMs);
  for (const ProcessObjectEntry* object = kStartOrder.end(); object != kStartOrder.begin();) {
    (--object)->free();
  }
}
