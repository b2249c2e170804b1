// MP_SendQueue: what a connection has still to send, in order.

#ifndef KALVOBASE_SRC_NET_MP_SEND_QUEUE_H_
#define KALVOBASE_SRC_NET_MP_SEND_QUEUE_H_

#include <cstddef>
#include <memory>

#include "kalvobase/text.h"

// One string of a host.
struct MP_SendBuffer {
  const char* rest() const;
  std::size_t size() const;

  std::unique_ptr<Kalvo_String> data;
  std::size_t sent = 0;
  std::unique_ptr<MP_SendBuffer> next;
};

class MP_SendQueue {
 public:
  MP_SendQueue() = default;
  MP_SendQueue(const MP_SendQueue&) = delete;
  MP_SendQueue& operator=(const MP_SendQueue&) = delete;
  ~MP_SendQueue() { Clear(); }

  // The one that is being sent; null if there is none.
  MP_SendBuffer* head() const { return head_.get(); }

  // How many wait behind the one that is being sent.
  int waiting() const { return count_ > 0 ? count_ - 1 : 0; }

  // `sent` bytes of it went out already.
  void Add(std::unique_ptr<Kalvo_String> data, std::size_t sent);
  void DropHead();
  void Clear();

 private:
  std::unique_ptr<MP_SendBuffer> head_;
  MP_SendBuffer* tail_ = nullptr;
  int count_ = 0;
};

#endif  // KALVOBASE_SRC_NET_MP_SEND_QUEUE_H_
