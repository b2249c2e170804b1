// MP_SocketItem: all that the engine knows of one socket, whatever its kind.

#ifndef KALVOBASE_SRC_NET_MP_SOCKET_ITEM_H_
#define KALVOBASE_SRC_NET_MP_SOCKET_ITEM_H_

#include <atomic>
#include <cstdint>
#include <memory>

#include "concurrency/mp_lock.h"
#include "kalvobase/handler.h"
#include "kalvobase/queue.h"
#include "net/mp_send_queue.h"
#include "platform/completion_port.h"

enum SocketKind : int {
  SOCK_KIND_FREE = 0,
  SOCK_KIND_TCP = 1,
  SOCK_KIND_LISTEN = 2,
  SOCK_KIND_UDP = 3,
};

class MP_SocketItem;

// A record, and the id under which it waits for a client.
struct MP_PendingAccept {
  MP_SocketItem* item = nullptr;
  std::uint32_t id = 0;
};

// A record lives as long as its pool and serves one socket after the other, so a pointer to one
// is always good; whether it still serves the same socket is told by the id.
//
// Two recursive locks guard it. stateLock is held across every change of state and every call of
// the handler; sendLock across all that is about sending, which takes no stateLock, so that
// sending does not wait for a call of the handler. They are taken in this order. The locks of the
// pool, of the connect queue, of the acceptor and of the port are innermost. While it
// holds the stateLock of a record, the engine takes that of a new one, of an earlier connection of
// the handler that it gives to the new one, and of the other socket of a UDP port; all of these are
// called on the same thread. A host does the same, when it closes one connection in a call of
// another.
class MP_SocketItem : public Kalvo_QueueObject {
 public:
  static constexpr std::uint32_t kGenerationMask = 0xFFFF;
  static constexpr int kReadBufferSize = 2048;

  MP_SocketItem();

  bool IsIdle() const { return (id & kGenerationMask) == 0; }

  // Nobody gets what was received any more.
  void DropInput() {
    readBufferCount = 0;
    leftBehind.reset();
    ahead = nullptr;
    holdsMore = false;
    receivesMuch = false;
  }

  Kalvo_TcpClientHandler* client() const { return static_cast<Kalvo_TcpClientHandler*>(handler); }

  // Bits 31 to 16: the place in the pool. Bits 15 to 0: the generation, 0 while the record is
  // idle. The pool sets it.
  std::atomic<std::uint32_t> id{0};

  MP_Lock stateLock;
  MP_Lock sendLock;

  // --- Changed under both locks, and read under one of them -----------------------------

  int type = SOCK_KIND_FREE;
  int socket = -1;
  platform::PortTag tag = 0;  // of the socket, at the port
  bool connected = false;
  Kalvo_SocketAddr* peerAddr = nullptr;  // the handler's, or in ownAddresses

  // --- Under stateLock --------------------------------------------------------------------

  Kalvo_SocketHandlerObj* handler;        // never null: an idle record has one that does nothing
  Kalvo_SocketAddr* bindAddr = nullptr;   // the handler's; null: bound to none
  Kalvo_SocketAddr* localAddr = nullptr;  // as peerAddr
  bool reconnect = false;                 // the host made the connection

  // What the handler has declined so far, in readBuffer.
  int readBufferCount = 0;

  // What was received beyond what the handler took. It has not seen these bytes yet.
  std::unique_ptr<char[]> leftBehind;  // null: none
  int leftBehindAt = 0;
  int leftBehindCount = 0;

  // What ReceiveAhead gave; null: it was not asked, or its answer was taken.
  const char* ahead = nullptr;
  std::int64_t aheadCount = 0;
  int aheadError = 0;

  // The socket held more than was taken.
  bool holdsMore = false;

  // Of a stream: much came the last time, more than it pays to receive before the handler has room
  // for it.
  bool receivesMuch = false;

  // Of a datagram socket: only what is sent to groups or as a broadcast counts.
  bool ofGroups = false;

  // Of a datagram socket: how many datagrams to go before looking for another right behind one.
  int datagramsToGo = 0;

  // --- Under sendLock ---------------------------------------------------------------------

  MP_SendQueue sends;
  std::uint32_t lastSendTick = 0;  // of the last write; 0 until the first
  int sendError = 0;               // why one failed: nothing is sent after that

  // --- Of accepts -------------------------------------------------------------------------

  // Of an accept that waits, under its stateLock: the listener and the place in what that has.
  MP_SocketItem* acceptOwner = nullptr;
  std::uint32_t acceptOwnerId = 0;
  int acceptIndex = -1;  // -1: this is none

  // Of a listener, under the acceptor's lock.
  std::unique_ptr<MP_PendingAccept[]> pendingAccepts;

  // --- Under the lock of the connect queue --------------------------------------------------

  int connectDelay = 0;           // milliseconds behind the record ahead
  std::uint32_t connectTurn = 0;  // the pass after which it was put in

  // --- Under stateLock, and seldom used: so it lies behind what is always used -------------------

  // Of a connection whose handler serves others, too. Kept when the connection ends, since a call
  // of the handler may still use them.
  struct Addresses {
    Kalvo_SocketAddr local;
    Kalvo_SocketAddr peer;
  };
  std::unique_ptr<Addresses> ownAddresses;

  char readBuffer[kReadBufferSize];
};

// Both locks of a record.
class MP_SocketItemGuard {
 public:
  explicit MP_SocketItemGuard(MP_SocketItem* item)
      : state_(&item->stateLock), send_(&item->sendLock) {}

 private:
  const MP_Guard state_;
  const MP_Guard send_;
};

#endif  // KALVOBASE_SRC_NET_MP_SOCKET_ITEM_H_
