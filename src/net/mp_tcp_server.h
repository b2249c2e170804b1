// MP_TcpServer: what is behind a Kalvo_TcpServerHandler.

#ifndef KALVOBASE_SRC_NET_MP_TCP_SERVER_H_
#define KALVOBASE_SRC_NET_MP_TCP_SERVER_H_

#include <cstdint>

#include "kalvobase/handler.h"

class MP_TcpServer {
 public:
  static MP_TcpServer& Of(Kalvo_TcpServerHandler& handler) { return *handler.impl_; }

  MP_TcpServer();
  MP_TcpServer(const MP_TcpServer&) = delete;
  MP_TcpServer& operator=(const MP_TcpServer&) = delete;
  ~MP_TcpServer() { Close(); }

  unsigned long Listen(Kalvo_TcpServerHandler* handler, const char* host, int port);
  void Close();

  Kalvo_SocketAddr localAddr;

 private:
  std::uint32_t id_ = 0;
  Kalvo_SocketManagerHelper* const manager_;  // null if memory ran out
};

#endif  // KALVOBASE_SRC_NET_MP_TCP_SERVER_H_
