#include "fsm/machine_model.h"

#include <cstdio>

namespace model {

namespace {

std::string Hex(unsigned number, bool wide) {
  char text[16];
  std::snprintf(text, sizeof(text), wide ? "0x%08x" : "0x%x", number);
  return text;
}

const char kObject[] = "0x00000abc ";

}  // namespace

std::string Machine::Told(const Event& event) const {
  return "(" + (event.isString ? event.name : Hex(event.code, true)) + ":" +
         std::to_string(event.value) + ")";
}

void Machine::Call(int handler, const Event& event, int before, int now, int next) {
  if (handler == kNone) return;
  happened.push_back(
      "handler " + std::to_string(handler) + " " + (event.isString ? event.name : "-") + " " +
      std::to_string(event.isString ? 0 : event.code) + " " + std::to_string(event.value) + " " +
      Name(before) + " " + Name(now) + " " + Name(next));
  if (handler != kDeliveringHandler || further_) return;
  further_ = true;
  Handle(kFurther);
  further_ = false;
}

Rule* Machine::Find(State* state, const Event& event) {
  const auto same = [&event](const Rule& rule) {
    return rule.isString == event.isString &&
           (event.isString ? rule.name == event.name : rule.code == event.code);
  };
  Rule* any = nullptr;
  Rule* exact = nullptr;
  for (Rule& rule : state->rules) {
    if (!same(rule)) continue;
    if (rule.shape == Rule::kAny) any = &rule;  // the last one counts
    if (rule.shape == Rule::kExact && rule.low == event.value) exact = &rule;
  }
  if (exact != nullptr) return exact;
  for (Rule& rule : state->ranges) {
    if (same(rule) && rule.low <= event.value && event.value <= rule.high) return &rule;
  }
  if (any != nullptr) return any;
  return state->unexpected ? &*state->unexpected : nullptr;
}

void Machine::Settle(Rule* rule, int from) {
  if (rule->status != Rule::kOpen) return;
  rule->status = Rule::kSettled;
  if (rule->next && rule->next->empty()) return;
  if (!rule->next) {
    rule->target = from == 0 ? kNone : 0;
    return;
  }
  for (std::size_t i = 0; i < states.size(); ++i) {
    if (states[i].name != *rule->next) continue;
    rule->target = static_cast<int>(i) == from ? kNone : static_cast<int>(i);
    if (rule->target != kNone) ++states[i].references;
    return;
  }
  rule->status = Rule::kInvalid;
}

void Machine::Enter(const Event& event, int next) {
  previous = current;
  current = next;
  Call(states[At(current)].enter, event, previous, current, next);
}

void Machine::Handle(const Event& event) {
  if (current == kNone) {
    current = 0;
    Call(states[0].enter, event, kNone, 0, kNone);
  }
  const std::string at = std::string(kObject) + "在状态(" + Name(current) + ")";
  const std::string told = at + ",收到事件" + Told(event);
  happened.push_back(told);
  Rule* rule = Find(&states[At(current)], event);
  if (rule == nullptr) rule = Find(&shared, event);
  if (rule == nullptr) {
    happened.push_back(told + ",没有对应处理规则，事件被丢弃");
    return;
  }
  Settle(rule, current);
  if (rule->status == Rule::kInvalid) {
    happened.push_back(told + ",规则错误，没有找到对应的下一状态(" + *rule->next + ")");
    return;
  }
  Call(rule->handler, event, previous, current, rule->target);
  Call(states[At(current)].exit, event, previous, current, rule->target);
  if (rule->target == kNone) return;
  happened.push_back(std::string(kObject) + "状态迁移(" + Name(current) + ")---" + Told(event) +
                     "-->" + Name(rule->target));
  Enter(event, rule->target);
  for (int step = 0; step < 3 && states[At(current)].forced; ++step) {
    Rule& forced = *states[At(current)].forced;
    Settle(&forced, current);
    if (forced.status == Rule::kInvalid) {
      happened.push_back(std::string(kObject) + "在状态(" + Name(current) +
                         ")下无条件前转设置错误：没有找到(" + *forced.next + ")状态");
      return;
    }
    if (forced.target == kNone) return;
    Call(forced.handler, event, previous, current, forced.target);
    happened.push_back(std::string(kObject) + "状态被无条件迁移(" + Name(current) + ")----->" +
                       Name(forced.target));
    Enter(event, forced.target);
  }
}

int Machine::Check() {
  int found = 0;
  const auto check = [&](State& owner, int from, Rule& rule) {
    Settle(&rule, from);
    if (rule.status != Rule::kInvalid) return;
    found |= 1;
    const std::string low = std::to_string(rule.low);
    std::string key = rule.isString ? rule.name : Hex(rule.code, false);
    if (rule.shape == Rule::kForced) {
      key = "无条件转移";
    } else if (rule.shape == Rule::kUnexpected) {
      key = "UnExceptEvent";
    } else if (rule.shape != Rule::kAny && rule.low == rule.high) {
      key += ":" + low;
    } else if (rule.shape != Rule::kAny && rule.low < rule.high) {
      key += ":[" + low + "," + std::to_string(rule.high) + "]";
    }
    happened.push_back(owner.name + " ----(" + key + ")--->" + *rule.next + "(该转移状态不存在)");
  };
  const auto checkAll = [&](State& owner, int from) {
    for (Rule& rule : owner.rules) check(owner, from, rule);
    for (Rule& rule : owner.ranges) check(owner, from, rule);
    if (owner.forced) check(owner, from, *owner.forced);
    if (owner.unexpected) check(owner, from, *owner.unexpected);
  };
  for (std::size_t i = 0; i < states.size(); ++i) checkAll(states[i], static_cast<int>(i));
  checkAll(shared, kNone);
  for (const State& state : states) {
    if (state.references != 0) continue;
    found |= 2;
    happened.push_back(state.name + "定义后未被实际引用，可能是个潜在错误");
  }
  return found;
}

}  // namespace model
