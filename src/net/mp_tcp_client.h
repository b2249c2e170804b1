// MP_TcpClient: what is behind a Kalvo_TcpClientHandler.

#ifndef KALVOBASE_SRC_NET_MP_TCP_CLIENT_H_
#define KALVOBASE_SRC_NET_MP_TCP_CLIENT_H_

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <vector>

#include "concurrency/mp_lock.h"
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

  // Before a connection that the engine accepted is given to the handler: those that the same
  // engine accepted before go on. False if the handler has a connection of another kind, whose
  // calls would come from another thread. Throws std::bad_alloc if there is no memory to keep the
  // earlier one.
  bool Reserve(MP_SocketManager* engine, const Kalvo_SocketAddr& local,
               const Kalvo_SocketAddr& peer);

  // From here on the handler's operations are for this connection.
  void Adopt(std::uint32_t id);

  Kalvo_SocketAddr peerAddr;
  Kalvo_SocketAddr localAddr;

 private:
  int SendBytes(std::uint32_t id, const char* data, int length);
  void CloseCurrent(std::uint32_t id);
  bool ReserveFor(MP_SocketManager* engine);
  void SetReserved(bool reserved);
  void KeepEarlier(MP_SocketManager* engine, std::uint32_t id);
  std::vector<std::uint32_t> TakeEarlier();

  std::atomic<std::uint32_t> id_{0};            // stays when the connection has ended, until Close
  MP_Lock lock_;                                // guards these three; innermost
  bool reserved_ = false;                       // from Reserve to Adopt
  std::uint32_t forks_;                         // of the process, when lock_ was last sound
  std::vector<std::uint32_t> earlier_;          // accepted before the one of id_; some have ended
  bool bound_ = false;                          // connections come from localAddr
  MP_EngineRef engine_;                         // the library's, from the first Connect on
  Kalvo_SocketManagerHelper* hosts_ = nullptr;  // one of the host's in its place
};

#endif  // KALVOBASE_SRC_NET_MP_TCP_CLIENT_H_
