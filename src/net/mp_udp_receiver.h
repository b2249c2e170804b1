// MP_UdpReceiver: the engine's side of the UDP ports.

#ifndef KALVOBASE_SRC_NET_MP_UDP_RECEIVER_H_
#define KALVOBASE_SRC_NET_MP_UDP_RECEIVER_H_

#include <cstdint>

#include "net/mp_socket_core.h"

class MP_UdpPort;

class MP_UdpReceiver {
 public:
  explicit MP_UdpReceiver(MP_SocketCore* core) : core_(core) {}

  // The id of the port; 0 on failure.
  std::uint32_t OpenUdp(Kalvo_UdpHandler* handler, bool broadcast);

  // A datagram may have come, on the transfer thread. The caller holds the stateLock.
  void ProcessUdpRead(MP_SocketItem* item);

  // The same, after a datagram was lost to an exception.
  void GoOn(MP_SocketItem* item);

 private:
  static constexpr std::uint32_t kRefusedMs = 1;
  static constexpr int kLargestDatagram = 65536;
  static constexpr int kLookAgain = 16;

  platform::PortTag Add(Kalvo_UdpHandler* handler, int socket, bool ofGroups);
  void EndPort(MP_UdpPort* port);

  // Starts the read behind a datagram. Often another has come, so it is looked for at once.
  void Next(MP_SocketItem* item);

  // A datagram is received before the handler is asked where to put it, which saves asking the
  // system how large it is. One that the handler does not want yet stays with the record.
  std::int64_t Look(MP_SocketItem* item, const char** datagram);
  void LeaveBehind(MP_SocketItem* item, const char* datagram, int size);

  MP_SocketCore* const core_;

  // Of the transfer thread.
  Kalvo_SocketAddr scratchAddr_;
  char received_[kLargestDatagram];
};

#endif  // KALVOBASE_SRC_NET_MP_UDP_RECEIVER_H_
