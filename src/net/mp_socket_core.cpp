#include "net/mp_socket_core.h"

#include "frame/mp_kernel_debug.h"
#include "net/handler_call.h"
#include "net/socket_calls.h"

namespace {

constexpr char kTransferError[] = "<warning> doTransfer error[%d]!!!";
constexpr char kTransferThrown[] = "<error> disconnect 1 process fatal error!!";

}  // namespace

bool MP_SocketCore::TakeSocket(MP_SocketItem* item, int socket, platform::PortSocket kind) {
  const platform::PortTag tag = platform::port_add(port_, socket, kind, item->id, item);
  if (tag == 0) {
    net::CloseKeepingError(socket);
    return false;
  }
  const MP_SocketItemGuard guard(item);
  item->socket = socket;
  item->tag = tag;
  return true;
}

void MP_SocketCore::ResetReadOp(MP_SocketItem* item, platform::PortReadAfter after) {
  if (platform::port_read(port_, item->tag, after)) return;
  const int error = platform::socket_error();
  Kalvo_KernelDebugLog(1, "<warning> reset readop error[%d-%d]!!!", -1, error);
  Disconnected(item, error);
}

void MP_SocketCore::AfterFailure(MP_SocketItem* item, int result) {
  if (result < 0 || !item->reconnect) {
    pool_->Free(item);
    return;
  }
  {
    const MP_SocketItemGuard guard(item);
    pool_->CloseSocket(item);
    item->connected = false;
  }
  item->DropInput();
  connectQueue_->Schedule(item, result);
}

void MP_SocketCore::ConnectFailed(MP_SocketItem* item, int error, const char* thrown) {
  const std::uint32_t id = item->id;
  int result = -1;
  const bool returned =
      net::CallHandler([&] { result = item->client()->OnConnectFaild(item->peerAddr, error); });
  if (!returned && thrown != nullptr) Kalvo_KernelDebugLog(kernel_debug::kError, thrown);
  if (item->id == id) AfterFailure(item, result);
}

void MP_SocketCore::TransferFailed(MP_SocketItem* item, int error) {
  Kalvo_KernelDebugLog(1, kTransferError, error);
  Disconnected(item, error, kTransferThrown);
}

void MP_SocketCore::Disconnected(MP_SocketItem* item, int error, const char* thrown) {
  const std::uint32_t id = item->id;
  int result = -1;
  const bool returned =
      net::CallHandler([&] { result = item->client()->OnDisConnect(item->peerAddr, error); });
  if (!returned && thrown != nullptr) Kalvo_KernelDebugLog(kernel_debug::kError, thrown);
  if (item->id != id) return;
  bool sending;
  {
    const MP_Guard guard(&item->sendLock);
    sending = item->sends.head() != nullptr;
  }
  AfterFailure(item, result);
  // The write that was under way has failed, too.
  if (!sending || item->id != id) return;
  Kalvo_KernelDebugLog(1, kTransferError, platform::kSocketConnectionAborted);
  ConnectFailed(item, platform::kSocketConnectionAborted, kTransferThrown);
}
