#include "collector.h"

#include "sample.h"

namespace {

constexpr long kPatienceMs = 100;

}  // namespace

Collector::Collector(const char* name, Kalvo_Queue* queue, Uplink* uplink,
                     Kalvo_KValueTable* history, Kalvo_Log* log)
    : name_(name),
      queue_(queue),
      uplink_(uplink),
      history_(history),
      log_(log),
      thread_(Work, this, 0, "collector", nullptr, 0) {}

unsigned long Collector::Work(void* self) {
  Collector* collector = static_cast<Collector*>(self);
  while (collector->thread_.Running() || collector->queue_->GetItemCount() > 0) {
    Kalvo_QueueObject* object = collector->queue_->RemoveItemAtHead(kPatienceMs);
    if (object == nullptr) continue;
    collector->Take(&static_cast<Sample*>(object)->values);
    delete object;
  }
  collector->TellDone();
  return 0;
}

void Collector::Take(Kalvo_KValueTable* values) {
  values->Set("agent", name_);
  const bool sent = uplink_->Send(values);
  const unsigned long number = history_->GetCount();
  *history_->InsertTable(static_cast<long>(number)) = *values;
  log_->Trace(2, "sample %lu with %lu processors%s", number,
              values->GetTable("processors")->GetCount(), sent ? ", sent" : "");
}

void Collector::TellDone() {
  Kalvo_KValueTable table;
  table.Set("agent", name_);
  table.Set("done", 1);
  uplink_->Send(&table);
}
