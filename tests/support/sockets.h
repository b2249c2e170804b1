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

inline bool HasLocalhost() {
  Kalvo_SocketAddr address;
  address.Init("localhost", 1);
  return address.IsSameAddr("127.0.0.1") != 0;
}

// A plain socket that is connected to a port of this machine.
inline int ConnectTo(int port) {
  Kalvo_SocketAddr address;
  address.Init("127.0.0.1", port);
  return Kalvo_SOCK_Connect(&address, -1);
}

// Ends a connection as a crash of the machine would.
inline void Reset(int socket) {
  const linger hard = {1, 0};
  setsockopt(socket, SOL_SOCKET, SO_LINGER, &hard, sizeof(hard));
  close(socket);
}

// A listener that does not answer: its backlog is full.
class DeafListener {
 public:
  DeafListener() {
    listen(listener_.socket(), 0);
    for (int& client : clients_) {
      client = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
      connect(client, listener_.address.GetInfo()->ai_addr, 16);
    }
    usleep(10000);
  }
  ~DeafListener() {
    for (const int client : clients_) close(client);
  }
  int port() { return listener_.port(); }

 private:
  Listener listener_;
  int clients_[3];
};

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_SOCKETS_H_
