// MP_SocketCore: what the jobs of an engine share: how sockets come to the port, the reads of
// connections, and the one end of all connections and attempts.

#ifndef KALVOBASE_SRC_NET_MP_SOCKET_CORE_H_
#define KALVOBASE_SRC_NET_MP_SOCKET_CORE_H_

#include "net/mp_connect_queue.h"
#include "net/mp_socket_pool.h"

// The caller holds the stateLock of the record. After any of these the record may be another's.
class MP_SocketCore {
 public:
  MP_SocketCore(MP_SocketPool* pool, platform::CompletionPort* port, MP_ConnectQueue* connectQueue)
      : pool_(pool), port_(port), connectQueue_(connectQueue) {}

  MP_SocketPool* pool() const { return pool_; }
  platform::CompletionPort* port() const { return port_; }

  // Gives a record a socket, which is added to the port. False, with the socket closed, on
  // failure.
  bool TakeSocket(MP_SocketItem* item, int socket, platform::PortSocket kind);

  // The next read.
  void ResetReadOp(MP_SocketItem* item, platform::PortReadAfter after);

  // A connection, or an attempt to make one, has ended: `result` is after how many milliseconds to
  // try again, below 0 never.
  void AfterFailure(MP_SocketItem* item, int result);

  // The same, after the handler has been told and asked. `thrown` is logged if the handler throws.
  void ConnectFailed(MP_SocketItem* item, int error, const char* thrown = nullptr);
  void Disconnected(MP_SocketItem* item, int error) { Disconnected(item, error, nullptr); }

  // A read has failed.
  void TransferFailed(MP_SocketItem* item, int error);

 private:
  // `thrown` is logged if the handler throws.
  void Disconnected(MP_SocketItem* item, int error, const char* thrown);

  MP_SocketPool* const pool_;
  platform::CompletionPort* const port_;
  MP_ConnectQueue* const connectQueue_;
};

#endif  // KALVOBASE_SRC_NET_MP_SOCKET_CORE_H_
