#include "net/mp_tcp_server.h"

#include "net/socket_managers.h"

MP_TcpServer::MP_TcpServer() : manager_(socket_managers::GetManager(MANAGER_SERVER)) {}

unsigned long MP_TcpServer::Listen(Kalvo_TcpServerHandler* handler, const char* host, int port) {
  if (id_ != 0 || manager_ == nullptr) return 0;
  localAddr.Init(host, port);
  manager_->SetBusy(true);
  id_ = static_cast<std::uint32_t>(manager_->Listen(handler));
  return id_;
}

void MP_TcpServer::Close() {
  if (manager_ == nullptr) return;
  manager_->SetBusy(false);
  if (id_ != 0) manager_->Close(id_);
  id_ = 0;
}
