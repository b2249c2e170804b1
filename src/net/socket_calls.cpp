#include "net/socket_calls.h"

#include <algorithm>

#include "platform/descriptor.h"
#include "platform/kept_error.h"
#include "platform/wait_result.h"

namespace net {
namespace {

constexpr int kLargestDatagram = 65536;

bool Usable(const MP_SocketAddr* address) {
  if (address != nullptr && !address->empty()) return true;
  platform::set_socket_error(platform::kSocketInvalid);
  return false;
}

// What a host gets of a transfer.
int Count(std::int64_t n) { return n < 0 ? -1 : static_cast<int>(n); }

int InvalidLength() {
  platform::set_socket_error(platform::kSocketInvalid);
  return -1;
}

bool TakeAddress(int (*call)(int, void*, int*), int socket, MP_SocketAddr* address) {
  int length = address->room();
  if (call(socket, address->bytes(), &length) != 0) return false;
  address->Written(length);
  return true;
}

}  // namespace

int Open(MP_SocketAddr* address, platform::SocketType type, bool bindIt) {
  if (!Usable(address)) return -1;
  const int socket = platform::socket_open(address->family(), type);
  if (socket < 0 || !bindIt) return socket;
  if (type == platform::SocketType::kStream) platform::socket_set_reuse(socket, 1);
  if (platform::socket_bind(socket, address->bytes(), address->length()) == 0) return socket;
  CloseKeepingError(socket);
  return -1;
}

int Close(int socket) { return socket < 0 ? socket : platform::socket_close(socket); }

void CloseKeepingError(int socket) {
  const int error = platform::socket_error();
  platform::socket_close(socket);
  platform::set_socket_error(error);
}

int Connect(MP_SocketAddr* address, int socket) {
  if (!Usable(address)) return -1;
  const bool own = socket < 0;
  if (own) socket = Open(address, platform::SocketType::kStream, false);
  if (socket < 0) return -1;
  bool connected = platform::socket_connect(socket, address->bytes(), address->length()) == 0;
  if (connected && own && IsConnectedToItself(socket)) {
    connected = false;
    platform::set_socket_error(platform::kSocketConnectionRefused);
  }
  if (connected) return socket;
  if (own) CloseKeepingError(socket);
  return -1;
}

int TryConnect(MP_SocketAddr* address, int socket) {
  if (!Usable(address)) return -1;
  if (platform::socket_connect(socket, address->bytes(), address->length()) == 0) return 1;
  const int error = platform::socket_error();
  if (error == platform::kSocketIsConnected) return 1;
  return error == platform::kSocketWouldBlock ? 0 : -1;
}

int Wait(int socket, int timeoutMs, int mode) {
  return platform::descriptor_wait_or_exception(
      socket, mode == 1 ? platform::WaitFor::kWriting : platform::WaitFor::kReading,
      timeoutMs < 0 ? platform::kNoLimit : static_cast<std::uint32_t>(timeoutMs));
}

int Send(int socket, const void* data, int length) {
  if (length < 0) return InvalidLength();
  return Count(platform::socket_send(socket, data, static_cast<std::size_t>(length)));
}

int SendTo(int socket, MP_SocketAddr* to, const void* data, int length) {
  if (!Usable(to)) return -1;
  if (length < 0) return InvalidLength();
  return Count(platform::socket_send_to(socket, data, static_cast<std::size_t>(length), to->bytes(),
                                        to->length()));
}

int Receive(int socket, MP_String* into, int length) {
  if (into == nullptr || length < 0) return InvalidLength();
  into->Truncate(0);
  if (length > 0 && into->Reserve(length) < 0) return InvalidLength();
  bool truncated;
  const std::int64_t n = platform::socket_receive_message(
      socket, into->End(), static_cast<std::size_t>(length), &truncated);
  platform::KeptError error;
  error.Note();
  if (n >= 0) {
    into->Commit(static_cast<int>(n));
  } else if (truncated) {
    into->Commit(length);
  } else {
    into->Resize(length, '\0');
  }
  return Count(n);
}

int ReceiveFrom(int socket, MP_String* into, MP_SocketAddr* from) {
  if (!Usable(from)) return -1;
  if (into == nullptr || into->Reserve(kLargestDatagram) < 0) return InvalidLength();
  int length = from->room();
  const std::int64_t n =
      platform::socket_receive_from(socket, into->End(), kLargestDatagram, from->bytes(), &length);
  if (n < 0) return -1;
  const int before = into->Length();
  into->Commit(static_cast<int>(n));
  into->Delete(0, before);
  from->Written(length);
  return Count(n);
}

bool TakePeer(int socket, MP_SocketAddr* address) {
  return TakeAddress(platform::socket_peer, socket, address);
}

bool TakeName(int socket, MP_SocketAddr* address) {
  return TakeAddress(platform::socket_name, socket, address);
}

void TakeOwnAddress(int socket, MP_SocketAddr* address) {
  char name[platform::kAddressRoom];
  int length = sizeof(name);
  if (platform::socket_name(socket, name, &length) == 0) address->Take(name, length);
}

bool IsConnectedToItself(int socket) {
  char own[platform::kAddressRoom] = {};
  char peer[platform::kAddressRoom] = {};
  int ownLength = sizeof(own);
  int peerLength = sizeof(peer);
  return platform::socket_name(socket, own, &ownLength) == 0 &&
         platform::socket_peer(socket, peer, &peerLength) == 0 && ownLength == peerLength &&
         std::equal(own, own + ownLength, peer);
}

// Connecting a datagram socket sends nothing, but the system chooses the way.
bool FindRoute(MP_SocketAddr* to, MP_SocketAddr* local) {
  if (local == nullptr || !Usable(to)) return false;
  const int socket = Open(to, platform::SocketType::kDatagram, false);
  if (socket < 0) return false;
  *local = *to;
  local->SetPort(0);
  if (platform::socket_connect(socket, to->bytes(), to->length()) == 0) TakeName(socket, local);
  platform::socket_close(socket);
  return true;
}

}  // namespace net
