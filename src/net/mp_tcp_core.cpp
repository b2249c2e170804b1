#include "net/mp_tcp_core.h"

#include "kalvobase/kernel_debug.h"
#include "net/handler_call.h"
#include "net/socket_calls.h"

bool MP_TcpCore::TakeSocket(MP_SocketItem* item, int socket, platform::PortSocket kind) {
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

void MP_TcpCore::ResetReadOp(MP_SocketItem* item, bool more) {
  if (platform::port_read(port_, item->tag, more)) return;
  const int error = platform::socket_error();
  Kalvo_KernelDebugLog(1, "<warning> reset readop error[%d-%d]!!!", -1, error);
  Disconnected(item, error);
}

void MP_TcpCore::AfterFailure(MP_SocketItem* item, int result) {
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

void MP_TcpCore::ConnectFailed(MP_SocketItem* item, int error) {
  const std::uint32_t id = item->id;
  const int result =
      net::ResultOfHandler([&] { return item->client()->OnConnectFaild(item->peerAddr, error); });
  if (item->id == id) AfterFailure(item, result);
}

void MP_TcpCore::TransferFailed(MP_SocketItem* item, int error) {
  Kalvo_KernelDebugLog(1, "<warning> doTransfer error[%d]!!!", error);
  Disconnected(item, error);
}

void MP_TcpCore::Disconnected(MP_SocketItem* item, int error) {
  const std::uint32_t id = item->id;
  const int result =
      net::ResultOfHandler([&] { return item->client()->OnDisConnect(item->peerAddr, error); });
  if (item->id != id) return;
  bool sending;
  {
    Kalvo_AutoLock guard(&item->sendLock);
    sending = item->sends.head() != nullptr;
  }
  AfterFailure(item, result);
  // The write that was under way has failed, too.
  if (sending && item->id == id) ConnectFailed(item, platform::kSocketConnectionAborted);
}
