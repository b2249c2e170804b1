#include "watch.h"

#include <algorithm>

namespace {

constexpr long kNone = -1;

// `part` of `whole` in percent; kNone if there is no whole.
long Percent(double part, double whole) {
  return whole > 0 ? static_cast<long>(part / whole * 100 + 0.5) : kNone;
}

// By how much a number has grown. One that is missing is 0.
double Gain(Kalvo_KValueTable* now, Kalvo_KValueTable* before, const char* key) {
  return static_cast<double>(now->GetBaseValue(key)) -
         static_cast<double>(before->GetBaseValue(key));
}

void Give(Metric* metric, long percent) {
  if (percent >= 0) metric->Read(percent);
}

}  // namespace

Watch::Watch() : processor_(1, "processor"), load_(2, "load"), memory_(3, "memory") {}

bool Watch::Start(const Settings& settings) {
  const bool built = BuildMachine(settings.processor, &processor_.machine) &&
                     BuildMachine(settings.load, &load_.machine) &&
                     BuildMachine(settings.memory, &memory_.machine);
  if (!built) return false;
  for (Watched* watched : {&processor_, &load_, &memory_}) watched->metric.Start();
  return true;
}

bool Watch::Look(Kalvo_KValueTable* sample) {
  Kalvo_KValueTable* processors = sample->GetTable("processors");
  Kalvo_KValueTable* loads = sample->GetTable("load");
  Kalvo_KValueTable* memory = sample->GetTable("memory");
  if (processors == nullptr || loads == nullptr || memory == nullptr) return false;
  Give(&processor_.metric, BusiestProcessor(processors));
  Kalvo_Value* load = loads->GetValue("1min");
  if (load != nullptr) {
    Give(&load_.metric, Percent(load->GetDouble(), static_cast<double>(processors->GetCount())));
  }
  const double total = static_cast<double>(memory->GetBaseValue("total"));
  Give(&memory_.metric,
       Percent(total - static_cast<double>(memory->GetBaseValue("available")), total));
  before_ = *processors;
  return true;
}

long Watch::BusiestProcessor(Kalvo_KValueTable* processors) {
  long most = kNone;
  Kalvo_Key* key = nullptr;
  for (Kalvo_Value* now = processors->GetFirst(key); now != nullptr;
       now = processors->GetNext(key)) {
    Kalvo_KValueTable* ticks = now->GetValueTable();
    Kalvo_KValueTable* before = before_.GetTable(key);
    if (ticks == nullptr || before == nullptr) continue;
    most = std::max(most, Percent(Gain(ticks, before, "busy"), Gain(ticks, before, "total")));
  }
  return most;
}

void Watch::End() {
  for (Watched* watched : {&processor_, &load_, &memory_}) watched->metric.Lose();
}

Kalvo_String Watch::Line() const {
  Kalvo_String line;
  for (const Watched* watched : {&processor_, &load_, &memory_}) {
    Kalvo_String state;
    state.sprintf("%s, %d", watched->metric.state(), watched->metric.changes());
    line.sprintf_append("%-14s", state.c_str());
  }
  line.TrimRight();
  return line;
}

Kalvo_String Watch::Heading() {
  Kalvo_String line;
  line.sprintf("%-14s%-14s%s", "processor", "load", "memory");
  return line;
}
