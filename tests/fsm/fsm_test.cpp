#include <gtest/gtest.h>
#include <iconv.h>
#include <kalvobase/kalvobase.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "fsm/machine_model.h"
#include "support/allocations.h"

namespace {

std::vector<std::string> happened;

std::string Utf8(const std::string& gbk) {
  const iconv_t converter = iconv_open("UTF-8", "GBK");
  std::string from = gbk;
  std::string to(gbk.size() * 3, '\0');
  char* in = from.data();
  char* out = to.data();
  std::size_t inLeft = from.size();
  std::size_t outLeft = to.size();
  EXPECT_NE(iconv(converter, &in, &inLeft, &out, &outLeft), static_cast<std::size_t>(-1));
  iconv_close(converter);
  to.resize(to.size() - outLeft);
  return to;
}

void Trace(int level, const char* format, ...) {
  EXPECT_EQ(level, -1);
  char line[512];
  va_list args;
  va_start(args, format);
  std::vsnprintf(line, sizeof(line), format, args);
  va_end(args);
  happened.push_back(Utf8(line));
}

std::string Name(Kalvo_FSM_State* state) { return state != nullptr ? state->GetStateName() : "-"; }

#define HANDLER_ARGUMENTS                                                                  \
  const char *name, unsigned long code, long value, void *data, Kalvo_FSM_State *previous, \
      Kalvo_FSM_State *current, Kalvo_FSM_State *next

class Other {
 public:
  virtual ~Other() = default;
};

// Has a second base, and a number that has more than 32 bits where a long has.
class Probe : public Other, public Kalvo_FSM_Object {
 public:
  explicit Probe(Kalvo_FSMService* service) : service_(service) {}

  unsigned long GetObjectId() override {
    ++asked;
    return ~0xFFFFFFFFul | 0xABC;
  }

  template <int N>
  void On(HANDLER_ARGUMENTS) {
    EXPECT_EQ(data, this);
    happened.push_back("handler " + std::to_string(N) + " " + (name != nullptr ? name : "-") + " " +
                       std::to_string(code) + " " + std::to_string(value) + " " + Name(previous) +
                       " " + Name(current) + " " + Name(next));
    if (N != model::kDeliveringHandler || further_) return;
    further_ = true;
    const model::Event& event = model::kFurther;
    service_->HandleIntMsg(event.code, event.value, this, this, log);
    further_ = false;
  }

  FSM_LogCallback log = nullptr;
  int asked = 0;

 private:
  Kalvo_FSMService* service_;
  bool further_ = false;
};

template <int... N>
std::vector<FSM_Handler> Handlers(std::integer_sequence<int, N...>) {
  return {static_cast<FSM_Handler>(&Probe::On<N>)...};
}

constexpr int kHandlers = 10;
const std::vector<FSM_Handler> handlers = Handlers(std::make_integer_sequence<int, kHandlers>());

FSM_Handler Handler(int number) {
  return number == model::kNone ? nullptr : handlers[static_cast<std::size_t>(number)];
}

const char* Next(const model::Rule& rule) { return rule.next ? rule.next->c_str() : nullptr; }

// Puts a rule into a state or a service.
template <class Owner>
void AddTo(Owner* owner, const model::Rule& rule) {
  const FSM_Handler handler = Handler(rule.handler);
  const char* name = rule.name.c_str();
  if (rule.isString && rule.shape == model::Rule::kExact) {
    owner->AddStrMsgHandle(name, rule.low, handler, Next(rule));
  } else if (rule.isString && rule.shape == model::Rule::kRange) {
    owner->AddStrMsgHandle(name, rule.low, rule.high, handler, Next(rule));
  } else if (rule.isString) {
    owner->AddStrMsgHandle(name, handler, Next(rule));
  } else if (rule.shape == model::Rule::kExact) {
    owner->AddIntMsgHandle(rule.code, rule.low, handler, Next(rule));
  } else if (rule.shape == model::Rule::kRange) {
    owner->AddIntMsgHandle(rule.code, rule.low, rule.high, handler, Next(rule));
  } else {
    owner->AddIntMsgHandle(rule.code, handler, Next(rule));
  }
}

class RandomMachine {
 public:
  explicit RandomMachine(unsigned seed) : random_(seed) {
    for (int i = 1 + Below(5); i > 0; --i) AddState();
    for (model::State& state : machine_.states) Fill(&state, service_.GetState(state.name.c_str()));
    for (int i = Below(5); i > 0; --i) Add(&machine_.shared, &service_);
    if (Below(3) != 0) log_ = Trace;
  }

  // Runs both, and compares what happens after each step.
  void Run() {
    happened.clear();
    if (Below(2) == 0) Compare(service_.FinishAndCheck(log_), machine_.Check());
    Probe object(&service_);
    object.log = log_;
    for (int i = 0; i < 60 && !testing::Test::HasFailure(); ++i) {
      if (Below(30) == 0) AddState();
      if (Below(20) == 0) {
        model::State& state = machine_.states[random_() % machine_.states.size()];
        Kalvo_FSM_State* handle = service_.GetState(state.name.c_str());
        Add(&state, handle);
        SetForced(&state, handle);
        SetUnexpected(&state, handle);
      }
      const model::Event event = {Below(2) == 0, Word(), Code(), Below(8) - 2};
      machine_.Handle(event);
      if (event.isString) {
        service_.HandleStringMsg(event.name.c_str(), event.value, &object, &object, log_);
      } else {
        service_.HandleIntMsg(event.code, event.value, &object, &object, log_);
      }
      Compare(0, 0);
    }
    Compare(service_.FinishAndCheck(log_), machine_.Check());
    EXPECT_EQ(object.asked > 0, log_ != nullptr);
  }

 private:
  int Below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
  // Prefixes of each other, in one case and the other, and two with one hash.
  std::string Word() {
    static const char* const kWords[] = {"", "a", "A", "ab", "aB", "b!"};
    return kWords[Below(6)];
  }
  unsigned Code() { return 0xFFFFFFF0u + static_cast<unsigned>(Below(20)); }
  int HandlerOrNone() { return Below(kHandlers + 3) < kHandlers ? Below(kHandlers) : model::kNone; }

  std::optional<std::string> Target() {
    const int which = Below(9);
    if (which == 0) return std::nullopt;
    if (which == 1) return "";
    return std::string(1, static_cast<char>('A' + which - 2));  // not all of these exist
  }

  void AddState() {
    const std::string name(1, static_cast<char>('A' + machine_.states.size() - 1));
    service_.AddState(name.c_str());
    machine_.states.emplace_back().name = name;
  }

  model::Rule NewRule(model::Rule::Shape shape) {
    model::Rule rule = {shape,        Below(2) == 0, Word(),          Code(),
                        Below(6) - 1, Below(6) - 1,  HandlerOrNone(), Target()};
    if (shape == model::Rule::kExact) rule.high = rule.low;
    return rule;
  }

  template <class Owner>
  void Add(model::State* state, Owner* owner) {
    const model::Rule rule = NewRule(static_cast<model::Rule::Shape>(Below(3)));
    AddTo(owner, rule);
    (rule.shape == model::Rule::kRange ? state->ranges : state->rules).push_back(rule);
  }

  void Fill(model::State* state, Kalvo_FSM_State* handle) {
    for (int i = Below(10); i > 0; --i) Add(state, handle);
    state->enter = HandlerOrNone();
    state->exit = HandlerOrNone();
    handle->SetStateEnterHandler(Handler(state->enter));
    handle->SetStateExitHandler(Handler(state->exit));
    if (Below(3) == 0) SetForced(state, handle);
    if (Below(3) == 0) SetUnexpected(state, handle);
  }

  // These may replace what was set before.
  void SetForced(model::State* state, Kalvo_FSM_State* handle) {
    state->forced = NewRule(model::Rule::kForced);
    handle->SetForceState(Next(*state->forced), Handler(state->forced->handler));
  }

  void SetUnexpected(model::State* state, Kalvo_FSM_State* handle) {
    const model::Rule rule = NewRule(model::Rule::kUnexpected);
    handle->SetUnExceptEventHandle(Handler(rule.handler), Next(rule));
    state->unexpected.reset();
    if (rule.handler != model::kNone) state->unexpected = rule;
  }

  void Compare(int result, int expected) {
    EXPECT_EQ(result, expected);
    if (log_ == nullptr) {  // the handlers only
      std::vector<std::string> calls;
      for (const std::string& line : machine_.happened) {
        if (line.rfind("handler", 0) == 0) calls.push_back(line);
      }
      machine_.happened = calls;
    }
    EXPECT_EQ(happened, machine_.happened);
    happened.clear();
    machine_.happened.clear();
  }

  std::mt19937 random_;
  model::Machine machine_;
  Kalvo_FSMService service_;
  FSM_LogCallback log_ = nullptr;
};

TEST(Machine, DoesWhatItsRulesTell) {
  for (unsigned seed = 0; seed < 2000 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    RandomMachine(seed).Run();
  }
}

TEST(Machine, StatesByName) {
  Kalvo_FSMService service;
  Kalvo_FSM_State* initial = service.GetState(nullptr);
  EXPECT_EQ(service.GetStateCount(), 1u);
  EXPECT_STREQ(initial->GetStateName(), "");
  EXPECT_EQ(service.AddState(nullptr), initial);
  EXPECT_EQ(service.GetState(""), initial);
  EXPECT_EQ(service.AddState(""), nullptr);
  Kalvo_FSM_State* lower = service.AddState("state");
  EXPECT_NE(service.AddState("State"), lower);
  for (int i = 0; i < 100; ++i) service.AddState(("s" + std::to_string(i)).c_str());
  EXPECT_EQ(service.AddState("state"), lower);
  EXPECT_EQ(service.GetState("absent"), nullptr);
  EXPECT_EQ(service.GetStateCount(), 103u);
  EXPECT_EQ(service.FinishAndCheck(nullptr), 2);
}

TEST(Machine, NumbersCountAs32Bits) {
  Kalvo_FSMService service;
  service.AddIntMsgHandle(0x100000005ul, -1, handlers[0], "");
  service.AddStrMsgHandle(nullptr, 0xFFFFFFFEl, handlers[1], "");
  service.GetState(nullptr)->SetStateEnterHandler(handlers[2]);
  Probe object(&service);
  happened.clear();
  service.HandleStringMsg(nullptr, 0, &object, &object, Trace);
  service.HandleStringMsg("", 0, nullptr, nullptr, Trace);
  service.HandleIntMsg(5, -1, nullptr, nullptr, Trace);
  EXPECT_TRUE(happened.empty());
  service.HandleIntMsg(5, 0xFFFFFFFFl, &object, &object, nullptr);
  service.HandleStringMsg("", -2, &object, &object, nullptr);
  const std::vector<std::string> expected = {"handler 2 - 5 -1 -  -", "handler 0 - 5 -1 -  -",
                                             "handler 1  0 -2 -  -"};
  EXPECT_EQ(happened, expected);
}

Kalvo_FSMService* repaired = nullptr;

void AddWhatIsMissing(int, const char* format, ...) {
  va_list args;
  va_start(args, format);
  char line[512];
  for (int i = 0; i < 100; ++i) {
    repaired->AddState(("more" + std::to_string(i)).c_str());
    repaired->GetState("a")->AddIntMsgHandle(1, i, nullptr, nullptr);
  }
  repaired->GetState("a")->SetUnExceptEventHandle(nullptr, nullptr);
  std::vsnprintf(line, sizeof(line), format, args);
  EXPECT_NE(std::strlen(line), 0u);
  va_end(args);
}

TEST(Machine, CallbacksMayChangeTheService) {
  Kalvo_FSMService service;
  repaired = &service;
  Kalvo_FSM_State* a = service.AddState("a");
  const std::string missing(100, 'm');
  service.GetState(nullptr)->AddIntMsgHandle(1, nullptr, "a");
  a->AddIntMsgHandle(2, nullptr, missing.c_str());
  Probe object(&service);
  service.HandleIntMsg(1, 0, &object, &object, nullptr);
  a->SetUnExceptEventHandle(handlers[0], missing.c_str());
  service.HandleIntMsg(9, 0, &object, &object, AddWhatIsMissing);
  a->SetUnExceptEventHandle(handlers[0], missing.c_str());
  EXPECT_EQ(service.FinishAndCheck(AddWhatIsMissing), 3);
  service.AddState(missing.c_str());  // too late for the rule
  EXPECT_EQ(service.FinishAndCheck(nullptr) & 1, 1);
}

// An object whose handlers do what they should not.
class Unruly : public Kalvo_FSM_Object {
 public:
  explicit Unruly(Kalvo_FSMService* service) : service_(service) {}

  unsigned long GetObjectId() override { return 1; }
  void Throw(HANDLER_ARGUMENTS) {
    Keep(name, code, value, data, previous, current, next);
    throw 1;
  }
  void DeliverAgain(HANDLER_ARGUMENTS) {
    Keep(name, code, value, data, previous, current, next);
    service_->HandleIntMsg(2, 0, this, nullptr, nullptr);
  }
  void RemoveMyRule(HANDLER_ARGUMENTS) {
    Keep(name, code, value, data, previous, current, next);
    current->SetUnExceptEventHandle(nullptr, nullptr);
  }
  void Keep(HANDLER_ARGUMENTS) {
    (void)name;
    (void)code;
    (void)value;
    (void)data;
    seen += "<" + Name(previous) + "|" + Name(current) + "|" + Name(next) + ">";
  }

  std::string seen;

 private:
  Kalvo_FSMService* service_;
};

TEST(Machine, HandlersThatThrowDeliverOrRemove) {
  const FSM_Handler keep = static_cast<FSM_Handler>(&Unruly::Keep);
  const FSM_Handler throws = static_cast<FSM_Handler>(&Unruly::Throw);
  Kalvo_FSMService service;
  Kalvo_FSM_State* initial = service.GetState(nullptr);
  Kalvo_FSM_State* a = service.AddState("a");
  Kalvo_FSM_State* b = service.AddState("b");
  initial->AddIntMsgHandle(1, throws, "a");
  initial->AddIntMsgHandle(2, keep, "b");
  initial->AddIntMsgHandle(3, static_cast<FSM_Handler>(&Unruly::DeliverAgain), "a");
  b->SetStateExitHandler(keep);
  b->AddIntMsgHandle(4, nullptr, "a");
  a->SetStateEnterHandler(throws);
  a->SetUnExceptEventHandle(static_cast<FSM_Handler>(&Unruly::RemoveMyRule), "b");

  Unruly object(&service);
  EXPECT_THROW(service.HandleIntMsg(1, 0, &object, nullptr, nullptr), int);
  EXPECT_THROW(service.HandleIntMsg(3, 0, &object, nullptr, nullptr), int);
  // The inner event moved to "b", from which the outer one went on; its rule's target "a" was
  // entered, whose enter handler threw.
  EXPECT_EQ(object.seen, "<-||a><-||a><-||b><|b|a><b|a|a>");
  object.seen.clear();
  service.HandleIntMsg(9, 0, &object, nullptr, nullptr);
  EXPECT_EQ(object.seen, "<b|a|b>");
  EXPECT_THROW(service.HandleIntMsg(4, 0, &object, nullptr, nullptr), int);
  object.seen.clear();
  service.HandleIntMsg(9, 0, &object, nullptr, nullptr);  // the rule is gone
  EXPECT_EQ(object.seen, "");
}

class Counter : public Kalvo_FSM_Object {
 public:
  unsigned long GetObjectId() override { return 0; }
  void Count(HANDLER_ARGUMENTS) {
    (void)name;
    (void)previous;
    (void)current;
    (void)next;
    (void)data;
    sum += static_cast<long>(code) + value;
  }
  long sum = 0;
};

// A ring of states with rules of all shapes.
void BuildRing(Kalvo_FSMService* service) {
  const FSM_Handler count = static_cast<FSM_Handler>(&Counter::Count);
  for (int i = 0; i < 8; ++i) service->AddState(std::to_string(i).c_str());
  service->GetState(nullptr)->AddIntMsgHandle(1, count, "0");
  for (int i = 0; i < 8; ++i) {
    Kalvo_FSM_State* state = service->GetState(std::to_string(i).c_str());
    const std::string next = std::to_string((i + 1) % 8);
    state->AddIntMsgHandle(1, 1, count, next.c_str());
    state->AddIntMsgHandle(1, 2, 9, count, next.c_str());
    state->AddStrMsgHandle("an event with a long name that fits no short string", 1, count,
                           next.c_str());
    state->AddStrMsgHandle("any", count, next.c_str());
  }
  service->AddIntMsgHandle(7, count, "3");
  EXPECT_EQ(service->FinishAndCheck(nullptr), 0);
}

TEST(Machine, EventsAllocateNothing) {
  Kalvo_FSMService service;
  BuildRing(&service);
  Counter object;
  const long before = support::Allocations();
  for (int i = 0; i < 100; ++i) {
    service.HandleIntMsg(1, i % 9 + 1, &object, nullptr, nullptr);
    service.HandleStringMsg("an event with a long name that fits no short string", 1, &object,
                            nullptr, nullptr);
    service.HandleStringMsg("any", i, &object, nullptr, nullptr);
    service.HandleStringMsg("unknown to all states and long enough for the heap", 1, &object,
                            nullptr, nullptr);
    service.HandleIntMsg(7, 0, &object, nullptr, nullptr);
  }
  EXPECT_EQ(support::Allocations(), before);
  EXPECT_GT(object.sum, 0);
}

TEST(Machine, ThreadsShareAService) {
  Kalvo_FSMService service;
  BuildRing(&service);
  long sums[8];
  std::vector<std::thread> threads;
  for (long& sum : sums) {
    threads.emplace_back([&service, &sum] {
      Counter object;
      for (int i = 0; i < 2000; ++i) {
        service.HandleIntMsg(1, i % 9 + 1, &object, nullptr, nullptr);
        service.HandleStringMsg("any", i, &object, nullptr, nullptr);
        service.HandleIntMsg(7, 0, &object, nullptr, nullptr);
      }
      sum = object.sum;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(sums[0], 0);
  for (const long sum : sums) EXPECT_EQ(sum, sums[0]);
}

// The undefined behaviour sanitizer watches this.
TEST(Fsm, ObjectsMayHaveOtherBasesInFront) {
  struct Both : Kalvo_Timer, Kalvo_FSM_Object {
    unsigned long GetObjectId() override { return 1; }
    void On(const char*, unsigned long, long, void*, Kalvo_FSM_State*, Kalvo_FSM_State*,
            Kalvo_FSM_State*) {
      ++calls;
    }
    int calls = 0;
  } both;
  Kalvo_FSMService service;
  service.GetState(nullptr)->AddStrMsgHandle("go", static_cast<FSM_Handler>(&Both::On), nullptr);
  service.FinishAndCheck(nullptr);
  service.HandleStringMsg("go", 0, &both, nullptr, nullptr);
  EXPECT_EQ(both.calls, 1);
}

}  // namespace
