#include "net/mp_socket_addr.h"

Kalvo_SocketAddr::Kalvo_SocketAddr() : impl_(new MP_SocketAddr) {}

Kalvo_SocketAddr::Kalvo_SocketAddr(const Kalvo_SocketAddr& other)
    : impl_(new MP_SocketAddr(*other.impl_)) {}

Kalvo_SocketAddr& Kalvo_SocketAddr::operator=(const Kalvo_SocketAddr& other) {
  *impl_ = *other.impl_;
  return *this;
}

Kalvo_SocketAddr::~Kalvo_SocketAddr() { delete impl_; }

int Kalvo_SocketAddr::Init(const char* host, int port) {
  impl_->Resolve(host, port);
  return 1;
}

int Kalvo_SocketAddr::Init(struct sockaddr* addr, int length) {
  impl_->Take(addr, length);
  return 1;
}

void Kalvo_SocketAddr::Reset() { impl_->Reset(); }
void Kalvo_SocketAddr::ReInit() { impl_->ReInit(); }
int Kalvo_SocketAddr::IsSameAddr(const char* host) { return impl_->IsSameHost(host) ? 1 : 0; }
const char* Kalvo_SocketAddr::GetAddr() { return impl_->text(); }
int Kalvo_SocketAddr::GetPort() { return impl_->port(); }
struct addrinfo* Kalvo_SocketAddr::GetInfo() {
  return impl_->info();
}

int operator==(const Kalvo_SocketAddr& a, const Kalvo_SocketAddr& b) {
  return MP_SocketAddr::Of(a).Equals(MP_SocketAddr::Of(b)) ? 1 : 0;
}
