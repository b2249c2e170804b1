#include "fsm/mp_fsm_state.h"

#include <utility>

#include "text/text_bytes.h"

namespace {

MP_FSM_EventKey IntEvent(unsigned long code, MP_FSM_Values values) {
  return {FSM_KEY_INT, {}, static_cast<std::uint32_t>(code), values};
}

MP_FSM_EventKey StringEvent(const char* name, MP_FSM_Values values) {
  return {FSM_KEY_STRING, name != nullptr ? name : "", 0, values};
}

MP_FSM_Values Range(long low, long high) {
  return {static_cast<std::int32_t>(low), static_cast<std::int32_t>(high)};
}

}  // namespace

// --- Adding rules -------------------------------------------------------------------

MP_FSM_Rule* MP_FSM_State::NewRule(std::deque<MP_FSM_Rule>* rules, MP_FSM_EventKey key,
                                   FSM_Handler handler, const char* next) {
  MP_FSM_Rule& rule = rules->emplace_back();
  rule.key = std::move(key);
  rule.handler = handler;
  rule.LeadTo(next);
  return &rule;
}

void MP_FSM_State::AddIntRule(unsigned long code, long value, FSM_Handler handler,
                              const char* next) {
  const MP_FSM_Values values = Range(value, value);
  MP_FSM_Rule* rule = NewRule(&keyedRules_, IntEvent(code, values), handler, next);
  const IntKey key = {rule->key.code, values.low, false};
  intRuleMap_.Put(key, key.Hash(), rule);
}

void MP_FSM_State::AddIntRule(unsigned long code, long low, long high, FSM_Handler handler,
                              const char* next) {
  NewRule(&rangeRules_, IntEvent(code, Range(low, high)), handler, next);
}

void MP_FSM_State::AddIntRule(unsigned long code, FSM_Handler handler, const char* next) {
  MP_FSM_Rule* rule = NewRule(&keyedRules_, IntEvent(code, MP_FSM_Values::Any()), handler, next);
  const IntKey key = {rule->key.code, 0, true};
  intRuleMap_.Put(key, key.Hash(), rule);
}

void MP_FSM_State::AddStringRule(const char* event, long value, FSM_Handler handler,
                                 const char* next) {
  const MP_FSM_Values values = Range(value, value);
  MP_FSM_Rule* rule = NewRule(&keyedRules_, StringEvent(event, values), handler, next);
  const NamedValue key = {rule->key.name, values.low};
  strValueRuleMap_.Put(key, HashWithValue(text::Hash(key.name), key.value), rule);
}

void MP_FSM_State::AddStringRule(const char* event, long low, long high, FSM_Handler handler,
                                 const char* next) {
  NewRule(&rangeRules_, StringEvent(event, Range(low, high)), handler, next);
}

void MP_FSM_State::AddStringRule(const char* event, FSM_Handler handler, const char* next) {
  MP_FSM_Rule* rule =
      NewRule(&keyedRules_, StringEvent(event, MP_FSM_Values::Any()), handler, next);
  const std::string_view key = rule->key.name;
  strRuleMap_.Put(key, text::Hash(key), rule);
}

void MP_FSM_State::SetUnexpectedRule(FSM_Handler handler, const char* next) {
  if (handler == nullptr) {
    unexpectedRule_.reset();
    return;
  }
  if (unexpectedRule_ == nullptr) unexpectedRule_ = std::make_unique<MP_FSM_Rule>();
  unexpectedRule_->key.kind = FSM_KEY_UNEXPECTED;
  unexpectedRule_->handler = handler;
  unexpectedRule_->LeadTo(next);
}

void MP_FSM_State::SetForceRule(FSM_Handler handler, const char* next) {
  if (forceRule == nullptr) forceRule = std::make_unique<MP_FSM_Rule>();
  forceRule->key.kind = FSM_KEY_UNCONDITIONAL;
  forceRule->handler = handler;
  forceRule->LeadTo(next);
}

// --- Finding the rule for an event --------------------------------------------------

MP_FSM_Rule* const* MP_FSM_State::FindAny(const MP_FSM_IntEvent& event) const {
  const IntKey key = {event.code, 0, true};
  return intRuleMap_.Find(key, key.Hash());
}

MP_FSM_Rule* const* MP_FSM_State::FindAny(const MP_FSM_StringEvent& event) const {
  return strRuleMap_.Find(event.text, event.hash);
}

template <class Event>
MP_FSM_Rule* MP_FSM_State::FindOther(const Event& event) {
  for (MP_FSM_Rule& rule : rangeRules_) {
    const MP_FSM_EventKey& key = rule.key;
    if (key.kind == Event::kKind && key.values.Contain(event.value) && event.Fits(key)) {
      return &rule;
    }
  }
  MP_FSM_Rule* const* any = FindAny(event);
  return any != nullptr ? *any : unexpectedRule_.get();
}

template MP_FSM_Rule* MP_FSM_State::FindOther(const MP_FSM_IntEvent& event);
template MP_FSM_Rule* MP_FSM_State::FindOther(const MP_FSM_StringEvent& event);
