// MP_SocketAddr: what is behind a Kalvo_SocketAddr.

#ifndef KALVOBASE_SRC_NET_MP_SOCKET_ADDR_H_
#define KALVOBASE_SRC_NET_MP_SOCKET_ADDR_H_

#include <memory>

#include "kalvobase/socket.h"

class MP_SocketAddr {
 public:
  static MP_SocketAddr& Of(const Kalvo_SocketAddr& addr) { return *addr.impl_; }

  MP_SocketAddr() = default;
  MP_SocketAddr(const MP_SocketAddr& other) { *this = other; }
  MP_SocketAddr& operator=(const MP_SocketAddr& other);

  void Resolve(const char* host, int port);
  void Take(const void* address, int length);
  void Reset();
  void ReInit();
  void SetPort(int port);
  bool IsSameHost(const char* host);
  bool Equals(const MP_SocketAddr& other) const;

  bool empty() const { return block_ == nullptr; }
  const char* text() const { return text_; }
  int port() const { return port_; }
  addrinfo* info() { return empty() ? nullptr : &record_; }

  // For the system's calls. None of these may be used on an empty address.
  int family() const { return record_.ai_family; }
  char* bytes() const { return block_.get(); }
  int room() const { return blockSize_; }
  int length() const;

  // The four bytes of an IPv4 host; null if this is none, or stands for all.
  const char* internetBytes() const;

  // Whether this is an IPv4 multicast group.
  bool isGroup() const;

  // The same port at all addresses. Nothing happens to one that is not IPv4.
  void Widen();

  // Somebody wrote an address of `length` bytes, of whatever family; 0 if none.
  void Written(int length);

 private:
  void TakeFamily();
  static bool SameHost(const addrinfo& a, const addrinfo& b);

  addrinfo record_ = {};
  std::unique_ptr<char[]> block_;  // null while empty
  int blockSize_ = 0;
  int port_ = 0;
  char text_[16] = "";
};

#endif  // KALVOBASE_SRC_NET_MP_SOCKET_ADDR_H_
