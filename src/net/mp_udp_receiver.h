// MP_UdpReceiver: the engine's side of the UDP ports.

#ifndef KALVOBASE_SRC_NET_MP_UDP_RECEIVER_H_
#define KALVOBASE_SRC_NET_MP_UDP_RECEIVER_H_

#include <cstdint>

#include "net/mp_socket_core.h"

class MP_UdpReceiver {
 public:
  explicit MP_UdpReceiver(MP_SocketCore* core) : core_(core) {}

  // The id of the port; 0 on failure.
  std::uint32_t OpenUdp(Kalvo_UdpHandler* handler, bool broadcast);

  // A datagram may have come, on the transfer thread. The caller holds the stateLock.
  void ProcessUdpRead(MP_SocketItem* item);

 private:
  static constexpr std::uint32_t kRefusedMs = 1;
  static constexpr int kLargestDatagram = 65536;
  static constexpr int kLookAgain = 16;

  // A datagram is received before the handler is asked where to put it, which saves asking the
  // system how large it is. One that the handler does not want yet stays with the record.
  // After a datagram: often there is another, and then the system need not be asked.
  void Next(MP_SocketItem* item);

  std::int64_t Look(MP_SocketItem* item, const char** datagram);
  void LeaveBehind(MP_SocketItem* item, const char* datagram, int size);

  MP_SocketCore* const core_;

  // Of the transfer thread.
  Kalvo_SocketAddr scratchAddr_;
  char received_[kLargestDatagram];
};

#endif  // KALVOBASE_SRC_NET_MP_UDP_RECEIVER_H_
