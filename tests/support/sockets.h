// A listener on a port of its own, and what it accepts.

#ifndef KALVOBASE_TESTS_SUPPORT_SOCKETS_H_
#define KALVOBASE_TESTS_SUPPORT_SOCKETS_H_

#include <sys/socket.h>
#include <unistd.h>

#include "kalvobase/socket.h"

namespace support {

class Listener {
 public:
  explicit Listener(const char* host = "127.0.0.1") {
    address.Init(host, 0);
    socket_ = Kalvo_SOCK_OpenTcpForAddr(&address, 1);
    listen(socket_, 16);
    getsockname(socket_, address.GetInfo()->ai_addr, &address.GetInfo()->ai_addrlen);
    address.ReInit();
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() { Close(); }

  int Accept() { return accept(socket_, nullptr, nullptr); }
  int socket() const { return socket_; }
  int port() { return address.GetPort(); }
  void Close() {
    if (socket_ >= 0) close(socket_);
    socket_ = -1;
  }

  Kalvo_SocketAddr address;

 private:
  int socket_ = -1;
};

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_SOCKETS_H_
