#include "net/mp_tcp_client.h"

Kalvo_TcpClientHandler::Kalvo_TcpClientHandler() : impl_(new MP_TcpClient) {}
Kalvo_TcpClientHandler::Kalvo_TcpClientHandler(const Kalvo_TcpClientHandler& other) = default;
Kalvo_TcpClientHandler& Kalvo_TcpClientHandler::operator=(const Kalvo_TcpClientHandler& other) =
    default;
Kalvo_TcpClientHandler::~Kalvo_TcpClientHandler() { delete impl_; }

void Kalvo_TcpClientHandler::InitLocal(const char* host, int port) { impl_->InitLocal(host, port); }

unsigned long Kalvo_TcpClientHandler::Connect(const char* host, int port) {
  return impl_->Connect(this, host, port);
}

void Kalvo_TcpClientHandler::Close() { impl_->Close(); }
Kalvo_SocketAddr* Kalvo_TcpClientHandler::GetLocalAddr() { return &impl_->localAddr; }
Kalvo_SocketAddr* Kalvo_TcpClientHandler::GetPeerAddr() { return &impl_->peerAddr; }

int Kalvo_TcpClientHandler::SendData(const char* data, int length) {
  return impl_->SendData(data, length);
}

int Kalvo_TcpClientHandler::SendData(Kalvo_String*& data) { return impl_->SendData(data); }

int Kalvo_TcpClientHandler::Printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int result = impl_->Print(format, args);
  va_end(args);
  return result;
}

int Kalvo_TcpClientHandler::vPrintf(const char* format, va_list args) {
  return impl_->Print(format, args);
}

int Kalvo_TcpClientHandler::SetManager(Kalvo_SocketManagerHelper* manager) {
  impl_->SetManager(manager);
  return 1;
}

void Kalvo_TcpClientHandler::OnConnectOk(Kalvo_SocketAddr*, int) {}
int Kalvo_TcpClientHandler::OnConnectFaild(Kalvo_SocketAddr*, int) { return -1; }
int Kalvo_TcpClientHandler::OnDisConnect(Kalvo_SocketAddr*, int) { return -1; }
int Kalvo_TcpClientHandler::OnDataOk(void*, long) { return 0; }
