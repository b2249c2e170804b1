#include "net/mp_tcp_stream.h"

#include "net/socket_calls.h"

MP_TcpStream::MP_TcpStream() { platform::sockets_start(); }

int MP_TcpStream::Connect(const char* host, int port) {
  if (host == nullptr) {
    platform::set_socket_error(platform::kSocketInvalid);
    return -1;
  }
  MP_SocketAddr& peer = MP_SocketAddr::Of(peerAddr);
  if (connected_) {
    if (peer.IsSameHost(host) && port == peer.port()) return 1;
    DisConnect();
  }
  peer.Resolve(host, port);
  const int socket = net::Connect(&peer, -1);
  if (socket < 0) return -1;
  MP_SocketAddr& local = MP_SocketAddr::Of(localAddr);
  local = peer;  // an address of the right family, to be overwritten
  net::TakeName(socket, &local);
  connected_ = true;
  socket_ = socket;
  ownsSocket_ = true;
  channel_.Attach(socket);
  return socket;
}

void MP_TcpStream::DisConnect() {
  channel_.Detach();
  if (ownsSocket_) net::Close(socket_);
  socket_ = -1;
  connected_ = false;
  ownsSocket_ = false;
  closed_ = false;
}

void MP_TcpStream::Attach(int socket) {
  if (socket == socket_) ownsSocket_ = false;  // it is the caller's from now on
  DisConnect();
  socket_ = socket;
  channel_.Attach(socket);
  platform::socket_set_no_delay(socket, 1);
  connected_ = true;

  // An address of any family has room for one of any other.
  MP_SocketAddr& local = MP_SocketAddr::Of(localAddr);
  MP_SocketAddr& peer = MP_SocketAddr::Of(peerAddr);
  local.Reset();
  peer.Reset();
  MP_SocketAddr found;
  found.Resolve(nullptr, 0);
  if (!net::TakePeer(socket, &found)) return;
  found.Take(found.bytes(), found.length());  // with its own family
  if (found.family() != platform::kInternet && found.family() != platform::kInternet6) return;
  peer = found;
  local = found;
  net::TakeName(socket, &local);
}

// The number of a closed socket may soon be another's: neither reader nor writer uses it any
// more, and it is not closed a second time. A thread that waits in one of them is woken.
void MP_TcpStream::CloseSocket(int socket) {
  const int closing = socket == -1 && !closed_ ? socket_ : socket;
  if (closing < 0) return;
  if (closing == socket_) {
    closed_ = true;
    ownsSocket_ = false;
    channel_.Forget();
    platform::socket_shutdown(closing);
    channel_.WaitUntilUnused();
  }
  net::Close(closing);
}
