// MP_SocketPool: the records of an engine, by their ids.

#ifndef KALVOBASE_SRC_NET_MP_SOCKET_POOL_H_
#define KALVOBASE_SRC_NET_MP_SOCKET_POOL_H_

#include <atomic>
#include <cstdint>

#include "net/mp_connect_queue.h"
#include "net/mp_socket_item.h"

// It grows and never shrinks.
class MP_SocketPool {
 public:
  static constexpr int kMaxItems = 65536;

  // Both outlive the pool.
  MP_SocketPool(platform::CompletionPort* port, MP_ConnectQueue* connectQueue)
      : port_(port), connectQueue_(connectQueue) {}
  MP_SocketPool(const MP_SocketPool&) = delete;
  MP_SocketPool& operator=(const MP_SocketPool&) = delete;

  // Closes all sockets and frees all records. Nobody uses them any more, but a thread that was
  // killed may still hold their locks.
  ~MP_SocketPool();

  // For a child of fork, whose parent goes on with the sockets: closes them without a word to the
  // other side. Nobody uses the pool after that.
  void Abandon();

  // A record with a new id; null if there are too many or memory ran out.
  MP_SocketItem* Alloc();

  // Takes no lock, so the record can be another's by the time that the caller has locked it.
  MP_SocketItem* Find(std::uint32_t id) const;

  // Makes a record idle, wherever it is, and closes its socket. Nothing happens to an idle one.
  void Free(MP_SocketItem* item);

  // Closes the socket, if there is one. The caller holds both locks.
  void CloseSocket(MP_SocketItem* item);

 private:
  static constexpr int kBlockSize = 256;
  struct Block {
    std::atomic<MP_SocketItem*> items[kBlockSize] = {};
  };

  MP_SocketItem* AddItem();
  template <class Do>
  void ForEach(Do what);

  platform::CompletionPort* const port_;
  MP_ConnectQueue* const connectQueue_;

  // Guards all that follows against Alloc and Free in several threads.
  MP_Lock tableLock_;
  Kalvo_Queue freeItems_{0, 0};
  std::atomic<Block*> itemTable_[kMaxItems / kBlockSize] = {};
  int itemCount_ = 0;
  std::uint32_t generation_ = 1;
};

#endif  // KALVOBASE_SRC_NET_MP_SOCKET_POOL_H_
