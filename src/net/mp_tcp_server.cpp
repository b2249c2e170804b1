#include "net/mp_tcp_server.h"

#include "net/socket_managers.h"

MP_TcpServer::MP_TcpServer() : engine_(socket_managers::GetManager(MANAGER_SERVER)) {}

unsigned long MP_TcpServer::Listen(Kalvo_TcpServerHandler* handler, const char* host, int port) {
  if (id_ != 0) return 0;
  if (!HasEngine()) engine_ = MP_EngineRef(socket_managers::GetManager(MANAGER_SERVER));
  const MP_EngineCall call(engine_);
  if (call.engine() == nullptr) return 0;
  localAddr.Init(host, port);
  call.engine()->SetBusy(true);
  busy_ = true;
  id_ = static_cast<std::uint32_t>(call.engine()->Listen(handler));
  return id_;
}

void MP_TcpServer::Close() {
  const MP_EngineCall call(engine_);
  if (call.engine() != nullptr) {
    if (busy_) call.engine()->SetBusy(false);
    if (id_ != 0) call.engine()->Close(id_);
  }
  busy_ = false;
  id_ = 0;
}
