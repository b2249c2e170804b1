// What is behind a Kalvo_FSM_State: its rules, and the maps by which an event finds them.

#ifndef KALVOBASE_SRC_FSM_MP_FSM_STATE_H_
#define KALVOBASE_SRC_FSM_MP_FSM_STATE_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "frame/hash_map.h"
#include "fsm/mp_fsm_event.h"
#include "fsm/mp_fsm_rule.h"

// After the machine is built all of this is only read.
class MP_FSM_State {
 public:
  static MP_FSM_State& Of(Kalvo_FSM_State& state) { return *state.impl_; }

  void AddIntRule(unsigned long code, long value, FSM_Handler handler, const char* next);
  void AddIntRule(unsigned long code, long low, long high, FSM_Handler handler, const char* next);
  void AddIntRule(unsigned long code, FSM_Handler handler, const char* next);
  void AddStringRule(const char* event, long value, FSM_Handler handler, const char* next);
  void AddStringRule(const char* event, long low, long high, FSM_Handler handler, const char* next);
  void AddStringRule(const char* event, FSM_Handler handler, const char* next);
  void SetUnexpectedRule(FSM_Handler handler, const char* next);
  void SetForceRule(FSM_Handler handler, const char* next);

  // The rule for an event, or null: the exact one, the first range, the one for any value,
  // the one for unexpected events.
  template <class Event>
  MP_FSM_Rule* Find(const Event& event) {
    MP_FSM_Rule* const* exact = FindExact(event);
    return exact != nullptr ? *exact : FindOther(event);
  }

  // Calls `visit` with each rule in the order in which rules are checked. It may add rules.
  template <class Visit>
  void ForEachRule(Visit visit) {
    for (std::size_t i = 0; i < keyedRules_.size(); ++i) visit(&keyedRules_[i]);
    for (std::size_t i = 0; i < rangeRules_.size(); ++i) visit(&rangeRules_[i]);
    if (forceRule != nullptr) visit(forceRule.get());
    if (unexpectedRule_ != nullptr) visit(unexpectedRule_.get());
  }

  std::string name;
  FSM_Handler enterHandler = nullptr;
  FSM_Handler exitHandler = nullptr;
  std::unique_ptr<MP_FSM_Rule> forceRule;
  std::uint32_t referenceCount = 0;  // resolved rules of other states that lead here

 private:
  static constexpr std::uint32_t kBuckets = 17;

  struct IntKey {
    bool operator==(const IntKey& other) const {
      return code == other.code && value == other.value && anyValue == other.anyValue;
    }
    std::uint32_t Hash() const {
      return text::Hash(value) + text::Hash(code) + text::Hash(std::int32_t{anyValue});
    }

    std::uint32_t code;
    std::int32_t value;
    bool anyValue;
  };

  struct NamedValue {
    bool operator==(const NamedValue& other) const {
      return value == other.value && name == other.name;
    }
    std::string_view name;  // in the rule's key
    std::int32_t value;
  };

  static std::uint32_t HashWithValue(std::uint32_t nameHash, std::int32_t value) {
    return nameHash + text::Hash(static_cast<std::uint32_t>(value));
  }

  MP_FSM_Rule* NewRule(std::deque<MP_FSM_Rule>* rules, MP_FSM_EventKey key, FSM_Handler handler,
                       const char* next);

  MP_FSM_Rule* const* FindExact(const MP_FSM_IntEvent& event) const {
    const IntKey key = {event.code, event.value, false};
    return intRuleMap_.Find(key, key.Hash());
  }
  MP_FSM_Rule* const* FindExact(const MP_FSM_StringEvent& event) const {
    return strValueRuleMap_.Find(NamedValue{event.text, event.value},
                                 HashWithValue(event.hash, event.value));
  }
  MP_FSM_Rule* const* FindAny(const MP_FSM_IntEvent& event) const;
  MP_FSM_Rule* const* FindAny(const MP_FSM_StringEvent& event) const;
  template <class Event>
  MP_FSM_Rule* FindOther(const Event& event);

  // Every rule ever added, also those in whose place another one stands.
  std::deque<MP_FSM_Rule> keyedRules_;
  std::deque<MP_FSM_Rule> rangeRules_;
  HashMap<IntKey, MP_FSM_Rule*, kBuckets> intRuleMap_;
  HashMap<NamedValue, MP_FSM_Rule*, kBuckets> strValueRuleMap_;
  HashMap<std::string_view, MP_FSM_Rule*, kBuckets> strRuleMap_;  // keys in the rules
  std::unique_ptr<MP_FSM_Rule> unexpectedRule_;
};

#endif  // KALVOBASE_SRC_FSM_MP_FSM_STATE_H_
