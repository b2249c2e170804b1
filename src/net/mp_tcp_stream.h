// MP_TcpStream: what is behind a Kalvo_TcpStream, the life of its connection. Reading and
// writing are the channel's.

#ifndef KALVOBASE_SRC_NET_MP_TCP_STREAM_H_
#define KALVOBASE_SRC_NET_MP_TCP_STREAM_H_

#include "kalvobase/socket.h"
#include "net/mp_tcp_channel.h"

class MP_TcpStream {
 public:
  MP_TcpStream();
  MP_TcpStream(const MP_TcpStream&) = delete;
  MP_TcpStream& operator=(const MP_TcpStream&) = delete;
  ~MP_TcpStream() { DisConnect(); }

  int Connect(const char* host, int port);
  void DisConnect();
  void Attach(int socket);
  void Detach() { channel_.Detach(); }
  void CloseSocket(int socket);
  int socket() const { return socket_; }

  MP_StreamReader& reader() { return channel_.reader; }
  MP_StreamWriter& writer() { return channel_.writer; }
  void SetOrderFlag(int flag) { channel_.SetOrderFlag(flag); }

  Kalvo_SocketAddr localAddr;
  Kalvo_SocketAddr peerAddr;
  void* privateData = nullptr;

 private:
  bool connected_ = false;
  bool ownsSocket_ = false;
  bool closed_ = false;  // by CloseSocket
  int socket_ = -1;
  MP_TcpChannel channel_;
};

#endif  // KALVOBASE_SRC_NET_MP_TCP_STREAM_H_
