// A state machine as its rules are told, without maps and handles: what a service must do.

#ifndef KALVOBASE_TESTS_FSM_MACHINE_MODEL_H_
#define KALVOBASE_TESTS_FSM_MACHINE_MODEL_H_

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace model {

constexpr int kNone = -1;

// This handler delivers kFurther to the same object, unless that is on its way already.
constexpr int kDeliveringHandler = 9;

struct Event {
  bool isString;
  std::string name;
  unsigned code;
  int value;
};

inline const Event kFurther = {false, "", 0xFFFFFFF3u, 1};

struct Rule {
  enum Shape { kExact, kRange, kAny, kUnexpected, kForced } shape;
  bool isString;
  std::string name;
  unsigned code;
  int low, high;
  int handler;                      // a number, or kNone
  std::optional<std::string> next;  // nothing: the initial state
  enum { kOpen, kSettled, kInvalid } status = kOpen;
  int target = kNone;
};

struct State {
  std::string name;
  std::vector<Rule> rules;  // exact ones and those for any value
  std::vector<Rule> ranges;
  std::optional<Rule> unexpected, forced;
  int enter = kNone, exit = kNone;
  int references = 0;
};

class Machine {
 public:
  Machine() {
    states.emplace_back();
    states[0].references = 1;
  }

  // What happens to an object: handler calls and trace lines, in order.
  void Handle(const Event& event);
  int Check();

  std::deque<State> states;
  State shared;
  int previous = kNone, current = kNone;
  std::vector<std::string> happened;

 private:
  bool further_ = false;

  Rule* Find(State* state, const Event& event);
  void Settle(Rule* rule, int from);
  void Call(int handler, const Event& event, int before, int now, int next);
  void Enter(const Event& event, int next);
  std::string Told(const Event& event) const;
  std::string Name(int state) const { return state == kNone ? "-" : states[At(state)].name; }
  static std::size_t At(int i) { return static_cast<std::size_t>(i); }
};

}  // namespace model

#endif  // KALVOBASE_TESTS_FSM_MACHINE_MODEL_H_
