// MP_TcpChannel: the reader and the writer of one socket, which share nothing else.

#ifndef KALVOBASE_SRC_NET_MP_TCP_CHANNEL_H_
#define KALVOBASE_SRC_NET_MP_TCP_CHANNEL_H_

#include "files/mp_stream_reader.h"
#include "files/mp_stream_writer.h"

// It closes no socket.
class MP_TcpChannel {
 public:
  MP_TcpChannel() { SetOrderFlag(1); }

  void SetOrderFlag(int flag) {
    reader.SetSource(StreamKind::kSocket, flag);
    writer.SetSink(StreamKind::kSocket, flag);
  }

  void Attach(int socket) {
    reader.Attach(socket);
    writer.Attach(socket);
  }

  void Detach() {
    reader.Detach();
    writer.Detach();
  }

  // For a socket that is being closed, beside threads that read and write. What is unread can
  // still be read.
  void Forget() {
    reader.Forget();
    writer.Forget();
  }
  void WaitUntilUnused() const {
    reader.WaitUntilUnused();
    writer.WaitUntilUnused();
  }

  MP_StreamReader reader;
  MP_StreamWriter writer;
};

#endif  // KALVOBASE_SRC_NET_MP_TCP_CHANNEL_H_
