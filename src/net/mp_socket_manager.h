// MP_SocketManager: the engine behind the handlers. One port, one thread that drains it and makes
// nearly all calls, one that connects.

#ifndef KALVOBASE_SRC_NET_MP_SOCKET_MANAGER_H_
#define KALVOBASE_SRC_NET_MP_SOCKET_MANAGER_H_

#include <atomic>
#include <memory>

#include "kalvobase/handler.h"
#include "kalvobase/thread.h"
#include "net/mp_tcp_acceptor.h"
#include "net/mp_tcp_connector.h"
#include "net/mp_tcp_transfer.h"
#include "net/mp_udp_receiver.h"

enum SocketManagerKind : int { MANAGER_SHARED = 1, MANAGER_SERVER = 2 };

class MP_SocketManager : public Kalvo_SocketManagerHelper {
 public:
  MP_SocketManager();
  MP_SocketManager(const MP_SocketManager&) = delete;
  MP_SocketManager& operator=(const MP_SocketManager&) = delete;

  // Nobody uses the manager any more.
  ~MP_SocketManager() override;

  unsigned long Connect(Kalvo_TcpClientHandler* handler) override;
  unsigned long Listen(Kalvo_TcpServerHandler* handler) override;
  unsigned long OpenUdp(Kalvo_UdpHandler* handler, bool broadcast) override;
  void Close(unsigned long id) override;
  int Send(unsigned long id, Kalvo_String*& data) override;
  void StopThreads() override;
  bool GetBusy() override { return busy_; }
  void SetBusy(bool busy) override { busy_ = busy; }
  int GetKind() override { return kind_; }
  void SetKind(int kind) override { kind_ = kind; }

  // As Send, of bytes that stay the caller's. A `length` of 0 sends nothing and gives 1.
  int SendBytes(unsigned long id, const char* data, int length);

  // False if no connection has this id any more.
  bool IsOpen(std::uint32_t id) const { return pool_.Find(id) != nullptr; }

  // True for a connection, or an attempt, that the handler began by Connect.
  bool IsMadeByHost(std::uint32_t id) const;

  // Closes a connection of this handler. Does nothing if the id is another handler's by now.
  void CloseOf(const MP_TcpClient* client, std::uint32_t id);

  // The handler's addresses are about to become those of another connection: one that uses them
  // gets copies of its own. False if it has ended.
  bool KeepAddresses(std::uint32_t id, const Kalvo_SocketAddr* local, const Kalvo_SocketAddr* peer);

  // The one that was made after this.
  MP_SocketManager* next() const { return next_; }
  void SetNext(MP_SocketManager* next) { next_ = next; }

  // False if the system has refused what it needs.
  bool IsSound() const { return port_ != nullptr; }

  // Tells the threads to end, and does not wait.
  void NotifyQuit();

  // For a child of fork: from now on there are neither threads nor sockets.
  void Abandon();

 private:
  static unsigned long SockTranferWorkThread(void* self);
  static unsigned long SockConnectWorkThread(void* self);

  void Transfer();
  void LookAhead(int count);
  void Dispatch(const platform::Completion& completion);
  bool IsOf(const MP_SocketItem* item, const platform::Completion& completion) const;
  void Handle(MP_SocketItem* item, const platform::Completion& completion);
  bool TakeNext(platform::Completion* completion);
  void EndAfterException(const platform::Completion& completion);

  platform::CompletionPort* const port_;
  MP_ConnectQueue connectQueue_;
  MP_SocketPool pool_;
  MP_SocketCore core_;
  MP_TcpConnector connector_;
  MP_TcpAcceptor acceptor_;
  MP_TcpTransfer transfer_;
  MP_UdpReceiver udp_;
  platform::Completion completions_[MP_TcpTransfer::kPlaces];  // of the transfer thread
  std::unique_ptr<Kalvo_Thread> transferThread_;
  std::unique_ptr<Kalvo_Thread> connectThread_;
  MP_SocketManager* next_ = nullptr;
  std::atomic<bool> quitting_{false};
  bool stopped_ = false;
  std::atomic<bool> busy_{false};
  std::atomic<int> kind_{MANAGER_SHARED};
};

#endif  // KALVOBASE_SRC_NET_MP_SOCKET_MANAGER_H_
