// MP_TcpTransfer: the bytes of the connections, both ways.

#ifndef KALVOBASE_SRC_NET_MP_TCP_TRANSFER_H_
#define KALVOBASE_SRC_NET_MP_TCP_TRANSFER_H_

#include <cstdint>

#include "net/mp_socket_core.h"

class MP_TcpTransfer {
 public:
  explicit MP_TcpTransfer(MP_SocketCore* core) : core_(core) {}

  // From any thread. 1: what was given is sent in its turn, or dropped if the connection does not
  // stand yet. 0: there is no such connection, or it is stalled. Send takes the string on 1.
  int Send(std::uint32_t id, Kalvo_String*& data);
  int SendBytes(std::uint32_t id, const char* data, int length);

  // The rest is for the transfer thread, which holds the stateLock.

  // Several connections are received from one after the other before their handlers are called,
  // which is faster than going from one to the next with each. Places count from 0 to below
  // kPlaces; what came stays good until the place is used again.
  static constexpr int kPlaces = 32;
  void ReceiveAhead(MP_SocketItem* item, int place);

  // `bytes` more of what is being sent went out, and there may be room for the next.
  void GoOnSending(MP_SocketItem* item, std::size_t bytes);

  // Something can be read. `ending`: if not, the connection is to end.
  void doReadTcp(MP_SocketItem* item, bool ending);

 private:
  static constexpr int kLongQueue = 1024;
  static constexpr std::uint32_t kStallMs = 12000;

  // What Send has found out under the sendLock.
  enum class Taken { kNothing, kAll, kRest };
  Taken Begin(MP_SocketItem* item, std::uint32_t id, const char* data, std::size_t size,
              std::size_t* sent);
  bool IsStalled(MP_SocketItem* item);
  void SendFailed(MP_SocketItem* item, int error);

  // Bytes that have arrived: those that were received, and those that are still in the socket.
  struct Arrived {
    const char* received = nullptr;
    long receivedCount = 0;
    long waitingCount = 0;
  };

  // So much is received before the handler is asked where to put it, which saves asking the system
  // how much there is and costs a copy.
  static constexpr int kReceiveAhead = 8192;

  std::int64_t Look(MP_SocketItem* item, Arrived* arrived);
  static platform::PortReadAfter After(const MP_SocketItem* item);
  bool Decline(MP_SocketItem* item, Arrived* arrived);
  bool Take(MP_SocketItem* item, Arrived* arrived, char* buffer, long size, const char* warning);
  void LeaveBehind(MP_SocketItem* item, const Arrived& arrived);
  bool DispatchData(MP_SocketItem* item, void* buffer, long size);
  void Violated(MP_SocketItem* item, const char* error);

  MP_SocketCore* const core_;

  // Of the transfer thread; one more for those that come alone.
  char receivedAhead_[kPlaces + 1][kReceiveAhead];
};

#endif  // KALVOBASE_SRC_NET_MP_TCP_TRANSFER_H_
