// MP_TcpConnector: the connections that the host makes.

#ifndef KALVOBASE_SRC_NET_MP_TCP_CONNECTOR_H_
#define KALVOBASE_SRC_NET_MP_TCP_CONNECTOR_H_

#include <cstdint>

#include "net/mp_socket_core.h"
#include "platform/connect_events.h"

class MP_TcpConnector {
 public:
  MP_TcpConnector(MP_SocketCore* core, MP_ConnectQueue* connectQueue)
      : core_(core), connectQueue_(connectQueue) {}

  // The id of the attempt, which comes later; 0 if there are too many.
  std::uint32_t Connect(Kalvo_TcpClientHandler* handler);

  // The connect thread: waits a moment for a connect to come to its end, hands it to the transfer
  // thread, and begins what is due.
  void BeginThread();
  void Step();
  void EndThread();

  // For a child of fork.
  void Abandon() { EndThread(); }

  // A connect has come to its end. The caller holds the stateLock.
  void TakeResult(MP_SocketItem* item);

 private:
  static constexpr int kSlots = 64;
  static constexpr int kWaitMs = 100;

  // A connect that is under way.
  struct MP_ConnectWait {
    MP_SocketItem* item = nullptr;  // null: the slot is empty
    std::uint32_t id = 0;
    int socket = -1;
  };

  void RunConnectQueue();
  void Finished(int slot);
  void Sweep();
  int EmptySlot() const;
  bool Begin(MP_SocketItem* item);
  bool TryConnect(MP_SocketItem* item);
  void GiveUp(MP_SocketItem* item, const char* format);
  void Stands(MP_SocketItem* item);

  MP_SocketCore* const core_;
  MP_ConnectQueue* const connectQueue_;

  // Of the connect thread alone.
  platform::ConnectEvents* events_ = nullptr;
  MP_ConnectWait slots_[kSlots];
  int pending_ = 0;  // slots in use
  std::uint32_t lastTick_ = 0;
  int elapsed_ = 0;  // milliseconds that the queue was not charged with yet
};

#endif  // KALVOBASE_SRC_NET_MP_TCP_CONNECTOR_H_
