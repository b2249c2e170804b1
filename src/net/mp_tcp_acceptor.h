// MP_TcpAcceptor: the listeners, and the connections that they accept.

#ifndef KALVOBASE_SRC_NET_MP_TCP_ACCEPTOR_H_
#define KALVOBASE_SRC_NET_MP_TCP_ACCEPTOR_H_

#include <cstdint>

#include "net/mp_socket_core.h"

class MP_SocketManager;

// Each listener has accepts waiting, which are records without a socket of their own.
class MP_TcpAcceptor {
 public:
  // `manager` is the one that the accepted handlers get.
  MP_TcpAcceptor(MP_SocketCore* core, MP_SocketManager* manager) : core_(core), manager_(manager) {}

  // The id of the listener; 0 on failure.
  std::uint32_t Listen(Kalvo_TcpServerHandler* handler);

  // A client has come, on the transfer thread. The caller holds the stateLock of the accept.
  void ProcessAccept(MP_SocketItem* item, const platform::Completion& accepted);

  // Closes the socket of a client that was not served, and waits for the next. The caller holds the
  // stateLock of the accept.
  void Refuse(MP_SocketItem* item, const platform::Completion& accepted);

  // What waits for a listener, to be freed once the listener is. The caller holds its stateLock.
  std::unique_ptr<MP_PendingAccept[]> TakeAccepts(MP_SocketItem* listener);

  // The caller holds no lock of a record, but for that of a call of a handler from which it closes
  // the listener.
  void FreeAccepts(std::unique_ptr<MP_PendingAccept[]> accepts);

 private:
  static constexpr int kPendingAccepts = 512;

  // What a waiting accept must know of its listener.
  struct Listener {
    MP_SocketItem* item;
    std::uint32_t id;
    platform::PortTag tag;
    Kalvo_SocketHandlerObj* handler;
    Kalvo_SocketAddr* localAddr;
  };

  bool PostAccept(const Listener& listener, int index);

  MP_SocketCore* const core_;
  MP_SocketManager* const manager_;

  // Guards the listeners' pendingAccepts. Innermost.
  MP_Lock acceptLock_;

  Kalvo_SocketAddr scratchAddr_;  // of the transfer thread
};

#endif  // KALVOBASE_SRC_NET_MP_TCP_ACCEPTOR_H_
