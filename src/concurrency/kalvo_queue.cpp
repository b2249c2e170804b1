#include <new>

#include "concurrency/mp_queue.h"
#include "kalvobase/queue.h"

Kalvo_Queue::Kalvo_Queue(int locked, int signalling)
    : impl_(new (std::nothrow) MP_Queue(locked != 0, signalling != 0)) {}
Kalvo_Queue::Kalvo_Queue(const Kalvo_Queue& other) = default;
Kalvo_Queue& Kalvo_Queue::operator=(const Kalvo_Queue& other) = default;
Kalvo_Queue::~Kalvo_Queue() { delete impl_; }

void Kalvo_Queue::Init(int locked, int signalling) {
  if (impl_ != nullptr) impl_->Init(locked != 0, signalling != 0);
}

Kalvo_QueueObject* Kalvo_Queue::InsertItemAt(Kalvo_QueueObject* item, long index) {
  return impl_ != nullptr ? impl_->InsertItemAt(item, static_cast<std::int32_t>(index), this)
                          : nullptr;
}

Kalvo_QueueObject* Kalvo_Queue::AddItemAtHead(Kalvo_QueueObject* item) {
  return InsertItemAt(item, 0);
}

Kalvo_QueueObject* Kalvo_Queue::AddItemAtTail(Kalvo_QueueObject* item) {
  return InsertItemAt(item, -1);
}

Kalvo_QueueObject* Kalvo_Queue::PeekItemAt(long index, long ms) {
  return impl_ != nullptr
             ? impl_->PeekItemAt(static_cast<std::int32_t>(index), static_cast<std::int32_t>(ms))
             : nullptr;
}

Kalvo_QueueObject* Kalvo_Queue::PeekHead(long ms) { return PeekItemAt(0, ms); }

Kalvo_QueueObject* Kalvo_Queue::PeekTail(long ms) { return PeekItemAt(-1, ms); }

Kalvo_QueueObject* Kalvo_Queue::RemoveItemAt(long index, long ms) {
  return impl_ != nullptr
             ? impl_->RemoveItemAt(static_cast<std::int32_t>(index), static_cast<std::int32_t>(ms))
             : nullptr;
}

Kalvo_QueueObject* Kalvo_Queue::RemoveItemAtHead(long ms) { return RemoveItemAt(0, ms); }

Kalvo_QueueObject* Kalvo_Queue::RemoveItemAtTail(long ms) { return RemoveItemAt(-1, ms); }

unsigned long Kalvo_Queue::GetItemCount() { return impl_ != nullptr ? impl_->GetItemCount() : 0; }

void Kalvo_Queue::RemoveAll() {
  if (impl_ != nullptr) impl_->RemoveAll();
}

int Kalvo_Queue::WaitData(long ms) {
  return impl_ != nullptr ? impl_->WaitData(static_cast<std::int32_t>(ms)) : -1;
}

void Kalvo_Queue::Signal() {
  if (impl_ != nullptr) impl_->Signal();
}

void Kalvo_Queue::QSort(int (*compare)(Kalvo_QueueObject*, Kalvo_QueueObject*, void*),
                        void* context) {
  if (impl_ != nullptr) impl_->QSort(compare, context, this);
}
