// MP_NullHandler: the handler of idle records, one for the process.

#ifndef KALVOBASE_SRC_NET_MP_NULL_HANDLER_H_
#define KALVOBASE_SRC_NET_MP_NULL_HANDLER_H_

#include "kalvobase/handler.h"

class MP_NullHandler : public Kalvo_TcpClientHandler {
 public:
  // Null if memory ran out.
  static MP_NullHandler* Get();

  // The steps of the library's start and stop.
  static void Make() { Get(); }
  static void Free();

  void* AllocBufferForRead(long&) override { return nullptr; }
  void OnConnectOk(Kalvo_SocketAddr*, int) override {}
  int OnConnectFaild(Kalvo_SocketAddr*, int) override { return -1; }
  int OnDisConnect(Kalvo_SocketAddr*, int) override { return -1; }
  int OnDataOk(void*, long) override { return 0; }
};

#endif  // KALVOBASE_SRC_NET_MP_NULL_HANDLER_H_
