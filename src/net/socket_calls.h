// The logic of the plain socket calls: what stands behind the functions of socket.h.

#ifndef KALVOBASE_SRC_NET_SOCKET_CALLS_H_
#define KALVOBASE_SRC_NET_SOCKET_CALLS_H_

#include "net/mp_socket_addr.h"
#include "platform/socket.h"
#include "text/mp_string.h"

// Sockets are -1 for none. A null or empty address fails.
namespace net {

int Open(MP_SocketAddr* address, platform::SocketType type, bool bindIt);
int Close(int socket);

// For one that is of no use: the error of the call that failed stays.
void CloseKeepingError(int socket);

int Connect(MP_SocketAddr* address, int socket);

// For a non-blocking socket: 1 if it is connected, 0 if it is on its way, -1 on failure.
int TryConnect(MP_SocketAddr* address, int socket);

int Wait(int socket, int timeoutMs, int mode);
int Send(int socket, const void* data, int length);
int SendTo(int socket, MP_SocketAddr* to, const void* data, int length);
int Receive(int socket, MP_String* into, int length);
int ReceiveFrom(int socket, MP_String* into, MP_SocketAddr* from);

// Writes the address of the other side, or the own, into one that is not empty.
bool TakePeer(int socket, MP_SocketAddr* address);
bool TakeName(int socket, MP_SocketAddr* address);

// The own address into one that may be empty, which stays as it is on failure.
void TakeOwnAddress(int socket, MP_SocketAddr* address);

// True if both ends are the same socket. For a connection to a port of this machine without a
// listener, the system may choose the same port as the client's own.
bool IsConnectedToItself(int socket);

// Stores the address that packets to `to` leave from.
bool FindRoute(MP_SocketAddr* to, MP_SocketAddr* local);

}  // namespace net

#endif  // KALVOBASE_SRC_NET_SOCKET_CALLS_H_
