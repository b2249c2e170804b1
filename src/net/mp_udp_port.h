// MP_UdpPort: what is behind a Kalvo_UdpHandler. Sending is its own, receiving the engine's.

#ifndef KALVOBASE_SRC_NET_MP_UDP_PORT_H_
#define KALVOBASE_SRC_NET_MP_UDP_PORT_H_

#include <atomic>
#include <cstdarg>
#include <cstdint>

#include "kalvobase/handler.h"
#include "net/engine_call.h"

class MP_UdpPort {
 public:
  static MP_UdpPort& Of(Kalvo_UdpHandler& handler) { return *handler.impl_; }

  MP_UdpPort();
  MP_UdpPort(const MP_UdpPort&) = delete;
  MP_UdpPort& operator=(const MP_UdpPort&) = delete;
  ~MP_UdpPort() { Close(); }

  unsigned long Open(Kalvo_UdpHandler* handler, const char* host, int port, bool broadcast);
  void Close();
  int SendData(Kalvo_SocketAddr* to, const char* data, int length);
  int Print(Kalvo_SocketAddr* to, const char* format, va_list args);
  void EnableBroadcast(int on);
  void AddGroup(const char* address);
  void LeaveGroup();

  // For the engine. Whether the port has an address of its own from the start.
  bool isBound() const { return bound_; }
  void SetId(std::uint32_t id) { id_ = id; }
  void SetGroupId(std::uint32_t id) { groupId_ = id; }
  std::uint32_t id() const { return id_; }
  std::uint32_t groupId() const { return groupId_; }

  // The IPv4 address that the port was opened on, four bytes. Null for a port on all addresses, and
  // for one that was opened on a group.
  const char* OwnAddress() const;

  Kalvo_SocketAddr localAddr;
  std::atomic<int> socket{-1};  // these two are the engine's, which closes them

  // Of a port for groups on an address of its own: a socket bound to that address gets nothing of
  // groups and no broadcasts, so these come here. -1 for any other port.
  std::atomic<int> groupSocket{-1};

  std::atomic<bool> receives{true};  // until OnDataOk ends it

 private:
  int GroupSocket() const { return groupSocket >= 0 ? groupSocket : socket; }
  bool HasEngine() const { return MP_EngineCall(engine_).engine() != nullptr; }

  std::atomic<std::uint32_t> id_{0};
  std::atomic<std::uint32_t> groupId_{0};
  bool bound_ = false;
  MP_EngineRef engine_;

  // The group that was joined last, as an IPv4 address.
  bool inGroup_ = false;
  char group_[4] = {};
};

#endif  // KALVOBASE_SRC_NET_MP_UDP_PORT_H_
