// State machines from tables against machines that are made by the compiler.

#include <kalvobase/kalvobase.h>

#include <boost/mpl/list.hpp>
#include <boost/statechart/event.hpp>
#include <boost/statechart/simple_state.hpp>
#include <boost/statechart/state_machine.hpp>
#include <boost/statechart/transition.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "duel.h"

namespace {

constexpr int kStates = 8;
constexpr int kEvents = 1000000;

// Eight states in a ring, and two events that go on and back in it. Each side gets the same
// events and counts them in a handler.
const std::vector<bool>& Forward() {
  static const std::vector<bool> forward = [] {
    std::vector<bool> bits;
    std::uint32_t state = 1;
    for (int i = 0; i < kEvents; ++i) {
      state = state * 1664525u + 1013904223u;
      bits.push_back(state >> 31 != 0);
    }
    return bits;
  }();
  return forward;
}

// --- The library ----------------------------------------------------------------------

class Walker : public Kalvo_FSM_Object {
 public:
  unsigned long GetObjectId() override { return 0; }
  void OnEvent(const char*, unsigned long, long, void*, Kalvo_FSM_State*, Kalvo_FSM_State*,
               Kalvo_FSM_State*) {
    ++handled;
  }
  long handled = 0;
};

constexpr char kForward[] = "forward";
constexpr char kBack[] = "back";

void BuildRing(Kalvo_FSMService* service) {
  const FSM_Handler handler = static_cast<FSM_Handler>(&Walker::OnEvent);
  const auto name = [](int i) { return std::string("state ") + std::to_string(i % kStates); };
  service->GetState(nullptr)->AddIntMsgHandle(0, nullptr, name(0).c_str());
  for (int i = 0; i < kStates; ++i) service->AddState(name(i).c_str());
  for (int i = 0; i < kStates; ++i) {
    Kalvo_FSM_State* state = service->GetState(name(i).c_str());
    const std::string next = name(i + 1);
    const std::string previous = name(i + kStates - 1);
    state->AddIntMsgHandle(100, 1, handler, next.c_str());
    state->AddIntMsgHandle(200, 1, handler, previous.c_str());
    state->AddStrMsgHandle(kForward, 1, handler, next.c_str());
    state->AddStrMsgHandle(kBack, 1, handler, previous.c_str());
  }
  service->FinishAndCheck(nullptr);
}

void IntegerEvents(benchmark::State& state) {
  Kalvo_FSMService service;
  BuildRing(&service);
  for (auto _ : state) {
    Walker walker;
    service.HandleIntMsg(0, 0, &walker, nullptr, nullptr);
    for (const bool forward : Forward()) {
      service.HandleIntMsg(forward ? 100 : 200, 1, &walker, nullptr, nullptr);
    }
    benchmark::DoNotOptimize(walker.handled);
  }
}

void StringEvents(benchmark::State& state) {
  Kalvo_FSMService service;
  BuildRing(&service);
  for (auto _ : state) {
    Walker walker;
    service.HandleIntMsg(0, 0, &walker, nullptr, nullptr);
    for (const bool forward : Forward()) {
      service.HandleStringMsg(forward ? kForward : kBack, 1, &walker, nullptr, nullptr);
    }
    benchmark::DoNotOptimize(walker.handled);
  }
}

// --- boost::statechart ----------------------------------------------------------------

namespace sc = boost::statechart;

struct EvForward : sc::event<EvForward> {};
struct EvBack : sc::event<EvBack> {};

template <int I>
struct Stop;

struct Machine : sc::state_machine<Machine, Stop<0>> {
  void OnForward(const EvForward&) { ++handled; }
  void OnBack(const EvBack&) { ++handled; }
  long handled = 0;
};

template <int I>
struct Stop : sc::simple_state<Stop<I>, Machine> {
  using reactions = boost::mpl::list<
      sc::transition<EvForward, Stop<(I + 1) % kStates>, Machine, &Machine::OnForward>,
      sc::transition<EvBack, Stop<(I + kStates - 1) % kStates>, Machine, &Machine::OnBack>>;
};

void Statechart(benchmark::State& state) {
  const EvForward goForward;
  const EvBack goBack;
  for (auto _ : state) {
    Machine machine;
    machine.initiate();
    for (const bool forward : Forward()) {
      if (forward) {
        machine.process_event(goForward);
      } else {
        machine.process_event(goBack);
      }
    }
    benchmark::DoNotOptimize(machine.handled);
  }
}

// --- By hand --------------------------------------------------------------------------

class Switch {
 public:
  void Handle(unsigned long code, long value) {
    switch (state_) {
      case 0:
        return On(code, value, 1, 7);
      case 1:
        return On(code, value, 2, 0);
      case 2:
        return On(code, value, 3, 1);
      case 3:
        return On(code, value, 4, 2);
      case 4:
        return On(code, value, 5, 3);
      case 5:
        return On(code, value, 6, 4);
      case 6:
        return On(code, value, 7, 5);
      default:
        return On(code, value, 0, 6);
    }
  }
  long handled = 0;

 private:
  void On(unsigned long code, long value, int next, int previous) {
    if (value != 1) return;
    switch (code) {
      case 100:
        ++handled;
        state_ = next;
        break;
      case 200:
        ++handled;
        state_ = previous;
        break;
      default:
        break;
    }
  }

  int state_ = 0;
};

void ByHand(benchmark::State& state) {
  for (auto _ : state) {
    Switch machine;
    for (const bool forward : Forward()) {
      machine.Handle(forward ? 100 : 200, 1);
      benchmark::DoNotOptimize(machine);
    }
  }
}

[[maybe_unused]] const bool registered = [] {
  duel::Ours("1 million integer events, 8 states", IntegerEvents);
  duel::Peer("1 million integer events, 8 states", "boost::statechart", 3.0, Statechart);
  duel::Peer("1 million integer events, 8 states", "a switch by hand", 0, ByHand);
  duel::Ours("1 million string events, 8 states", StringEvents);
  duel::Peer("1 million string events, 8 states", "boost::statechart, event types", 1.5,
             Statechart);
  return true;
}();

}  // namespace
