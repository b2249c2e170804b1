// MP_TcpServer: what is behind a Kalvo_TcpServerHandler.

#ifndef KALVOBASE_SRC_NET_MP_TCP_SERVER_H_
#define KALVOBASE_SRC_NET_MP_TCP_SERVER_H_

#include <cstdint>

#include "kalvobase/handler.h"
#include "net/engine_call.h"

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
  bool HasEngine() const { return MP_EngineCall(engine_).engine() != nullptr; }

  std::uint32_t id_ = 0;
  MP_EngineRef engine_;  // its own
  bool busy_ = true;     // until Close, when another server may take it
};

#endif  // KALVOBASE_SRC_NET_MP_TCP_SERVER_H_
