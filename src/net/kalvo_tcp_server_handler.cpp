#include "net/mp_tcp_server.h"

Kalvo_TcpServerHandler::Kalvo_TcpServerHandler() : impl_(new MP_TcpServer) {}
Kalvo_TcpServerHandler::Kalvo_TcpServerHandler(const Kalvo_TcpServerHandler& other) = default;
Kalvo_TcpServerHandler& Kalvo_TcpServerHandler::operator=(const Kalvo_TcpServerHandler& other) =
    default;
Kalvo_TcpServerHandler::~Kalvo_TcpServerHandler() { delete impl_; }

unsigned long Kalvo_TcpServerHandler::Listen(const char* host, int port) {
  return impl_->Listen(this, host, port);
}

void Kalvo_TcpServerHandler::Close() { impl_->Close(); }
Kalvo_SocketAddr* Kalvo_TcpServerHandler::GetLocalAddr() { return &impl_->localAddr; }
void* Kalvo_TcpServerHandler::AllocBufferForRead(long&) { return nullptr; }
