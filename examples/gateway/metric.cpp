#include "metric.h"

#include <cstdio>
#include <vector>

#include "journal.h"

namespace {

constexpr unsigned long kReading = 1;
constexpr char kStart[] = "start";
constexpr char kLost[] = "lost";
constexpr char kNowhere[] = "";
constexpr long kMost = 100000;

const char* const kStates[] = {"unknown", "normal", "warning", "critical", "gone"};

// Readings from `low` to `high` percent lead from one state to another.
struct Rule {
  const char* from;
  long low;
  long high;
  const char* to;
};

std::vector<Rule> Rules(const Limits& limits) {
  const long warning = limits.warning;
  const long critical = limits.critical;
  const long well = warning - Limits::kFall;
  const long better = critical - Limits::kCriticalFall;
  return {
      {"unknown", 0, warning - 1, "normal"},        {"unknown", warning, critical - 1, "warning"},
      {"unknown", critical, kMost, "critical"},     {"normal", 0, warning - 1, kNowhere},
      {"normal", warning, critical - 1, "warning"}, {"normal", critical, kMost, "critical"},
      {"warning", 0, well - 1, "normal"},           {"warning", well, critical - 1, kNowhere},
      {"warning", critical, kMost, "critical"},     {"critical", 0, well - 1, "normal"},
      {"critical", well, better - 1, "warning"},    {"critical", better, kMost, kNowhere},
  };
}

// States in which a metric has readings, and misses them.
const char* const kWatched[] = {"normal", "warning", "critical"};

}  // namespace

Metric::Metric(unsigned long id, const char* name, Kalvo_FSMService* machine)
    : id_(id), name_(name), machine_(machine), last_(-1), changes_(0) {}

unsigned long Metric::GetObjectId() { return id_; }

void Metric::Start() { machine_->HandleStringMsg(kStart, 0, this, nullptr, Journal::Trace); }

void Metric::Read(long percent) {
  if (percent == last_) return;
  last_ = percent;
  machine_->HandleIntMsg(kReading, percent, this, nullptr, Journal::Trace);
}

void Metric::Lose() {
  last_ = -1;
  machine_->HandleStringMsg(kLost, 0, this, nullptr, Journal::Trace);
}

void Metric::OnEnter(const char*, unsigned long, long, void*, Kalvo_FSM_State*,
                     Kalvo_FSM_State* current, Kalvo_FSM_State*) {
  state_ = current->GetStateName();
  ++changes_;
}

void Metric::OnSurprise(const char* event, unsigned long code, long, void*, Kalvo_FSM_State*,
                        Kalvo_FSM_State* current, Kalvo_FSM_State*) {
  Kalvo_String what(event);
  if (event == nullptr) what.sprintf("code %lu", code);
  Journal::Trace(2, "%s is %s no more: %s", name_.c_str(), current->GetStateName(), what.c_str());
}

bool BuildMachine(const Limits& limits, Kalvo_FSMService* machine) {
  for (const char* name : kStates) {
    machine->AddState(name)->SetStateEnterHandler(static_cast<FSM_Handler>(&Metric::OnEnter));
  }
  machine->GetState(nullptr)->AddStrMsgHandle(kStart, nullptr, "unknown");
  for (const Rule& rule : Rules(limits)) {
    machine->GetState(rule.from)->AddIntMsgHandle(kReading, rule.low, rule.high, nullptr, rule.to);
  }
  for (const char* name : kWatched) {
    machine->GetState(name)->SetUnExceptEventHandle(static_cast<FSM_Handler>(&Metric::OnSurprise),
                                                    "gone");
  }
  machine->GetState("gone")->SetForceState("unknown", nullptr);
  return machine->FinishAndCheck(Journal::Trace) == 0;
}

void DrawMachine(const Limits& limits) {
  std::puts("digraph metric {\n  rankdir = LR;\n  node [shape = box, style = rounded];");
  std::puts("  \"\" [shape = point];");
  std::printf("  \"\" -> unknown [label = \"%s\"];\n", kStart);
  for (const Rule& rule : Rules(limits)) {
    Kalvo_String range;
    if (rule.high == kMost) {
      range.sprintf("from %ld %%", rule.low);
    } else {
      range.sprintf("%ld to %ld %%", rule.low, rule.high);
    }
    const char* to = rule.to[0] != '\0' ? rule.to : rule.from;
    const char* style = rule.to[0] != '\0' ? "solid" : "dotted";
    std::printf("  %s -> %s [label = \"%s\", style = %s];\n", rule.from, to, range.c_str(), style);
  }
  for (const char* name : kWatched) {
    std::printf("  %s -> gone [label = \"anything else\", color = gray];\n", name);
  }
  std::puts("  gone -> unknown [label = \"at once\", style = bold];\n}");
}
