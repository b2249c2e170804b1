#include "net/mp_tcp_acceptor.h"

#include "frame/mp_kernel_debug.h"
#include "net/handler_call.h"
#include "net/mp_socket_manager.h"
#include "net/mp_tcp_client.h"
#include "net/mp_tcp_server.h"
#include "net/socket_calls.h"

using kernel_debug::kError;

namespace {

constexpr int kKeepAliveIdle = 12;  // seconds
constexpr int kKeepAliveInterval = 5;

void SetOptions(int socket) {
  if (platform::socket_set_keep_alive(socket, kKeepAliveIdle, kKeepAliveInterval) != 0) {
    Kalvo_KernelDebugLog(1, "<Warning> SetKalvoSock KeepAlive Failed!");
  }
  platform::socket_set_no_delay(socket, 1);
  platform::socket_set_reuse(socket, 1);
}

int OpenListener(MP_SocketAddr* address) {
  const int socket = platform::socket_open(platform::kInternet, platform::SocketType::kStream);
  if (socket < 0) return -1;
  platform::socket_set_reuse(socket, 1);
  if (platform::socket_bind(socket, address->bytes(), address->length()) != 0) {
    const int error = platform::socket_error();
    net::CloseKeepingError(socket);
    Kalvo_KernelDebugLog(kError, "<error> server bind error [%d]!!!", error);
    return -1;
  }
  SetOptions(socket);
  // What was waiting may be gone, or taken by a child of this process, when it is accepted.
  platform::socket_set_blocking(socket, false);
  if (address->port() == 0) net::TakeOwnAddress(socket, address);
  return socket;
}

}  // namespace

std::uint32_t MP_TcpAcceptor::Listen(Kalvo_TcpServerHandler* handler) {
  MP_TcpServer& server = MP_TcpServer::Of(*handler);
  const int socket = OpenListener(&MP_SocketAddr::Of(server.localAddr));
  if (socket < 0) return 0;
  MP_SocketItem* const item = core_->pool()->Alloc();
  if (item == nullptr) {
    platform::socket_close(socket);
    return 0;
  }
  Listener listener{item, item->id, 0, handler, &server.localAddr};
  {
    const MP_SocketItemGuard guard(item);
    item->type = SOCK_KIND_LISTEN;
    item->handler = handler;
    item->localAddr = &server.localAddr;
    const bool listening = platform::socket_listen(socket) == 0;
    if (!listening) {
      net::CloseKeepingError(socket);
      Kalvo_KernelDebugLog(kError, "<error> listen somax error !!! ");
    }
    if (!listening || !core_->TakeSocket(item, socket, platform::PortSocket::kListener)) {
      core_->pool()->Free(item);
      return 0;
    }
    listener.tag = item->tag;
    const MP_Guard accepts(&acceptLock_);
    item->pendingAccepts = std::make_unique<MP_PendingAccept[]>(kPendingAccepts);
  }
  for (int i = 0; i < kPendingAccepts; ++i) {
    if (PostAccept(listener, i)) continue;
    Kalvo_KernelDebugLog(kError, "<error> listen error !!! ");
    manager_->Close(listener.id);
    return 0;
  }
  return listener.id;
}

// False if there is no record for it, or no listener any more.
bool MP_TcpAcceptor::PostAccept(const Listener& listener, int index) {
  MP_SocketItem* const item = core_->pool()->Alloc();
  if (item == nullptr) {
    Kalvo_KernelDebugLog(kError, "<error> accept alloc item error !!! ");
    return false;
  }
  const std::uint32_t id = item->id;
  bool posted;
  {
    const MP_SocketItemGuard guard(item);
    item->type = SOCK_KIND_TCP;
    item->handler = listener.handler;
    item->localAddr = listener.localAddr;
    item->acceptOwner = listener.item;
    item->acceptOwnerId = listener.id;
    item->acceptIndex = index;
    const MP_Guard accepts(&acceptLock_);
    posted = listener.item->id == listener.id && listener.item->pendingAccepts != nullptr;
    if (posted) listener.item->pendingAccepts[static_cast<std::size_t>(index)] = {item, id};
  }
  if (posted) {
    platform::port_accept(core_->port(), listener.tag, id, item);
  } else {
    core_->pool()->Free(item);
  }
  return posted;
}

void MP_TcpAcceptor::ProcessAccept(MP_SocketItem* item, const platform::Completion& accepted) {
  const std::uint32_t id = item->id;
  Kalvo_TcpClientHandler* handler = nullptr;
  if (core_->TakeSocket(item, accepted.socket, platform::PortSocket::kStream)) {
    MP_SocketAddr::Of(scratchAddr_).Take(accepted.address, accepted.addressLength);
    net::CallHandler([&] {
      handler = static_cast<Kalvo_TcpServerHandler*>(item->handler)->OnAcceptClient(&scratchAddr_);
    });
    if (item->id != id) return;  // the listener was closed
  }
  if (handler == nullptr) {
    Refuse(item, accepted);
    return;
  }

  // Systems differ in what an accepted socket inherits.
  SetOptions(item->socket);
  platform::socket_set_blocking(item->socket, true);
  MP_TcpClient& client = MP_TcpClient::Of(*handler);
  Kalvo_SocketAddr local;
  if (MP_SocketAddr::Of(*item->localAddr).internetBytes() != nullptr) {
    local = *item->localAddr;  // the address of the listener alone
  } else {
    net::TakeOwnAddress(item->socket, &MP_SocketAddr::Of(local));
  }
  if (!client.Reserve(manager_, local, scratchAddr_)) {
    Kalvo_KernelDebugLog(kError, "<error> the accepted handler has another connection!!");
    Refuse(item, accepted);
    return;
  }
  const Listener listener{item->acceptOwner, item->acceptOwnerId, accepted.tag, item->handler,
                          item->localAddr};
  const int index = item->acceptIndex;
  {
    const MP_SocketItemGuard guard(item);
    item->acceptOwner = nullptr;
    item->acceptIndex = -1;
    item->handler = handler;
    item->localAddr = &client.localAddr;
    item->peerAddr = &client.peerAddr;
    item->connected = true;
    item->sendError = 0;
  }
  client.Adopt(id);  // now that sending works
  // The handler has its id by now: a host that closes the listener waits for the accepts that are
  // in its places, and may close and destroy all handlers after that.
  PostAccept(listener, index);
  if (!net::CallHandler([&] { handler->OnConnectOk(item->peerAddr, 0); })) {
    Kalvo_KernelDebugLog(kError, "<error> process OnConnectOk error!!!!");
  }
  if (item->id == id) core_->ResetReadOp(item, platform::PortReadAfter::kEmpty);
}

void MP_TcpAcceptor::Refuse(MP_SocketItem* item, const platform::Completion& accepted) {
  {
    const MP_SocketItemGuard guard(item);
    core_->pool()->CloseSocket(item);
  }
  platform::port_accept(core_->port(), accepted.tag, item->id, item);
}

std::unique_ptr<MP_PendingAccept[]> MP_TcpAcceptor::TakeAccepts(MP_SocketItem* listener) {
  const MP_Guard guard(&acceptLock_);
  return std::move(listener->pendingAccepts);
}

// One that has become a connection meanwhile stays.
void MP_TcpAcceptor::FreeAccepts(std::unique_ptr<MP_PendingAccept[]> accepts) {
  for (int i = 0; i < kPendingAccepts; ++i) {
    const MP_PendingAccept& accept = accepts[static_cast<std::size_t>(i)];
    if (accept.item == nullptr) continue;
    const MP_Guard guard(&accept.item->stateLock);
    if (accept.item->id == accept.id && accept.item->acceptIndex >= 0) {
      core_->pool()->Free(accept.item);
    }
  }
}
