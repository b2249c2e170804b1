#include "concurrency/mp_queue.h"
#include "kalvobase/queue.h"
#include "kalvobase/text.h"

Kalvo_QueueObject::Kalvo_QueueObject() : item_(nullptr), queue_(nullptr) {}

// The record of a queue names one object. A copy that shared it would take the original
// out of its queue when it is destroyed, and leave it with a record that is gone.
Kalvo_QueueObject::Kalvo_QueueObject(const Kalvo_QueueObject&) : Kalvo_QueueObject() {}
Kalvo_QueueObject& Kalvo_QueueObject::operator=(const Kalvo_QueueObject&) { return *this; }

Kalvo_QueueObject::~Kalvo_QueueObject() { MP_Queue::Remove(this); }

int Kalvo_QueueObject::GetType() { return 0; }

const char* Kalvo_QueueObject::GetTypename(Kalvo_String* out) {
  if (out == nullptr) return "unknown";
  *out = "unknown";
  return out->c_str();
}

void Kalvo_QueueObject::Remove() { MP_Queue::Remove(this); }

void Kalvo_QueueObject::ToHead() { MP_Queue::MoveToHead(this); }

void Kalvo_QueueObject::ToTail() { MP_Queue::MoveToTail(this); }

Kalvo_QueueObject* Kalvo_QueueObject::Next() { return MP_Queue::Next(this); }

Kalvo_QueueObject* Kalvo_QueueObject::Pre() { return MP_Queue::Previous(this); }

Kalvo_QueueObject* Kalvo_QueueObject::AddItemBefore(Kalvo_QueueObject* item) {
  return MP_Queue::AddBefore(this, item);
}

Kalvo_QueueObject* Kalvo_QueueObject::AddItemAfter(Kalvo_QueueObject* item) {
  return MP_Queue::AddAfter(this, item);
}

Kalvo_Queue* Kalvo_QueueObject::GetOwner() { return MP_Queue::GetOwner(this); }
