#include "net/mp_socket_manager.h"

#include "frame/mp_kernel_debug.h"
#include "net/handler_call.h"

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

// --- The threads ----------------------------------------------------------------------

unsigned long MP_SocketManager::SockConnectWorkThread(void* self) {
  auto* const manager = static_cast<MP_SocketManager*>(self);
  manager->connector_.BeginThread();
  while (manager->connectThread_->Running()) manager->connector_.Step();
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
  if (!platform::port_wait(port_, &completions_[0])) return;
  int count = 1;
  while (count < MP_TcpTransfer::kPlaces && platform::port_next(port_, &completions_[count])) {
    ++count;
  }
  if (count > 1) LookAhead(count);
  for (int i = 0; i < count; ++i) {
    if (!quitting_) {
      Dispatch(completions_[i]);
    } else if (completions_[i].socket >= 0) {
      platform::socket_close(completions_[i].socket);
    }
  }
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
