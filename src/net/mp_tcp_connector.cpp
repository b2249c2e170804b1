#include "net/mp_tcp_connector.h"

#include <algorithm>

#include "frame/mp_kernel_debug.h"
#include "net/handler_call.h"
#include "net/mp_tcp_client.h"
#include "net/socket_calls.h"
#include "platform/clock.h"

using kernel_debug::kError;

std::uint32_t MP_TcpConnector::Connect(Kalvo_TcpClientHandler* handler) {
  MP_SocketItem* const item = core_->pool()->Alloc();
  if (item == nullptr) return 0;
  const MP_SocketItemGuard guard(item);
  MP_TcpClient& client = MP_TcpClient::Of(*handler);
  item->type = SOCK_KIND_TCP;
  item->handler = handler;
  item->bindAddr = client.bindAddr();
  item->peerAddr = &client.peerAddr;
  item->localAddr = &client.localAddr;
  item->reconnect = true;
  const std::uint32_t id = item->id;
  client.SetId(id);  // the handler may be called before the caller can tell it
  core_->AfterFailure(item, 0);
  return id;
}

// --- The connect thread ---------------------------------------------------------------

void MP_TcpConnector::BeginThread() { lastTick_ = platform::tick_count(); }

void MP_TcpConnector::EndThread() {
  platform::connect_events_destroy(events_);
  events_ = nullptr;
}

void MP_TcpConnector::Step() {
  if (events_ == nullptr) events_ = platform::connect_events_create();
  const int slot = platform::connect_events_wait(events_, kWaitMs);
  if (slot >= 0) Finished(slot);
  RunConnectQueue();
}

// What has become of the connect is for the transfer thread to find out.
void MP_TcpConnector::Finished(int slot) {
  const MP_ConnectWait wait = slots_[slot];
  if (wait.item == nullptr) return;
  slots_[slot] = {};
  --pending_;
  MP_SocketItem* const item = core_->pool()->Find(wait.id);
  if (item != wait.item) {
    Kalvo_KernelDebugLog(1, "<warn> event[%d] changed! ", slot);
    return;
  }
  const MP_Guard guard(&item->stateLock);
  if (item->id == wait.id && item->socket == wait.socket) {
    platform::connect_events_remove(events_, item->socket);
    platform::port_post(core_->port(), wait.id, item, item->tag);
    return;
  }
  Kalvo_KernelDebugLog(1, "<warn> connect res changed from[0x%08x:%d] to [%d]",
                       static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(item)), wait.id,
                       item->id.load());
}

void MP_TcpConnector::RunConnectQueue() {
  const std::uint32_t now = platform::tick_count();
  const auto passed = static_cast<std::int32_t>(now - lastTick_);
  lastTick_ = now;
  constexpr int kLongest = 1 << 29;
  elapsed_ = std::min(elapsed_ + std::min(passed < 0 ? kWaitMs : passed, kLongest), kLongest);
  if (pending_ == kSlots) {
    Sweep();
    return;
  }
  connectQueue_->BeginPass();
  MP_SocketItem* item;
  while ((item = connectQueue_->Head()) != nullptr) {
    const int slot = EmptySlot();
    if (slot < 0) return;
    const MP_Guard guard(&item->stateLock);
    const MP_ConnectQueue::Charged charged = connectQueue_->Charge(item, &elapsed_);
    if (charged == MP_ConnectQueue::Charged::kNotDue) return;
    if (charged == MP_ConnectQueue::Charged::kGone) continue;
    if (!Begin(item)) {
      Kalvo_KernelDebugLog(1, "<debug> connect not real!![0x%08x]", item->id.load());
      continue;
    }
    if (!platform::connect_events_add(events_, item->socket, slot)) {
      core_->ConnectFailed(item, platform::socket_error());
      continue;
    }
    slots_[slot] = {item, item->id, item->socket};
    ++pending_;
  }
  elapsed_ = 0;
}

// A socket that was closed tells of nothing: its slot is found here.
void MP_TcpConnector::Sweep() {
  for (MP_ConnectWait& wait : slots_) {
    if (wait.item == nullptr || core_->pool()->Find(wait.id) != nullptr) continue;
    wait = {};
    --pending_;
  }
}

int MP_TcpConnector::EmptySlot() const {
  for (int slot = 0; slot < kSlots; ++slot) {
    if (slots_[slot].item == nullptr) return slot;
  }
  return -1;
}

// As TryConnect. An exception is a failure of this attempt alone.
bool MP_TcpConnector::Begin(MP_SocketItem* item) {
  const std::uint32_t id = item->id;
  bool begun = false;
  const bool returned = net::CallHandler([&] { begun = TryConnect(item); });
  if (returned || item->id != id) return begun;
  if (item->connected) {
    core_->Disconnected(item, platform::kSocketNoBuffers);
  } else {
    core_->ConnectFailed(item, platform::kSocketNoBuffers);
  }
  return false;
}

// True if a connect is under way.
bool MP_TcpConnector::TryConnect(MP_SocketItem* item) {
  if (item->type == SOCK_KIND_FREE) return false;  // in a child that was forked in a call
  MP_SocketAddr* const peer = &MP_SocketAddr::Of(*item->peerAddr);
  MP_SocketAddr* const own =
      item->bindAddr != nullptr ? &MP_SocketAddr::Of(*item->bindAddr) : nullptr;
  const int socket =
      net::Open(own != nullptr ? own : peer, platform::SocketType::kStream, own != nullptr);
  if (socket < 0) {
    GiveUp(item, "<error> fatal error[%d], never connnect again1");
    return false;
  }
  if (platform::socket_set_blocking(socket, false) != 0) {
    net::CloseKeepingError(socket);
    GiveUp(item, "<error> fatal error[%d], never connnect again2");
    return false;
  }
  platform::socket_set_no_delay(socket, 1);
  const int begun = net::TryConnect(peer, socket);
  if (begun < 0) net::CloseKeepingError(socket);
  if (begun < 0 || !core_->TakeSocket(item, socket, platform::PortSocket::kStream)) {
    core_->ConnectFailed(item, platform::socket_error());
    return false;
  }
  if (begun == 0) return true;
  Stands(item);
  return false;
}

// No further attempt follows, whatever the handler says.
void MP_TcpConnector::GiveUp(MP_SocketItem* item, const char* format) {
  const int error = platform::socket_error();
  const std::uint32_t id = item->id;
  net::CallHandler([&] { item->client()->OnConnectFaild(item->peerAddr, error); });
  Kalvo_KernelDebugLog(kError, format, error);
  if (item->id == id) core_->pool()->Free(item);
}

// --- The result -----------------------------------------------------------------------

void MP_TcpConnector::TakeResult(MP_SocketItem* item) {
  const int error = platform::socket_connect_error(item->socket);
  if (error == 0) {
    Stands(item);
  } else {
    core_->ConnectFailed(item, error);
  }
}

void MP_TcpConnector::Stands(MP_SocketItem* item) {
  if (net::IsConnectedToItself(item->socket)) {
    core_->ConnectFailed(item, platform::kSocketConnectionRefused);
    return;
  }
  if (item->bindAddr == nullptr) {
    net::TakeOwnAddress(item->socket, &MP_SocketAddr::Of(*item->localAddr));
  }
  {
    const MP_SocketItemGuard guard(item);
    item->connected = true;
    item->sendError = 0;
  }
  const std::uint32_t id = item->id;
  if (!net::CallHandler([&] { item->client()->OnConnectOk(item->peerAddr, 1); })) {
    Kalvo_KernelDebugLog(kError, "<error> process OnConnectOk error!!!!");
  }
  if (item->id == id) core_->ResetReadOp(item, platform::PortReadAfter::kEmpty);
}
