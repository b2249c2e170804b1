#include "watch.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr long kNone = -1;

// `part` of `whole` in percent; kNone if there is no whole.
long Percent(double part, double whole) {
  return whole > 0 ? static_cast<long>(part / whole * 100 + 0.5) : kNone;
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

void Watch::Look(Kalvo_KValueTable* sample) {
  Kalvo_KValueTable* processors = sample->GetTable("processors");
  Give(&processor_.metric, BusiestProcessor(processors));
  Kalvo_Value* load = sample->GetTable("load")->GetValue("1min");
  if (load != nullptr) {
    Give(&load_.metric, Percent(load->GetDouble(), static_cast<double>(processors->GetCount())));
  }
  Kalvo_KValueTable* memory = sample->GetTable("memory");
  const double total = static_cast<double>(memory->GetBaseValue("total"));
  Give(&memory_.metric,
       Percent(total - static_cast<double>(memory->GetBaseValue("available")), total));
  before_ = *processors;
}

long Watch::BusiestProcessor(Kalvo_KValueTable* processors) {
  long most = kNone;
  Kalvo_Key* key = nullptr;
  for (Kalvo_Value* now = processors->GetFirst(key); now != nullptr;
       now = processors->GetNext(key)) {
    Kalvo_KValueTable* before = before_.GetTable(key);
    if (before == nullptr) continue;
    Kalvo_Value busy(*now->GetValueTable()->GetValue("busy"));
    Kalvo_Value total(*now->GetValueTable()->GetValue("total"));
    busy.Minus(before->GetValue("busy"));
    total.Minus(before->GetValue("total"));
    most = std::max(most, Percent(busy.GetDouble(), total.GetDouble()));
  }
  return most;
}

void Watch::End() {
  for (Watched* watched : {&processor_, &load_, &memory_}) watched->metric.Lose();
}

void Watch::Print() const {
  std::printf("%-12s%-10s%s\n", "metric", "state", "changes");
  for (const Watched* watched : {&processor_, &load_, &memory_}) {
    const Metric& metric = watched->metric;
    std::printf("%-12s%-10s%d\n", metric.name(), metric.state(), metric.changes());
  }
}
