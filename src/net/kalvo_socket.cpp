#include "net/mp_socket_addr.h"
#include "net/socket_calls.h"

namespace {

MP_SocketAddr* Impl(Kalvo_SocketAddr* address) {
  return address != nullptr ? &MP_SocketAddr::Of(*address) : nullptr;
}

MP_String* Impl(Kalvo_String* string) {
  return string != nullptr ? &MP_String::Of(*string) : nullptr;
}

}  // namespace

extern "C" {

void Kalvo_SOCK_Init() { platform::sockets_start(); }
int Kalvo_SOCK_GetLastError() { return platform::socket_error(); }
void Kalvo_SOCK_SetLastError(int code) { platform::set_socket_error(code); }

int Kalvo_SOCK_OpenUdpForAddr(Kalvo_SocketAddr* addr, int bindIt) {
  return net::Open(Impl(addr), platform::SocketType::kDatagram, bindIt != 0);
}

int Kalvo_SOCK_OpenTcpForAddr(Kalvo_SocketAddr* addr, int bindIt) {
  return net::Open(Impl(addr), platform::SocketType::kStream, bindIt != 0);
}

int Kalvo_SOCK_Close(int sock) { return net::Close(sock); }
int Kalvo_SOCK_Connect(Kalvo_SocketAddr* addr, int sock) { return net::Connect(Impl(addr), sock); }

int Kalvo_SOCK_Wait(int sock, int timeoutMs, int mode) { return net::Wait(sock, timeoutMs, mode); }

int Kalvo_SOCK_Write(int sock, const void* data, int length) {
  return net::Send(sock, data, length);
}

int Kalvo_SOCK_Send(int sock, Kalvo_SocketAddr* to, const char* data, int length) {
  return net::SendTo(sock, Impl(to), data, length);
}

int Kalvo_SOCK_Read(int sock, Kalvo_String* into, int length) {
  return net::Receive(sock, Impl(into), length);
}

int Kalvo_SOCK_RecvFrom(int sock, Kalvo_String* into, Kalvo_SocketAddr* from) {
  return net::ReceiveFrom(sock, Impl(into), Impl(from));
}

int Kalvo_Sock_Opt_Reuse(int sock, int on) { return platform::socket_set_reuse(sock, on); }
int Kalvo_Sock_Opt_BroadCast(int sock, int on) { return platform::socket_set_broadcast(sock, on); }
int Kalvo_Sock_Opt_NoDelay(int sock, int on) { return platform::socket_set_no_delay(sock, on); }

int Kalvo_Sock_Opt_Block(int sock, int blocking) {
  return platform::socket_set_blocking(sock, blocking != 0) == 0 ? 1 : 0;
}

void Kalvo_Sock_Opt_AllError() {}

int Kalvo_GetRoutingInf(Kalvo_SocketAddr* dest, Kalvo_SocketAddr* local) {
  return net::FindRoute(Impl(dest), Impl(local)) ? 1 : 0;
}
}
