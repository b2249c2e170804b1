#include "platform/socket.h"

#include <arpa/inet.h>
#include <errno.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/descriptor.h"
#include "platform/posix/new_descriptor.h"
#include "platform/posix/transfer.h"
#include "platform/wait_result.h"

namespace platform {
namespace {

constexpr int kLongestBacklog = 0x7FFFFFFF;  // the system has a limit of its own
constexpr int kKeepAliveProbes = 10;

int SetOption(int socket, int level, int option, int value) {
  return setsockopt(socket, level, option, &value, sizeof(value));
}

// An address as the system takes it. An IPv6 address of a host may lack the scope, which systems
// other than Linux refuse.
class SystemAddress {
 public:
  SystemAddress(const void* address, int length) : address_(address), length_(length) {
    if (length != kInternet6Length) return;
    memcpy(&whole_, address, static_cast<std::size_t>(length));
    if (whole_.sin6_family != AF_INET6) return;
    address_ = &whole_;
    length_ = sizeof(whole_);
  }
  SystemAddress(const SystemAddress&) = delete;
  SystemAddress& operator=(const SystemAddress&) = delete;

  const sockaddr* get() const { return static_cast<const sockaddr*>(address_); }
  socklen_t length() const { return static_cast<socklen_t>(length_); }

 private:
  const void* address_;
  int length_;
  sockaddr_in6 whole_ = {};
};

int ResolveFamily(int family, const char* host, std::uint16_t port, char* address) {
  addrinfo hints = {};
  hints.ai_family = family;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host, nullptr, &hints, &found) != 0) return 0;
  memcpy(address, found->ai_addr, found->ai_addrlen);
  freeaddrinfo(found);
  const std::uint16_t networkPort = htons(port);
  memcpy(address + 2, &networkPort, sizeof(networkPort));
  if (family == AF_INET) return kInternetLength;
  sockaddr_in6 resolved;
  memcpy(&resolved, address, sizeof(resolved));
  return resolved.sin6_scope_id != 0 ? kInternet6ScopedLength : kInternet6Length;
}

// What became of a connect that went on by itself.
int FinishConnect(int socket) {
  if (descriptor_wait(socket, WaitFor::kWriting, kNoLimit) < 0) return -1;
  int error = 0;
  socklen_t size = sizeof(error);
  if (getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) != 0) return -1;
  if (error == 0) return 0;
  errno = error;
  return -1;
}

ip_mreq Membership(const char* group, const char* own) {
  ip_mreq membership = {};
  memcpy(&membership.imr_multiaddr, group, sizeof(membership.imr_multiaddr));
  if (own != nullptr) memcpy(&membership.imr_interface, own, sizeof(membership.imr_interface));
  return membership;
}

int NameOf(int (*call)(int, sockaddr*, socklen_t*), int socket, void* address, int* length) {
  socklen_t size = static_cast<socklen_t>(*length);
  const int result = call(socket, static_cast<sockaddr*>(address), &size);
  if (result == 0) *length = static_cast<int>(size);
  return result;
}

}  // namespace

void sockets_start() {}  // they are there

const int kInternet = AF_INET;
const int kInternet6 = AF_INET6;

int resolve_host(const char* host, std::uint16_t port, char* address) {
  const int length = ResolveFamily(AF_INET, host, port, address);
  return length != 0 ? length : ResolveFamily(AF_INET6, host, port, address);
}

void parse_internet_address(const char* text, char* bytes) {
  const in_addr_t address = inet_addr(text);
  memcpy(bytes, &address, sizeof(address));
}

int socket_open(int family, SocketType type) {
  const int systemType = type == SocketType::kStream ? SOCK_STREAM : SOCK_DGRAM;
  const int made = socket(family, systemType | SOCK_CLOEXEC, 0);
  return above_standard_streams(made);
}

int socket_close(int socket) { return close(socket); }

int socket_bind(int socket, const void* address, int length) {
  // The system would take this, which is also what an unknown host has, and nothing would come.
  sockaddr_in internet;
  if (length >= static_cast<int>(sizeof(internet))) {
    memcpy(&internet, address, sizeof(internet));
    if (internet.sin_family == AF_INET && internet.sin_addr.s_addr == INADDR_BROADCAST) {
      errno = EADDRNOTAVAIL;
      return -1;
    }
  }
  const SystemAddress system(address, length);
  return bind(socket, system.get(), system.length());
}

int socket_connect(int socket, const void* address, int length) {
  const SystemAddress system(address, length);
  for (;;) {
    const int result = connect(socket, system.get(), system.length());
    if (result == 0 || errno != EINTR) return result;
    if (FinishConnect(socket) != 0) return -1;
    sockaddr_storage peer;
    socklen_t peerLength = sizeof(peer);
    if (getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &peerLength) == 0) return 0;
    if (errno != ENOTCONN) return -1;
    // On a local socket the signal ended the attempt.
  }
}

int socket_listen(int socket) { return listen(socket, kLongestBacklog); }

int socket_connect_error(int socket) {
  int error = 0;
  socklen_t size = sizeof(error);
  if (getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) != 0) return socket_error();
  if (error == 0) return 0;
  errno = error;
  return socket_error();
}

void socket_shutdown(int socket) { shutdown(socket, SHUT_RDWR); }

int socket_peer(int socket, void* address, int* length) {
  return NameOf(getpeername, socket, address, length);
}

int socket_name(int socket, void* address, int* length) {
  return NameOf(getsockname, socket, address, length);
}

int socket_set_reuse(int socket, int on) { return SetOption(socket, SOL_SOCKET, SO_REUSEADDR, on); }

int socket_set_broadcast(int socket, int on) {
  return SetOption(socket, SOL_SOCKET, SO_BROADCAST, on);
}

int socket_set_no_delay(int socket, int on) {
  return SetOption(socket, IPPROTO_TCP, TCP_NODELAY, on);
}

int socket_set_blocking(int socket, bool blocking) {
  int nonBlocking = blocking ? 0 : 1;
  return ioctl(socket, FIONBIO, &nonBlocking);
}

int socket_set_keep_alive(int socket, int idle, int interval) {
  if (SetOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1) != 0 ||
      SetOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, idle) != 0 ||
      SetOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, interval) != 0) {
    return -1;
  }
  return SetOption(socket, IPPROTO_TCP, TCP_KEEPCNT, kKeepAliveProbes);
}

int socket_set_group_interface(int socket, const char* own) {
  return own != nullptr ? setsockopt(socket, IPPROTO_IP, IP_MULTICAST_IF, own, sizeof(in_addr)) : 0;
}

int socket_only_own_groups(int socket) {
  return SetOption(socket, IPPROTO_IP, IP_MULTICAST_ALL, 0);
}

int socket_join_group(int socket, const char* group, const char* own) {
  const ip_mreq membership = Membership(group, own);
  if (socket_only_own_groups(socket) != 0) return -1;
  const int joined =
      setsockopt(socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, &membership, sizeof(membership));
  return joined != 0 && errno == EADDRINUSE ? 0 : joined;  // it is in it already
}

int socket_leave_group(int socket, const char* group, const char* own) {
  const ip_mreq membership = Membership(group, own);
  return setsockopt(socket, IPPROTO_IP, IP_DROP_MEMBERSHIP, &membership, sizeof(membership));
}

std::int64_t socket_available(int socket) {
  int count = 0;
  return ioctl(socket, FIONREAD, &count) == 0 ? count : 0;
}

std::int64_t socket_pending(int socket) {
  const std::int64_t count = socket_available(socket);
  if (count > 0) return count;
  char room[256];
  return transfer([=, &room] { return recv(socket, room, sizeof(room), MSG_PEEK | MSG_DONTWAIT); });
}

std::int64_t socket_receive(int socket, char* buffer, std::size_t size) {
  return transfer([=] { return recv(socket, buffer, size, 0); });
}

std::int64_t socket_receive_now(int socket, char* buffer, std::size_t size) {
  return transfer([=] { return recv(socket, buffer, size, MSG_DONTWAIT); });
}

std::int64_t socket_receive_message(int socket, char* buffer, std::size_t size, bool* truncated) {
  iovec piece = {buffer, size};
  msghdr message = {};
  message.msg_iov = &piece;
  message.msg_iovlen = 1;
  const std::int64_t n = transfer(
      [socket, &message, size] { return recvmsg(socket, &message, size == 0 ? MSG_DONTWAIT : 0); });
  *truncated = false;
  if (n == kTransferWouldBlock && size == 0) return 0;
  *truncated = n >= 0 && (message.msg_flags & MSG_TRUNC) != 0;
  if (!*truncated) return n;
  errno = EMSGSIZE;
  return kTransferFailed;
}

std::int64_t socket_receive_from(int socket, char* buffer, std::size_t size, void* address,
                                 int* length) {
  socklen_t room = static_cast<socklen_t>(*length);
  const std::int64_t n = transfer([=, &room] {
    return recvfrom(socket, buffer, size, MSG_TRUNC, static_cast<sockaddr*>(address), &room);
  });
  if (n < 0) return n;
  *length = static_cast<int>(room);
  if (n <= static_cast<std::int64_t>(size)) return n;
  errno = EMSGSIZE;
  return kTransferFailed;
}

int socket_tell_destination(int socket) { return SetOption(socket, IPPROTO_IP, IP_PKTINFO, 1); }

std::int64_t socket_receive_telling(int socket, char* buffer, std::size_t size, void* address,
                                    int* length, bool* unicast) {
  iovec piece = {buffer, size};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(in_pktinfo))];
  msghdr message = {};
  message.msg_iov = &piece;
  message.msg_iovlen = 1;
  const std::int64_t n = transfer([&] {
    message.msg_name = address;
    message.msg_namelen = static_cast<socklen_t>(*length);
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    return recvmsg(socket, &message, 0);
  });
  *unicast = false;
  if (n < 0) return n;
  *length = static_cast<int>(message.msg_namelen);
  const cmsghdr* const header = CMSG_FIRSTHDR(&message);
  if (header != nullptr && header->cmsg_level == IPPROTO_IP && header->cmsg_type == IP_PKTINFO) {
    in_pktinfo info;
    memcpy(&info, CMSG_DATA(header), sizeof(info));
    // For a group or a broadcast the second is an address of the interface.
    *unicast = info.ipi_addr.s_addr == info.ipi_spec_dst.s_addr;
  }
  if ((message.msg_flags & MSG_TRUNC) == 0) return n;
  errno = EMSGSIZE;
  return kTransferFailed;
}

std::int64_t socket_send(int socket, const void* data, std::size_t size) {
  return transfer([=] { return send(socket, data, size, MSG_NOSIGNAL); });
}

std::int64_t socket_send_now(int socket, const void* data, std::size_t size) {
  return transfer([=] { return send(socket, data, size, MSG_NOSIGNAL | MSG_DONTWAIT); });
}

std::int64_t socket_send_to(int socket, const void* data, std::size_t size, const void* address,
                            int length) {
  const SystemAddress system(address, length);
  return transfer([=, &system] {
    return sendto(socket, data, size, MSG_NOSIGNAL, system.get(), system.length());
  });
}

}  // namespace platform
