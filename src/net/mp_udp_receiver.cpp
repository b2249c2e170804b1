#include "net/mp_udp_receiver.h"

#include <cstring>

#include "kalvobase/kernel_debug.h"
#include "net/handler_call.h"
#include "net/mp_udp_port.h"
#include "net/socket_calls.h"
#include "platform/descriptor.h"

namespace {

int OpenSocket(MP_UdpPort* port, bool broadcast) {
  MP_SocketAddr* const local = &MP_SocketAddr::Of(port->localAddr);
  if (!broadcast) return net::Open(local, platform::SocketType::kDatagram, port->isBound());
  const int socket = platform::socket_open(platform::kInternet, platform::SocketType::kDatagram);
  if (socket < 0 || !port->isBound()) return socket;
  platform::socket_set_reuse(socket, 1);
  // What is sent to a group does not come to one address; that only chooses the interface.
  MP_SocketAddr bound = *local;
  if (!bound.isGroup()) bound.Widen();
  if (platform::socket_bind(socket, bound.bytes(), bound.length()) == 0) return socket;
  net::CloseKeepingError(socket);
  return -1;
}

}  // namespace

std::uint32_t MP_UdpReceiver::OpenUdp(Kalvo_UdpHandler* handler, bool broadcast) {
  MP_UdpPort& port = MP_UdpPort::Of(*handler);
  const int socket = OpenSocket(&port, broadcast);
  if (socket < 0) return 0;
  MP_SocketAddr* const local = &MP_SocketAddr::Of(port.localAddr);
  if (!port.isBound() || local->port() == 0) {
    MP_SocketAddr own;
    net::TakeOwnAddress(socket, &own);
    if (broadcast && port.isBound()) {
      local->SetPort(own.port());
    } else {
      *local = own;
    }
  }
  MP_SocketItem* const item =
      platform::socket_set_blocking(socket, false) == 0 ? core_->pool()->Alloc() : nullptr;
  if (item == nullptr) {
    net::CloseKeepingError(socket);
    return 0;
  }
  const MP_SocketItemGuard guard(item);
  item->type = SOCK_KIND_UDP;
  item->handler = handler;
  item->localAddr = &port.localAddr;
  if (!core_->TakeSocket(item, socket, platform::PortSocket::kDatagram)) {
    core_->pool()->Free(item);
    return 0;
  }
  port.socket = socket;
  port.SetId(item->id);
  platform::port_read(core_->port(), item->tag, platform::PortReadAfter::kTaken);
  return item->id;
}

void MP_UdpReceiver::ProcessUdpRead(MP_SocketItem* item) {
  const std::uint32_t id = item->id;
  platform::clear_socket_error();
  const char* datagram;
  const std::int64_t count = Look(item, &datagram);
  if (count < 1) {
    if (count != platform::kTransferWouldBlock) {
      const int error = platform::socket_error();
      if (count == platform::kTransferFailed) {
        Kalvo_KernelDebugLog(1, "<error> udp queue status error[%d]", error);
      }
      Kalvo_KernelDebugLog(1, " udp error %d \n", error);
    }
    // Nothing followed the last one. What follows an empty one is told.
    if (count == platform::kTransferWouldBlock) item->datagramsToGo = kLookAgain;
    platform::port_read(core_->port(), item->tag, platform::PortReadAfter::kTaken);
    return;
  }

  long size = static_cast<long>(count);
  void* buffer = nullptr;
  net::CallHandler([&] { buffer = item->handler->AllocBufferForRead(size); });
  if (item->id != id) return;
  if (size < 1) {
    LeaveBehind(item, datagram, static_cast<int>(count));
    platform::port_read_later(core_->port(), item->tag, kRefusedMs);
    return;
  }
  auto* const handler = static_cast<Kalvo_UdpHandler*>(item->handler);
  if (buffer == nullptr) {
    Kalvo_KernelDebugLog(1, "<error> udp fatal data error no buff!!");
    MP_UdpPort::Of(*handler).socket = -1;  // before the number can be another's
    core_->pool()->Free(item);
    return;
  }
  const bool whole = size >= count;
  std::memcpy(buffer, datagram, static_cast<std::size_t>(whole ? count : size));
  item->leftBehind.reset();
  if (!whole) platform::set_socket_error(platform::kSocketMessageSize);
  const long length = whole ? static_cast<long>(count) : -1;
  int result = 0;
  const bool returned = net::CallHandler(
      [&] { result = handler->OnDataOk(buffer, length, &scratchAddr_, item->localAddr); });
  if (item->id != id) return;
  if (!returned) {
    Kalvo_KernelDebugLog(1, "<error> udp data process fatal error!!remote address[%s:%d]",
                         scratchAddr_.GetAddr(), scratchAddr_.GetPort());
  } else if (result < 0) {
    Kalvo_KernelDebugLog(1, "<error> udp data error!!remote address [%s:%d]",
                         scratchAddr_.GetAddr(), scratchAddr_.GetPort());
    return;
  }
  Next(item);
}

void MP_UdpReceiver::Next(MP_SocketItem* item) {
  if (item->datagramsToGo > 0) --item->datagramsToGo;
  platform::port_read(
      core_->port(), item->tag,
      item->datagramsToGo == 0 ? platform::PortReadAfter::kMore : platform::PortReadAfter::kTaken);
}

// The size of the next datagram, whose sender is then in scratchAddr_; 0 for an empty one, which
// is gone; kTransferWouldBlock if there is none, kTransferFailed.
std::int64_t MP_UdpReceiver::Look(MP_SocketItem* item, const char** datagram) {
  MP_SocketAddr& from = MP_SocketAddr::Of(scratchAddr_);
  if (item->leftBehind != nullptr) {
    from.Take(item->leftBehind.get(), item->leftBehindAt);
    *datagram = item->leftBehind.get() + item->leftBehindAt;
    return item->leftBehindCount;
  }
  char address[platform::kAddressRoom] = {};
  int length = sizeof(address);
  const std::int64_t n =
      platform::socket_receive_from(item->socket, received_, sizeof(received_), address, &length);
  if (n > 0) from.Take(address, length);
  *datagram = received_;
  return n;
}

// Keeps the sender's address, and the datagram behind it.
void MP_UdpReceiver::LeaveBehind(MP_SocketItem* item, const char* datagram, int size) {
  if (item->leftBehind != nullptr) return;
  const MP_SocketAddr& from = MP_SocketAddr::Of(scratchAddr_);
  const int length = from.length();
  item->leftBehind =
      std::make_unique<char[]>(static_cast<std::size_t>(length) + static_cast<std::size_t>(size));
  std::memcpy(item->leftBehind.get(), from.bytes(), static_cast<std::size_t>(length));
  std::memcpy(item->leftBehind.get() + length, datagram, static_cast<std::size_t>(size));
  item->leftBehindAt = length;
  item->leftBehindCount = size;
}
