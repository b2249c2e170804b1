// Socket addresses, and the plain socket calls.
//
//   Kalvo_SocketAddr server;
//   server.Init("localhost", port);
//   int sock = Kalvo_SOCK_Connect(&server, -1);
//   if (sock < 0) return Kalvo_SOCK_GetLastError();  // 10061: refused
//   Kalvo_SOCK_Write(sock, "hello\n", 6);
//   Kalvo_String answer;
//   if (Kalvo_SOCK_Wait(sock, 1500, 0) > 0) Kalvo_SOCK_Read(sock, &answer, 4096);
//   Kalvo_SOCK_Close(sock);
//
// A socket is an int, -1 for none, and may be mixed freely with the system's own calls. The
// functions may be called from any thread; they go on after signals, and none raises one.

#ifndef KALVOBASE_SOCKET_H_
#define KALVOBASE_SOCKET_H_

#if defined(_WIN32)
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#endif

#include <cstddef>

#include "kalvobase/types.h"

class Kalvo_String;
class MP_SocketAddr;

// A resolved address: a name that is given to it is looked up at once, and the object keeps
// the binary address, its text and its port. Copies are deep. One object belongs to one
// thread at a time.
class KALVO_API Kalvo_SocketAddr {
 public:
  // Empty.
  Kalvo_SocketAddr();
  Kalvo_SocketAddr(const Kalvo_SocketAddr& other);
  Kalvo_SocketAddr& operator=(const Kalvo_SocketAddr& other);
  virtual ~Kalvo_SocketAddr();

  // Takes the first address of a host by its name or number, IPv4 before IPv6, and the low
  // 16 bits of `port`. A null or empty `host` gives 0.0.0.0. Returns 1, also for a host that
  // is not found: its address is 255.255.255.255, and no connect succeeds.
  int Init(const char* host, int port);
  int Init(std::nullptr_t, int port) { return Init(static_cast<const char*>(nullptr), port); }

  // Takes `length` bytes as they are. Returns 1.
  int Init(struct sockaddr* addr, int length);

  // Empties the object.
  void Reset();

  // Takes port and text anew from the binary address, after somebody has written to it.
  void ReInit();

  // 1 if `host` resolves to this address, whatever the ports; 0 if not, for null, for a
  // text that begins with '/', and in an empty object.
  int IsSameAddr(const char* host);

  // The address as digits and dots; "" in an empty object and for IPv6.
  const char* GetAddr();

  // 0 in an empty object.
  int GetPort();

  // The binary address: one record with only ai_family, ai_addrlen and ai_addr filled, null
  // in an empty object. It belongs to the object and is good until the next Init, Reset or
  // assignment. ai_addr has room for an address of any family; call ReInit after writing to
  // it.
  struct addrinfo* GetInfo();

 private:
  friend class MP_SocketAddr;

  MP_SocketAddr* impl_;
};

// 1 if hosts, ports and families are equal, else 0. An empty address equals none.
KALVO_API int operator==(const Kalvo_SocketAddr& a, const Kalvo_SocketAddr& b);

extern "C" {

// Starts the socket layer. Everything here that needs it does so by itself.
KALVO_API void Kalvo_SOCK_Init(void);

// The error of the last socket call that failed in this thread, the system's own calls
// included; ask before any other system call can fail. The numbers are those of
// Winsock on every system: 10035 would block, 10048 in use, 10049 address not available,
// 10054 reset, 10056 connected, 10060 timed out, 10061 refused.
KALVO_API int Kalvo_SOCK_GetLastError(void);
KALVO_API void Kalvo_SOCK_SetLastError(int code);

// A new socket of the address's family, bound to the address if `bindIt` is not 0; for TCP
// also while connections of a server that has ended still linger there. -1 on failure.
KALVO_API int Kalvo_SOCK_OpenUdpForAddr(Kalvo_SocketAddr* addr, int bindIt);
KALVO_API int Kalvo_SOCK_OpenTcpForAddr(Kalvo_SocketAddr* addr, int bindIt);

// 0, or -1 on failure. A negative `sock` is returned as it is.
KALVO_API int Kalvo_SOCK_Close(int sock);

// Connects and waits as long as that takes. With a negative `sock` a new TCP socket is made,
// which is closed again on failure. Returns the socket, or -1.
KALVO_API int Kalvo_SOCK_Connect(Kalvo_SocketAddr* addr, int sock);

// Waits until the socket can be written to (`mode` 1) or read from (any other `mode`), or
// has something exceptional to tell: above 0. 0 after `timeoutMs` milliseconds, a negative
// number meaning no limit; -1 on failure.
KALVO_API int Kalvo_SOCK_Wait(int sock, int timeoutMs, int mode);

// Sends up to `length` bytes, once. The number that was sent, or -1.
KALVO_API int Kalvo_SOCK_Write(int sock, const void* data, int length);
KALVO_API int Kalvo_SOCK_Send(int sock, Kalvo_SocketAddr* to, const char* data, int length);

// Receives up to `length` bytes, once, and makes them the content of *into. Their number, 0
// when the other side has closed; -1 on failure, and *into has `length` bytes. A datagram that
// is larger fails with 10040, and *into has its first `length` bytes.
KALVO_API int Kalvo_SOCK_Read(int sock, Kalvo_String* into, int length);

// Receives one datagram of up to 65,536 bytes as the content of *into, and its sender in
// *from, which must not be empty beforehand. The number of bytes, or -1.
KALVO_API int Kalvo_SOCK_RecvFrom(int sock, Kalvo_String* into, Kalvo_SocketAddr* from);

// Each sets an option of a socket: 0, or -1 on failure.
KALVO_API int Kalvo_Sock_Opt_Reuse(int sock, int on);
KALVO_API int Kalvo_Sock_Opt_BroadCast(int sock, int on);
KALVO_API int Kalvo_Sock_Opt_NoDelay(int sock, int on);

// Makes a socket blocking or, for 0, non-blocking: 1, or 0 on failure.
KALVO_API int Kalvo_Sock_Opt_Block(int sock, int blocking);

// Does nothing.
KALVO_API void Kalvo_Sock_Opt_AllError(void);

// Stores in *local the address that packets to `dest` leave from; no packet is sent. If the
// system does not tell, that is the address of `dest` with port 0. 1; 0 if `dest` is empty
// or no socket can be made.
KALVO_API int Kalvo_GetRoutingInf(Kalvo_SocketAddr* dest, Kalvo_SocketAddr* local);
}

#endif  // KALVOBASE_SOCKET_H_
