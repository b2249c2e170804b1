#include "fsm/mp_fsm_service.h"

#include "frame/messages.h"

namespace {

constexpr int kLevel = -1;

void ReportRule(FSM_LogCallback report, const char* owner, const MP_FSM_Rule& rule) {
  const MP_FSM_EventKey& key = rule.key;
  const MP_FSM_Values values = key.values;
  const char* next = rule.nextStateName.c_str();
  switch (key.kind) {
    case FSM_KEY_UNCONDITIONAL:
      report(kLevel, messages::kFsmCheckForced, owner, next);
      break;
    case FSM_KEY_INT:
      if (values.low == values.high) {
        report(kLevel, messages::kFsmCheckIntValue, owner, key.code, values.low, next);
      } else if (values.low > values.high) {
        report(kLevel, messages::kFsmCheckIntAny, owner, key.code, next);
      } else {
        report(kLevel, messages::kFsmCheckIntRange, owner, key.code, values.low, values.high, next);
      }
      break;
    case FSM_KEY_STRING:
      if (values.low == values.high) {
        report(kLevel, messages::kFsmCheckStringValue, owner, key.name.c_str(), values.low, next);
      } else if (values.low > values.high) {
        report(kLevel, messages::kFsmCheckStringAny, owner, key.name.c_str(), next);
      } else {
        report(kLevel, messages::kFsmCheckStringRange, owner, key.name.c_str(), values.low,
               values.high, next);
      }
      break;
    case FSM_KEY_UNEXPECTED:
      report(kLevel, messages::kFsmCheckUnexpected, owner, next);
      break;
  }
}

}  // namespace

MP_FSMService::MP_FSMService() { MP_FSM_State::Of(*NewState("")).referenceCount = 1; }

Kalvo_FSM_State* MP_FSMService::NewState(const char* name) {
  states_.push_back(std::make_unique<Kalvo_FSM_State>());
  Kalvo_FSM_State* state = states_.back().get();
  try {
    MP_FSM_State& body = MP_FSM_State::Of(*state);
    body.name = name;
    const std::string_view key = body.name;
    stateMap_.Put(key, text::Hash(key), state);
  } catch (...) {
    states_.pop_back();
    throw;
  }
  return state;
}

Kalvo_FSM_State* MP_FSMService::AddState(const char* name) {
  if (name == nullptr) return InitialState();
  if (name[0] == '\0') return nullptr;
  Kalvo_FSM_State* known = GetState(name);
  return known != nullptr ? known : NewState(name);
}

Kalvo_FSM_State* MP_FSMService::GetState(const char* name) {
  if (name == nullptr) return InitialState();
  const std::string_view key = name;
  Kalvo_FSM_State** state = stateMap_.Find(key, text::Hash(key));
  return state != nullptr ? *state : nullptr;
}

void MP_FSMService::LookUpNext(MP_FSM_Rule* rule, const Kalvo_FSM_State* from) {
  if (rule->nextStatus == FSM_NEXT_FIRST_STATE) {
    rule->nextState = InitialState() != from ? InitialState() : nullptr;
    rule->nextStatus = FSM_NEXT_RESOLVED;
  } else {
    Kalvo_FSM_State* found = GetState(rule->nextStateName.c_str());
    rule->nextState = found != from ? found : nullptr;
    rule->nextStatus = found != nullptr ? FSM_NEXT_RESOLVED : FSM_NEXT_INVALID;
    if (rule->nextState != nullptr) ++MP_FSM_State::Of(*found).referenceCount;
  }
}

// The callback may do anything to the service, so lines are made from copies and lists are
// walked by number.
int MP_FSMService::FinishAndCheck(FSM_LogCallback report) {
  constexpr int kNoSuchState = 1;
  constexpr int kUnreferenced = 2;
  int found = 0;
  const auto check = [&](Kalvo_FSM_State& owner) {
    MP_FSM_State& body = MP_FSM_State::Of(owner);
    body.ForEachRule([&](MP_FSM_Rule* rule) {
      Resolve(rule, &owner);
      if (rule->nextStatus != FSM_NEXT_INVALID) return;
      found |= kNoSuchState;
      if (report != nullptr) ReportRule(report, body.name.c_str(), MP_FSM_Rule(*rule));
    });
  };
  for (std::size_t i = 0; i < states_.size(); ++i) check(*states_[i]);
  check(sharedState_);
  for (std::size_t i = 0; i < states_.size(); ++i) {
    const MP_FSM_State& body = MP_FSM_State::Of(*states_[i]);
    if (body.referenceCount != 0) continue;
    found |= kUnreferenced;
    if (report != nullptr) report(kLevel, messages::kFsmUnreferenced, body.name.c_str());
  }
  return found;
}
