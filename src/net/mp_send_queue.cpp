#include "net/mp_send_queue.h"

#include <utility>

#include "text/mp_string.h"

const char* MP_SendBuffer::rest() const { return MP_String::Of(*data).Content() + sent; }

std::size_t MP_SendBuffer::size() const {
  return static_cast<std::size_t>(MP_String::Of(*data).Length()) - sent;
}

void MP_SendQueue::Add(std::unique_ptr<Kalvo_String> data, std::size_t sent) {
  auto buffer = std::make_unique<MP_SendBuffer>();
  buffer->data = std::move(data);
  buffer->sent = sent;
  MP_SendBuffer* const added = buffer.get();
  (tail_ == nullptr ? head_ : tail_->next) = std::move(buffer);
  tail_ = added;
  ++count_;
}

void MP_SendQueue::DropHead() {
  head_ = std::move(head_->next);
  if (head_ == nullptr) tail_ = nullptr;
  --count_;
}

// One by one: a long queue must not be freed by as deep a recursion.
void MP_SendQueue::Clear() {
  while (head_ != nullptr) DropHead();
}
