#include "net/mp_socket_manager.h"

#include "frame/mp_kernel_debug.h"
#include "net/handler_call.h"
#include "net/mp_tcp_client.h"
#include "platform/socket.h"
#include "platform/thread.h"

namespace {

// For exceptions of the engine itself; those of handlers are logged where the handler is called.
// The callback of the host may throw for the same reason.
void TellOfException() {
  net::CallHandler([] {
    Kalvo_KernelDebugLog(kernel_debug::kError, "<error> exception in the socket engine!!");
  });
}

}  // namespace

MP_SocketManager::MP_SocketManager()
    : port_(platform::port_create()),
      pool_(port_, &connectQueue_),
      core_(&pool_, port_, &connectQueue_),
      connector_(&core_, &connectQueue_),
      acceptor_(&core_, this),
      transfer_(&core_),
      udp_(&core_) {
  Kalvo_SOCK_Init();
  if (port_ == nullptr) return;
  const platform::SignalsBlocked quiet;
  transferThread_ = std::make_unique<Kalvo_Thread>(SockTranferWorkThread, this, 0,
                                                   "SockTranferWorkThread", nullptr, 0);
  connectThread_ = std::make_unique<Kalvo_Thread>(SockConnectWorkThread, this, 0,
                                                  "SockConnectWorkThread", nullptr, 0);
  transferThread_->Resume();
  connectThread_->Resume();
}

MP_SocketManager::~MP_SocketManager() {
  if (!stopped_) MP_SocketManager::StopThreads();
  platform::port_destroy(port_);
}

void MP_SocketManager::NotifyQuit() {
  quitting_ = true;
  if (transferThread_ != nullptr) transferThread_->NotifyQuit();
  if (connectThread_ != nullptr) connectThread_->NotifyQuit();
}

void MP_SocketManager::StopThreads() {
  stopped_ = true;
  NotifyQuit();  // so that they end at the same time
  for (std::unique_ptr<Kalvo_Thread>* thread : {&transferThread_, &connectThread_}) {
    if (*thread != nullptr) (*thread)->Stop();
    thread->reset();
  }
}

void MP_SocketManager::Abandon() {
  pool_.Abandon();
  platform::port_abandon(port_);
  connector_.Abandon();
}

// --- From any thread ------------------------------------------------------------------

unsigned long MP_SocketManager::Connect(Kalvo_TcpClientHandler* handler) {
  return connector_.Connect(handler);
}

unsigned long MP_SocketManager::Listen(Kalvo_TcpServerHandler* handler) {
  return acceptor_.Listen(handler);
}

unsigned long MP_SocketManager::OpenUdp(Kalvo_UdpHandler* handler, bool broadcast) {
  return udp_.OpenUdp(handler, broadcast);
}

void MP_SocketManager::Close(unsigned long id) {
  const auto id32 = static_cast<std::uint32_t>(id);
  MP_SocketItem* const item = pool_.Find(id32);
  if (item == nullptr) return;
  std::unique_ptr<MP_PendingAccept[]> accepts;
  {
    const MP_Guard guard(&item->stateLock);
    if (item->id != id32) return;
    accepts = acceptor_.TakeAccepts(item);
    pool_.Free(item);
  }
  if (accepts != nullptr) acceptor_.FreeAccepts(std::move(accepts));
}

int MP_SocketManager::Send(unsigned long id, Kalvo_String*& data) {
  return transfer_.Send(static_cast<std::uint32_t>(id), data);
}

int MP_SocketManager::SendBytes(unsigned long id, const char* data, int length) {
  return transfer_.SendBytes(static_cast<std::uint32_t>(id), data, length);
}

bool MP_SocketManager::IsMadeByHost(std::uint32_t id) const {
  MP_SocketItem* const item = pool_.Find(id);
  if (item == nullptr) return false;
  const MP_Guard guard(&item->sendLock);
  return item->id == id && item->reconnect;
}

void MP_SocketManager::CloseOf(const MP_TcpClient* client, std::uint32_t id) {
  MP_SocketItem* const item = pool_.Find(id);
  if (item == nullptr) return;
  const MP_Guard guard(&item->stateLock);
  const bool connection = item->id == id && item->type == SOCK_KIND_TCP && item->acceptIndex < 0;
  if (connection && &MP_TcpClient::Of(*item->client()) == client) pool_.Free(item);
}

bool MP_SocketManager::KeepAddresses(std::uint32_t id, const Kalvo_SocketAddr* local,
                                     const Kalvo_SocketAddr* peer) {
  MP_SocketItem* const item = pool_.Find(id);
  if (item == nullptr) return false;
  const MP_SocketItemGuard guard(item);
  if (item->id != id) return false;
  if (item->peerAddr != peer) return true;
  item->ownAddresses = std::make_unique<MP_SocketItem::Addresses>();
  item->ownAddresses->local = *local;
  item->ownAddresses->peer = *peer;
  item->localAddr = &item->ownAddresses->local;
  item->peerAddr = &item->ownAddresses->peer;
  return true;
}

// --- The threads ----------------------------------------------------------------------

// An exception ends here, and the thread goes on.
unsigned long MP_SocketManager::SockConnectWorkThread(void* self) {
  auto* const manager = static_cast<MP_SocketManager*>(self);
  manager->connector_.BeginThread();
  const auto step = [manager] { manager->connector_.Step(); };
  while (manager->connectThread_->Running()) {
    if (!net::CallHandler(step)) TellOfException();
  }
  manager->connector_.EndThread();
  return 0;
}

unsigned long MP_SocketManager::SockTranferWorkThread(void* self) {
  auto* const manager = static_cast<MP_SocketManager*>(self);
  while (manager->transferThread_->Running()) manager->Transfer();
  return 0;
}

// A handful of completions, after a wait for the first.
void MP_SocketManager::Transfer() {
  int count = 0;
  while (count < MP_TcpTransfer::kPlaces && TakeNext(&completions_[count])) ++count;
  if (count > 1) LookAhead(count);
  for (int i = 0; i < count; ++i) {
    const platform::Completion& completion = completions_[i];
    if (quitting_) {
      if (completion.socket >= 0) platform::socket_close(completion.socket);
    } else if (!net::CallHandler([&] { Dispatch(completion); })) {
      TellOfException();
      EndAfterException(completion);
    }
  }
}

// The first of a handful is waited for.
bool MP_SocketManager::TakeNext(platform::Completion* completion) {
  bool taken = false;
  const bool returned = net::CallHandler([&] {
    taken = completion == completions_ ? platform::port_wait(port_, completion)
                                       : platform::port_next(port_, completion);
  });
  if (!returned) TellOfException();
  return taken;
}

// What the completion was for ends with an error, or, if that is a listener or a port, goes on.
void MP_SocketManager::EndAfterException(const platform::Completion& completion) {
  auto* const item = static_cast<MP_SocketItem*>(completion.context);
  const MP_Guard guard(&item->stateLock);
  if (item->type == SOCK_KIND_FREE || item->id != completion.key) return;
  const bool ended = net::CallHandler([&] {
    if (item->acceptIndex >= 0) {
      acceptor_.Refuse(item, completion);
    } else if (item->type == SOCK_KIND_UDP) {
      udp_.GoOn(item);
    } else if (item->connected) {
      core_.Disconnected(item, platform::kSocketNoBuffers);
    } else {
      core_.ConnectFailed(item, platform::kSocketNoBuffers);
    }
  });
  if (!ended) TellOfException();
}

void MP_SocketManager::LookAhead(int count) {
  for (int i = 0; i < count; ++i) {
    if (completions_[i].operation != platform::PortOperation::kRead) continue;
    auto* const item = static_cast<MP_SocketItem*>(completions_[i].context);
    const MP_Guard guard(&item->stateLock);
    if (IsOf(item, completions_[i]) && item->connected) transfer_.ReceiveAhead(item, i);
  }
}

// What the record has been through since the completion was made decides whether it still counts.
void MP_SocketManager::Dispatch(const platform::Completion& completion) {
  auto* const item = static_cast<MP_SocketItem*>(completion.context);
  const MP_Guard guard(&item->stateLock);
  if (!IsOf(item, completion)) {
    if (completion.socket >= 0) platform::socket_close(completion.socket);
  } else {
    Handle(item, completion);
  }
}

// A client that has come is for the listener's socket, so its record has none.
bool MP_SocketManager::IsOf(const MP_SocketItem* item,
                            const platform::Completion& completion) const {
  if (item->type == SOCK_KIND_FREE || item->id != completion.key) return false;
  return completion.operation == platform::PortOperation::kAccept || item->tag == completion.tag;
}

void MP_SocketManager::Handle(MP_SocketItem* item, const platform::Completion& completion) {
  using platform::PortOperation;
  switch (completion.operation) {
    case PortOperation::kAccept:
      acceptor_.ProcessAccept(item, completion);
      break;
    case PortOperation::kWrite:
      transfer_.GoOnSending(item, completion.bytes);
      break;
    case PortOperation::kRead:
    case PortOperation::kPosted:
      if (item->type == SOCK_KIND_UDP) {
        udp_.ProcessUdpRead(item);
      } else if (item->connected) {
        transfer_.doReadTcp(item, completion.operation == PortOperation::kPosted);
      } else {
        connector_.TakeResult(item);
      }
      break;
  }
}
