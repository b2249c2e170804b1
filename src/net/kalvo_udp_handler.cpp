#include "net/mp_udp_port.h"

Kalvo_UdpHandler::Kalvo_UdpHandler() : impl_(new MP_UdpPort) {}
Kalvo_UdpHandler::Kalvo_UdpHandler(const Kalvo_UdpHandler& other) = default;
Kalvo_UdpHandler& Kalvo_UdpHandler::operator=(const Kalvo_UdpHandler& other) = default;
Kalvo_UdpHandler::~Kalvo_UdpHandler() { delete impl_; }

unsigned long Kalvo_UdpHandler::Open(const char* host, int port) {
  return impl_->Open(this, host, port, false);
}

unsigned long Kalvo_UdpHandler::OpenBroadCastPort(const char* host, int port) {
  return impl_->Open(this, host, port, true);
}

void Kalvo_UdpHandler::Close() { impl_->Close(); }
Kalvo_SocketAddr* Kalvo_UdpHandler::GetLocalAddr() { return &impl_->localAddr; }

int Kalvo_UdpHandler::SendData(Kalvo_SocketAddr* to, const char* data, int length) {
  return impl_->SendData(to, data, length);
}

int Kalvo_UdpHandler::Printf(Kalvo_SocketAddr* to, const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int result = impl_->Print(to, format, args);
  va_end(args);
  return result;
}

int Kalvo_UdpHandler::vPrintf(Kalvo_SocketAddr* to, const char* format, va_list args) {
  return impl_->Print(to, format, args);
}

void Kalvo_UdpHandler::EnableBroadcast(int on) { impl_->EnableBroadcast(on); }
void Kalvo_UdpHandler::AddBroadcastGroup(const char* address, int) { impl_->AddGroup(address); }
void Kalvo_UdpHandler::ExitBroadcastGroup(const char*) { impl_->LeaveGroup(); }
