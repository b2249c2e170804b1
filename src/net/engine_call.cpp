#include "net/engine_call.h"

#include <atomic>

#include "platform/clock.h"
#include "platform/thread_number.h"

namespace {

constexpr int kCounters = 16;
std::atomic<std::uint32_t> theTime{1};

}  // namespace

struct alignas(64) MP_EngineCall::Counter {
  std::atomic<int> calls{0};
};
MP_EngineCall::Counter MP_EngineCall::counters_[kCounters];

MP_EngineRef::MP_EngineRef(MP_SocketManager* engine) : engine_(engine), time_(theTime) {}

// Counts first: who ends the time looks at the counters after that.
MP_EngineCall::MP_EngineCall(const MP_EngineRef& ref)
    : counter_(&counters_[platform::thread_number() % kCounters]) {
  ++counter_->calls;
  engine_ = ref.time_ == theTime ? ref.engine_ : nullptr;
}

MP_EngineCall::~MP_EngineCall() { --counter_->calls; }

void MP_EngineCall::EndTime() { ++theTime; }

void MP_EngineCall::ForgetOthers() {
  for (Counter& counter : counters_) counter.calls = 0;
}

bool MP_EngineCall::WaitUntilNone(std::uint32_t ms) {
  for (;; --ms) {
    int calls = 0;
    for (const Counter& counter : counters_) calls += counter.calls;
    if (calls == 0 || ms == 0) return calls == 0;
    platform::sleep_ms(1);
  }
}
