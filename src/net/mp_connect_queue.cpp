#include "net/mp_connect_queue.h"

namespace {

MP_SocketItem* Item(Kalvo_QueueObject* object) { return static_cast<MP_SocketItem*>(object); }

}  // namespace

void MP_ConnectQueue::Schedule(MP_SocketItem* item, int delay) {
  const MP_ShieldedGuard guard(&lock_);
  if (item->GetOwner() == &items_) item->Remove();
  MP_SocketItem* behind = Item(items_.PeekHead(0));
  for (; behind != nullptr && behind->connectDelay <= delay; behind = Item(behind->Next())) {
    if (behind->connectDelay > 0) delay -= behind->connectDelay;
  }
  item->connectDelay = delay;
  item->connectTurn = turn_;
  if (behind != nullptr) {
    behind->AddItemBefore(item);
  } else {
    items_.AddItemAtTail(item);
  }
}

void MP_ConnectQueue::Remove(MP_SocketItem* item) {
  const MP_ShieldedGuard guard(&lock_);
  if (item->GetOwner() == &items_) item->Remove();
}

void MP_ConnectQueue::BeginPass() {
  const MP_ShieldedGuard guard(&lock_);
  ++turn_;
}

MP_SocketItem* MP_ConnectQueue::Head() {
  const MP_ShieldedGuard guard(&lock_);
  MP_SocketItem* item = Item(items_.PeekHead(0));
  while (item != nullptr && item->connectTurn == turn_) item = Item(item->Next());
  return item;
}

MP_ConnectQueue::Charged MP_ConnectQueue::Charge(MP_SocketItem* item, int* elapsed) {
  const MP_ShieldedGuard guard(&lock_);
  if (item->GetOwner() != &items_ || item->connectTurn == turn_) return Charged::kGone;
  item->connectDelay -= *elapsed;
  if (item->connectDelay > 0) {
    *elapsed = 0;
    return Charged::kNotDue;
  }
  *elapsed = -item->connectDelay;
  item->Remove();
  return Charged::kDue;
}
