#include "net/mp_tcp_transfer.h"

#include <algorithm>
#include <cstring>

#include "frame/mp_kernel_debug.h"
#include "net/handler_call.h"
#include "platform/clock.h"
#include "platform/descriptor.h"
#include "platform/socket.h"
#include "text/mp_string.h"

using kernel_debug::kError;

namespace {

// The tick of a write that is begun now, which is never 0. What goes out at once need not be
// stamped: nothing waits behind it.
std::uint32_t SendTick() {
  const std::uint32_t now = platform::tick_count();
  return now != 0 ? now : 1;
}

}  // namespace

// --- Sending --------------------------------------------------------------------------

int MP_TcpTransfer::Send(std::uint32_t id, Kalvo_String*& data) {
  const std::size_t size =
      data != nullptr ? static_cast<std::size_t>(MP_String::Of(*data).Length()) : 0;
  if (size == 0) {
    delete data;
    data = nullptr;
    return 1;
  }
  MP_SocketItem* const item = core_->pool()->Find(id);
  if (item == nullptr) return 0;
  const MP_Guard guard(&item->sendLock);
  std::size_t sent = 0;
  const Taken taken = Begin(item, id, MP_String::Of(*data).Content(), size, &sent);
  if (taken == Taken::kNothing) return 0;
  std::unique_ptr<Kalvo_String> text(data);
  data = nullptr;
  if (taken == Taken::kRest) item->sends.Add(std::move(text), sent);
  return 1;
}

// Only what does not go out at once is copied.
int MP_TcpTransfer::SendBytes(std::uint32_t id, const char* data, int length) {
  if (length == 0) return 1;
  MP_SocketItem* const item = core_->pool()->Find(id);
  if (item == nullptr) return 0;
  const MP_Guard guard(&item->sendLock);
  const auto size = static_cast<std::size_t>(length);
  std::size_t sent = 0;
  const Taken taken = Begin(item, id, data, size, &sent);
  if (taken != Taken::kRest) return taken == Taken::kAll ? 1 : 0;
  auto rest = std::make_unique<Kalvo_String>();
  rest->memcpy(data + sent, static_cast<int>(size - sent));
  if (rest->length() == size - sent) {
    item->sends.Add(std::move(rest), 0);
    return 1;
  }
  if (sent == 0) return 0;
  // Nothing may follow what is missing now: reading comes to its end soon.
  SendFailed(item, platform::kSocketNoBuffers);
  platform::socket_shutdown(item->socket);
  return 1;
}

MP_TcpTransfer::Taken MP_TcpTransfer::Begin(MP_SocketItem* item, std::uint32_t id, const char* data,
                                            std::size_t size, std::size_t* sent) {
  if (item->id != id || item->type == SOCK_KIND_FREE) return Taken::kNothing;
  if (item->sendError != 0) return Taken::kAll;
  if (!item->connected) {
    SendFailed(item, platform::kSocketNotConnected);
    return Taken::kAll;
  }
  if (IsStalled(item)) {
    platform::port_post(core_->port(), id, item, item->tag);
    return Taken::kNothing;
  }
  if (item->sends.head() != nullptr) return Taken::kRest;
  const std::int64_t n = platform::port_send(core_->port(), item->tag, item->socket, data, size);
  if (n == platform::kTransferFailed) {
    SendFailed(item, platform::socket_error());
    platform::port_post(core_->port(), id, item, item->tag);
    return Taken::kAll;
  }
  *sent = static_cast<std::size_t>(n);
  if (*sent == size) return Taken::kAll;
  item->lastSendTick = SendTick();
  return Taken::kRest;
}

// Told once for a connection, also if telling it makes a host send.
void MP_TcpTransfer::SendFailed(MP_SocketItem* item, int error) {
  item->sendError = error;
  Kalvo_KernelDebugLog(kError, "<error> senddata failed because error[%d]", error);
}

bool MP_TcpTransfer::IsStalled(MP_SocketItem* item) {
  if (item->sends.waiting() <= kLongQueue || item->lastSendTick == 0) return false;
  const std::uint32_t delay = platform::tick_count() - item->lastSendTick;
  if (delay <= kStallMs || item->peerAddr == nullptr) return false;
  Kalvo_KernelDebugLog(kError, "<error> Send buffer size[%d],delay[%d],ip[%s:%d]!!!!",
                       item->sends.waiting(), static_cast<int>(delay), item->peerAddr->GetAddr(),
                       item->peerAddr->GetPort());
  return true;
}

void MP_TcpTransfer::GoOnSending(MP_SocketItem* item, std::size_t bytes) {
  int error = 0;
  {
    const MP_Guard guard(&item->sendLock);
    while (MP_SendBuffer* const buffer = item->sends.head()) {
      buffer->sent += bytes;
      bytes = 0;
      const std::size_t left = buffer->size();
      if (left == 0) {
        item->sends.DropHead();
        continue;
      }
      const std::int64_t n =
          platform::port_send(core_->port(), item->tag, item->socket, buffer->rest(), left);
      if (n == platform::kTransferFailed) {
        error = platform::socket_error();
        break;
      }
      bytes = static_cast<std::size_t>(n);
      if (bytes < left) {
        buffer->sent += bytes;
        item->lastSendTick = SendTick();
        return;
      }
    }
  }
  if (error == 0) return;
  Kalvo_KernelDebugLog(1, "<warning> reset writeop error[%d-%d]!!!", -1, error);
  core_->Disconnected(item, error);
}

// --- Receiving ------------------------------------------------------------------------

void MP_TcpTransfer::doReadTcp(MP_SocketItem* item, bool ending) {
  const std::uint32_t id = item->id;
  platform::clear_socket_error();
  Arrived arrived;
  const std::int64_t count = Look(item, &arrived);
  if (count == platform::kTransferWouldBlock && !ending) {
    core_->ResetReadOp(item, platform::PortReadAfter::kEmpty);
    return;
  }
  if (count == platform::kTransferFailed) {
    core_->TransferFailed(item, platform::socket_error());
    return;
  }
  if (count <= 0) {
    int error;
    {
      const MP_Guard guard(&item->sendLock);
      error = item->sendError;
    }
    Kalvo_KernelDebugLog(1, "<warning> doReadTcp MP_SOCK_ioctl error[%d]!!!", error);
    core_->Disconnected(item, error);
    return;
  }

  const int declined = item->readBufferCount;
  const long available = static_cast<long>(declined + count);
  long size = available;
  void* buffer = nullptr;
  net::CallHandler([&] { buffer = item->client()->AllocBufferForRead(size); });
  if (item->id != id) return;
  if (size == 0) {
    if (available > MP_SocketItem::kReadBufferSize) {
      Violated(item, "<error> data error! buffer size over!!");
    } else if (Decline(item, &arrived)) {
      core_->ResetReadOp(item, After(item));
    }
    return;
  }
  if (buffer == nullptr || size < 0) {
    Violated(item, "<error> data error! no buffer provide!");
    return;
  }
  if (declined > 0) {
    if (declined >= size) {
      Violated(item, "<error> data error! buffer is enough but no read");
      return;
    }
    std::memcpy(buffer, item->readBuffer, static_cast<std::size_t>(declined));
    item->readBufferCount = 0;
  }
  if (!Take(item, &arrived, static_cast<char*>(buffer) + declined, size - declined,
            "<warning> doReadTcp MP_SOCK_read error[%d]!!!")) {
    return;
  }
  LeaveBehind(item, arrived);
  if (DispatchData(item, buffer, size)) core_->ResetReadOp(item, After(item));
}

void MP_TcpTransfer::ReceiveAhead(MP_SocketItem* item, int place) {
  if (item->leftBehind != nullptr || item->receivesMuch || item->ahead != nullptr) return;
  item->aheadCount =
      platform::socket_receive_now(item->socket, receivedAhead_[place], kReceiveAhead);
  item->ahead = receivedAhead_[place];
  if (item->aheadCount == platform::kTransferFailed) item->aheadError = platform::socket_error();
}

platform::PortReadAfter MP_TcpTransfer::After(const MP_SocketItem* item) {
  const bool more = item->holdsMore || item->leftBehind != nullptr;
  return more ? platform::PortReadAfter::kMore : platform::PortReadAfter::kTaken;
}

// How much has arrived that the handler has not declined yet; as socket_pending if nothing has.
std::int64_t MP_TcpTransfer::Look(MP_SocketItem* item, Arrived* arrived) {
  if (item->leftBehind != nullptr) {
    arrived->received = item->leftBehind.get() + item->leftBehindAt;
    arrived->receivedCount = item->leftBehindCount;
  } else if (!item->receivesMuch) {
    item->holdsMore = false;
    ReceiveAhead(item, kPlaces);
    arrived->received = item->ahead;
    item->ahead = nullptr;
    const std::int64_t n = item->aheadCount;
    if (n == platform::kTransferFailed) platform::set_socket_error(item->aheadError);
    if (n <= 0) return n;
    arrived->receivedCount = static_cast<long>(n);
    if (n < kReceiveAhead) return n;  // there was no more
  }
  // An end or a failure is told when nothing is before it any more.
  const std::int64_t waiting = arrived->receivedCount > 0 ? platform::socket_available(item->socket)
                                                          : platform::socket_pending(item->socket);
  if (waiting > 0) arrived->waitingCount = static_cast<long>(waiting);
  const long count = arrived->receivedCount + arrived->waitingCount;
  item->receivesMuch = count >= kReceiveAhead;
  item->holdsMore = arrived->waitingCount > 0;
  return count > 0 ? count : waiting;
}

// Puts everything behind what the handler has declined before, which has room for it.
bool MP_TcpTransfer::Decline(MP_SocketItem* item, Arrived* arrived) {
  const long count = arrived->receivedCount + arrived->waitingCount;
  if (!Take(item, arrived, item->readBuffer + item->readBufferCount, count,
            "<warning> ReadDataToBuff error[%d]!!!")) {
    Kalvo_KernelDebugLog(1, "<error> read data to buffer error!!!");
    return false;
  }
  item->readBufferCount += static_cast<int>(count);
  LeaveBehind(item, *arrived);
  return true;
}

// Takes exactly `size` bytes, waiting for what has not arrived. If that fails, the connection has
// ended when this returns.
bool MP_TcpTransfer::Take(MP_SocketItem* item, Arrived* arrived, char* buffer, long size,
                          const char* warning) {
  const long received = std::min(size, arrived->receivedCount);
  if (received > 0) std::memcpy(buffer, arrived->received, static_cast<std::size_t>(received));
  arrived->received += received;
  arrived->receivedCount -= received;
  buffer += received;
  size -= received;
  platform::clear_socket_error();
  while (size > 0) {
    const std::int64_t n =
        platform::socket_receive(item->socket, buffer, static_cast<std::size_t>(size));
    if (n <= 0) {
      const int error = platform::socket_error();
      Kalvo_KernelDebugLog(1, warning, error);
      core_->Disconnected(item, error);
      return false;
    }
    buffer += n;
    size -= static_cast<long>(n);
    arrived->waitingCount -= static_cast<long>(n);
    if (arrived->waitingCount <= 0) item->holdsMore = false;
  }
  return true;
}

// Keeps for the next time what was received and not taken.
void MP_TcpTransfer::LeaveBehind(MP_SocketItem* item, const Arrived& arrived) {
  const int count = static_cast<int>(arrived.receivedCount);
  if (count == 0) {
    item->leftBehind.reset();
    return;
  }
  if (item->leftBehind == nullptr) {
    item->leftBehind = std::make_unique<char[]>(static_cast<std::size_t>(count));
    std::memcpy(item->leftBehind.get(), arrived.received, static_cast<std::size_t>(count));
    item->leftBehindAt = 0;
  } else {
    item->leftBehindAt += item->leftBehindCount - count;
  }
  item->leftBehindCount = count;
}

// The handler ended the connection by what it did.
void MP_TcpTransfer::Violated(MP_SocketItem* item, const char* error) {
  Kalvo_KernelDebugLog(kError, error);
  core_->Disconnected(item, -1);
}

// Whether the connection goes on.
bool MP_TcpTransfer::DispatchData(MP_SocketItem* item, void* buffer, long size) {
  const std::uint32_t id = item->id;
  int result = 0;
  const bool returned = net::CallHandler([&] { result = item->client()->OnDataOk(buffer, size); });
  if (item->id != id) return false;
  Kalvo_SocketAddr* const peer = item->peerAddr;
  if (!returned) {
    Kalvo_KernelDebugLog(kError, "<error> data process fatal error!!remote addr[%s:%d]",
                         peer->GetAddr(), peer->GetPort());
    return true;
  }
  if (result >= 0) return true;
  Kalvo_KernelDebugLog(1, "<error> data error!!remote addr[%s:%d]", peer->GetAddr(),
                       peer->GetPort());
  net::CallHandler([&] { item->client()->OnDisConnect(peer, -1); });
  if (item->id == id) core_->pool()->Free(item);
  return false;
}
