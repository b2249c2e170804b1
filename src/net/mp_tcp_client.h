// MP_TcpClient: what is behind a Kalvo_TcpClientHandler.

#ifndef KALVOBASE_SRC_NET_MP_TCP_CLIENT_H_
#define KALVOBASE_SRC_NET_MP_TCP_CLIENT_H_

#include <atomic>
#include <cstdarg>
#include <cstdint>

#include "kalvobase/handler.h"
#include "net/engine_call.h"

class MP_TcpClient {
 public:
  static MP_TcpClient& Of(Kalvo_TcpClientHandler& handler) { return *handler.impl_; }

  MP_TcpClient();
  MP_TcpClient(const MP_TcpClient&) = delete;
  MP_TcpClient& operator=(const MP_TcpClient&) = delete;
  ~MP_TcpClient() { Close(); }

  void InitLocal(const char* host, int port);
  unsigned long Connect(Kalvo_TcpClientHandler* handler, const char* host, int port);
  void Close();
  int SendData(const char* data, int length);
  int SendData(Kalvo_String*& data);
  int Print(const char* format, va_list args);
  void SetManager(Kalvo_SocketManagerHelper* manager);

  // For the engine.
  Kalvo_SocketAddr* bindAddr() { return bound_ ? &localAddr : nullptr; }
  void SetId(std::uint32_t id) { id_ = id; }
  void Adopt(MP_SocketManager* engine, std::uint32_t id);

  Kalvo_SocketAddr peerAddr;
  Kalvo_SocketAddr localAddr;

 private:
  int SendBytes(std::uint32_t id, const char* data, int length);

  std::atomic<std::uint32_t> id_{0};            // stays when the connection has ended, until Close
  bool bound_ = false;                          // connections come from localAddr
  MP_EngineRef engine_;                         // the library's, from the first Connect on
  Kalvo_SocketManagerHelper* hosts_ = nullptr;  // one of the host's in its place
};

#endif  // KALVOBASE_SRC_NET_MP_TCP_CLIENT_H_
