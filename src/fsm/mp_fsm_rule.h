// A rule: which event it answers, what it calls and where it leads.

#ifndef KALVOBASE_SRC_FSM_MP_FSM_RULE_H_
#define KALVOBASE_SRC_FSM_MP_FSM_RULE_H_

#include <cstdint>
#include <string>

#include "kalvobase/fsm.h"

enum FSM_KeyKind : std::int32_t {
  FSM_KEY_UNCONDITIONAL = 0,  // a forced step
  FSM_KEY_INT = 1,
  FSM_KEY_STRING = 2,
  FSM_KEY_UNEXPECTED = 3
};

enum FSM_NextStatus : std::int32_t {
  FSM_NEXT_FIRST_STATE = 0,  // to be looked up: the initial state
  FSM_NEXT_BY_NAME = 1,      // to be looked up: the state with the name
  FSM_NEXT_RESOLVED = 2,     // nextState is final
  FSM_NEXT_NONE = 3,         // leads nowhere
  FSM_NEXT_INVALID = 4       // looked up and not found
};

// The values of an event that a rule answers. `low` above `high` stands for any.
struct MP_FSM_Values {
  static constexpr MP_FSM_Values Any() { return {1, 0}; }
  static constexpr MP_FSM_Values One(std::int32_t value) { return {value, value}; }

  bool Contain(std::int32_t value) const { return low <= value && value <= high; }

  std::int32_t low;
  std::int32_t high;
};

struct MP_FSM_EventKey {
  FSM_KeyKind kind;
  std::string name;
  std::uint32_t code;
  MP_FSM_Values values;
};

struct MP_FSM_Rule {
  // `next` as the public operations take it.
  void LeadTo(const char* next) {
    nextStateName = next != nullptr ? next : "";
    nextStatus = next == nullptr         ? FSM_NEXT_FIRST_STATE
                 : nextStateName.empty() ? FSM_NEXT_NONE
                                         : FSM_NEXT_BY_NAME;
    nextState = nullptr;
  }

  MP_FSM_EventKey key;
  FSM_Handler handler = nullptr;
  std::string nextStateName;
  FSM_NextStatus nextStatus = FSM_NEXT_NONE;
  Kalvo_FSM_State* nextState = nullptr;
};

#endif  // KALVOBASE_SRC_FSM_MP_FSM_RULE_H_
