#include "net/mp_udp_receiver.h"

#include <cstring>

#include "kalvobase/kernel_debug.h"
#include "net/handler_call.h"
#include "net/mp_udp_port.h"
#include "net/socket_calls.h"
#include "platform/descriptor.h"
#include "platform/kept_error.h"

namespace {

// Others may use the number, too.
int OpenShared(const MP_SocketAddr& address) {
  const int socket = platform::socket_open(platform::kInternet, platform::SocketType::kDatagram);
  if (socket < 0) return -1;
  platform::socket_set_reuse(socket, 1);
  if (platform::socket_bind(socket, address.bytes(), address.length()) == 0) return socket;
  net::CloseKeepingError(socket);
  return -1;
}

int OpenSocket(MP_UdpPort* port, bool broadcast) {
  MP_SocketAddr* const local = &MP_SocketAddr::Of(port->localAddr);
  if (!broadcast) return net::Open(local, platform::SocketType::kDatagram, port->isBound());
  if (port->isBound()) return OpenShared(*local);
  return platform::socket_open(platform::kInternet, platform::SocketType::kDatagram);
}

int OpenForGroups(const MP_UdpPort& port) {
  MP_SocketAddr all = MP_SocketAddr::Of(port.localAddr);
  all.Widen();
  const int socket = OpenShared(all);
  if (socket < 0) return -1;
  if (platform::socket_tell_destination(socket) == 0 &&
      platform::socket_only_own_groups(socket) == 0) {
    return socket;
  }
  net::CloseKeepingError(socket);
  return -1;
}

// Opens the socket of a port and, for a port for groups on an address of its own, the one for
// groups; else `*groupSocket` is -1. A number that the system chooses is free at that address,
// while the second socket needs it at all addresses, so it takes some tries. False on failure.
bool OpenSockets(MP_UdpPort* port, bool broadcast, int* socket, int* groupSocket) {
  constexpr int kTries = 16;
  MP_SocketAddr* const local = &MP_SocketAddr::Of(port->localAddr);
  const bool anyNumber = local->port() == 0;
  *groupSocket = -1;
  for (int tries = anyNumber ? kTries : 1; tries > 0; --tries) {
    if (anyNumber) local->SetPort(0);
    *socket = OpenSocket(port, broadcast);
    if (*socket < 0) return false;
    if (!port->isBound() || anyNumber) net::TakeOwnAddress(*socket, local);
    if (!broadcast || !port->isBound() || port->OwnAddress() == nullptr) return true;
    *groupSocket = OpenForGroups(*port);
    if (*groupSocket >= 0) return true;
    net::CloseKeepingError(*socket);
  }
  return false;
}

}  // namespace

std::uint32_t MP_UdpReceiver::OpenUdp(Kalvo_UdpHandler* handler, bool broadcast) {
  MP_UdpPort& port = MP_UdpPort::Of(*handler);
  int socket;
  int groupSocket;
  if (!OpenSockets(&port, broadcast, &socket, &groupSocket)) return 0;
  const bool ofGroups = groupSocket >= 0;
  port.receives = true;
  port.groupSocket = groupSocket;
  port.socket = socket;
  const platform::PortTag tag = Add(handler, socket, false);
  const platform::PortTag groupTag = ofGroups ? Add(handler, groupSocket, true) : 0;
  if (tag == 0 || ofGroups != (groupTag != 0)) {
    platform::KeptError error;
    error.Note();
    EndPort(&port);
    port.SetId(0);
    port.SetGroupId(0);
    return 0;
  }
  // From here on the handler is called, and may close the port.
  const std::uint32_t id = port.id();
  platform::port_read(core_->port(), tag, platform::PortReadAfter::kTaken);
  if (ofGroups) platform::port_read(core_->port(), groupTag, platform::PortReadAfter::kTaken);
  return id;
}

// Gives a socket a record. Returns its tag at the port, or 0 with the socket closed.
platform::PortTag MP_UdpReceiver::Add(Kalvo_UdpHandler* handler, int socket, bool ofGroups) {
  MP_SocketItem* const item =
      platform::socket_set_blocking(socket, false) == 0 ? core_->pool()->Alloc() : nullptr;
  if (item == nullptr) {
    net::CloseKeepingError(socket);
    return 0;
  }
  MP_UdpPort& port = MP_UdpPort::Of(*handler);
  const MP_SocketItemGuard guard(item);
  item->type = SOCK_KIND_UDP;
  item->handler = handler;
  item->localAddr = &port.localAddr;
  item->ofGroups = ofGroups;
  if (!core_->TakeSocket(item, socket, platform::PortSocket::kDatagram)) {
    core_->pool()->Free(item);
    return 0;
  }
  if (ofGroups) {
    port.SetGroupId(item->id);
  } else {
    port.SetId(item->id);
  }
  return item->tag;
}

// Closes the sockets of a port, which stays open for its handler.
void MP_UdpReceiver::EndPort(MP_UdpPort* port) {
  port->socket = -1;  // before the numbers can be another's
  port->groupSocket = -1;
  for (const std::uint32_t id : {port->id(), port->groupId()}) {
    MP_SocketItem* const item = core_->pool()->Find(id);
    if (item == nullptr) continue;
    const MP_Guard guard(&item->stateLock);
    if (item->id == id) core_->pool()->Free(item);
  }
}

void MP_UdpReceiver::ProcessUdpRead(MP_SocketItem* item) {
  const std::uint32_t id = item->id;
  MP_UdpPort& port = MP_UdpPort::Of(*static_cast<Kalvo_UdpHandler*>(item->handler));
  if (!port.receives) return;
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
    EndPort(&MP_UdpPort::Of(*handler));
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
    port.receives = false;
    return;
  }
  Next(item);
}

void MP_UdpReceiver::GoOn(MP_SocketItem* item) {
  item->leftBehind.reset();
  platform::port_read(core_->port(), item->tag, platform::PortReadAfter::kTaken);
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
  bool unicast = false;
  const std::int64_t n =
      item->ofGroups ? platform::socket_receive_telling(item->socket, received_, sizeof(received_),
                                                        address, &length, &unicast)
                     : platform::socket_receive_from(item->socket, received_, sizeof(received_),
                                                     address, &length);
  if (unicast) return platform::kTransferWouldBlock;  // for another address of this machine
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
