// Sockets: plain ints, -1 for none. They close when the process starts another program, and
// sending to nobody raises no signal.
//
// An address is a block of bytes as the system keeps it: the family in the first 16 bits, the
// port from byte 2 on, an IPv4 address from byte 4 on, an IPv6 address from byte 8 on.

#ifndef KALVOBASE_SRC_PLATFORM_SOCKET_H_
#define KALVOBASE_SRC_PLATFORM_SOCKET_H_

#include <cstddef>
#include <cstdint>

namespace platform {

// Starts the socket layer of the process, once.
void sockets_start();

// --- Failures -------------------------------------------------------------------------

// The numbers that hosts see are those of Winsock on every system.
constexpr int kSocketWouldBlock = 10035;
constexpr int kSocketInvalid = 10022;
constexpr int kSocketMessageSize = 10040;
constexpr int kSocketConnectionAborted = 10053;
constexpr int kSocketNoBuffers = 10055;
constexpr int kSocketIsConnected = 10056;
constexpr int kSocketNotConnected = 10057;
constexpr int kSocketConnectionRefused = 10061;

// The number of the last failure of a socket call in the calling thread, and setting it.
int socket_error();
void set_socket_error(int code);
void clear_socket_error();

// --- Addresses ------------------------------------------------------------------------

// Room for an address of any family.
constexpr int kAddressRoom = 128;

constexpr int kInternetLength = 16;
constexpr int kInternet6Length = 24;  // without a scope
constexpr int kInternet6ScopedLength = 28;

extern const int kInternet;  // the families
extern const int kInternet6;

// Stores the first address of a host by its name or number, IPv4 before IPv6, with a port,
// and returns its length. 0, with nothing stored, if there is no such host.
int resolve_host(const char* host, std::uint16_t port, char* address);

// The bytes of an IPv4 address in text form, which are all ones if it is none.
void parse_internet_address(const char* text, char* bytes);

// --- Sockets --------------------------------------------------------------------------

enum class SocketType { kStream, kDatagram };

// These give -1 on failure. The number of a new socket is above those of the standard
// streams.
int socket_open(int family, SocketType type);
int socket_close(int socket);
int socket_bind(int socket, const void* address, int length);

// Waits until a blocking socket is connected, whatever signals arrive.
int socket_connect(int socket, const void* address, int length);

int socket_listen(int socket);

// The result of a connect on a non-blocking socket, as the number that hosts see: 0 for a
// connection.
int socket_connect_error(int socket);

// Ends the connection both ways, also for threads that wait on it.
void socket_shutdown(int socket);

// The addresses of the other end and of this end. `length` is the room, and then the length.
int socket_peer(int socket, void* address, int* length);
int socket_name(int socket, void* address, int* length);

int socket_set_reuse(int socket, int on);
int socket_set_broadcast(int socket, int on);
int socket_set_no_delay(int socket, int on);
int socket_set_blocking(int socket, bool blocking);

// Has the system ask a silent other side after `idle` seconds, and every `interval` seconds from
// then on.
int socket_set_keep_alive(int socket, int idle, int interval);

// Multicast. `own` is the IPv4 address of the interface, four bytes, or null: the system chooses.

// Sets the interface by which a datagram socket sends to groups.
int socket_set_group_interface(int socket, const char* own);

// Keeps from a socket what is sent to groups that only other sockets have joined.
int socket_only_own_groups(int socket);

// With these a socket gets what is sent to a group, and no longer.
int socket_join_group(int socket, const char* group, const char* own);
int socket_leave_group(int socket, const char* group, const char* own);

// --- Transfers ------------------------------------------------------------------------

// All of these give the number of bytes, kTransferWouldBlock or kTransferFailed.

// 0 for a stream that has ended.
std::int64_t socket_receive(int socket, char* buffer, std::size_t size);

// As socket_receive without waiting, also on a blocking socket.
std::int64_t socket_receive_now(int socket, char* buffer, std::size_t size);

// As socket_receive for what may be datagrams: one that is larger than `size` fails and makes
// `*truncated` true, with its first bytes received. With a `size` of 0 it does not wait.
std::int64_t socket_receive_message(int socket, char* buffer, std::size_t size, bool* truncated);

// One datagram and where it came from. One that is larger than `size` fails, with its first bytes
// received.
std::int64_t socket_receive_from(int socket, char* buffer, std::size_t size, void* address,
                                 int* length);

// As socket_receive_from, on a socket for which socket_tell_destination was called. `*unicast`
// becomes true if the datagram was sent to one address of this machine, neither to a group nor as a
// broadcast.
int socket_tell_destination(int socket);
std::int64_t socket_receive_telling(int socket, char* buffer, std::size_t size, void* address,
                                    int* length, bool* unicast);

// How many bytes a stream holds, as far as it can tell: there may be more behind urgent data.
std::int64_t socket_available(int socket);

// As socket_available, but 0 if the stream has ended, kTransferWouldBlock if it holds none yet and
// kTransferFailed if it has failed. Does not wait.
std::int64_t socket_pending(int socket);

std::int64_t socket_send(int socket, const void* data, std::size_t size);

// Sends what goes out at once, also on a blocking socket.
std::int64_t socket_send_now(int socket, const void* data, std::size_t size);

std::int64_t socket_send_to(int socket, const void* data, std::size_t size, const void* address,
                            int length);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_SOCKET_H_
