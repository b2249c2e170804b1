// Handlers: TCP connections, TCP servers and UDP ports that work by themselves and tell what
// happens in virtual calls.
//
//   class Echo : public Kalvo_TcpClientHandler {
//    public:
//     ~Echo() override { Close(); }  // while buffer_ is still there
//     void* AllocBufferForRead(long& size) override {
//       buffer_.resize(static_cast<std::size_t>(size));
//       return buffer_.data();
//     }
//     int OnDataOk(void* data, long length) override {
//       SendData(static_cast<const char*>(data), static_cast<int>(length));
//       return 0;
//     }
//     void OnConnectOk(Kalvo_SocketAddr*, int) override {}
//     int OnConnectFaild(Kalvo_SocketAddr*, int) override { return 1000; }  // again after 1 s
//     int OnDisConnect(Kalvo_SocketAddr*, int) override { return 1000; }
//
//    private:
//     std::vector<char> buffer_;
//   };
//   ...
//   Echo echo;
//   echo.Connect("127.0.0.1", port);
//
// An engine serves the handlers: all clients and UDP ports of the process share one, and each
// server has one of its own, which also serves the connections that it accepts. An engine has a
// thread that makes the calls, and a thread that connects, which makes some of them. For one
// connection they come one at a time. A call must return soon: all others of its engine wait.
//
// Close, from any thread, waits for a call that runs, unless it is made from that very call, and
// for bytes that a call has asked for in advance. If a call closes its own connection and goes on,
// a second Close finds nothing to wait for. After it has returned no call of that connection runs
// or will run, and the handler may be destroyed. Two calls that each close the connection of the
// other wait for each other for ever. A derived class closes in its own destructor: when the base
// class does, the operations that the engine calls are gone already.
//
// A copy of a handler is the same connection, with no count of users: exactly one of them may
// be destroyed, and the engine calls the one on which Connect, Listen or Open was called.
//
// Errors that the calls and the log lines tell are the numbers of Winsock on every system: 10053
// aborted, 10054 reset, 10060 timed out, 10061 refused.

#ifndef KALVOBASE_HANDLER_H_
#define KALVOBASE_HANDLER_H_

#include <cstdarg>

#include "kalvobase/socket.h"
#include "kalvobase/types.h"

class Kalvo_String;
class Kalvo_TcpClientHandler;
class Kalvo_TcpServerHandler;
class Kalvo_UdpHandler;
class MP_TcpClient;
class MP_TcpServer;
class MP_UdpPort;

// What a handler needs of an engine. Hosts that bring one of their own derive from it and hand
// it to Kalvo_TcpClientHandler::SetManager; others need not know it.
class Kalvo_SocketManagerHelper {
 public:
  virtual ~Kalvo_SocketManagerHelper() {}

  // These give the id of what was begun, or 0.
  virtual unsigned long Connect(Kalvo_TcpClientHandler* handler) = 0;
  virtual unsigned long Listen(Kalvo_TcpServerHandler* handler) = 0;
  virtual unsigned long OpenUdp(Kalvo_UdpHandler* handler, bool broadcast) = 0;

  // Ends what has this id. Nothing happens if it has ended.
  virtual void Close(unsigned long id) = 0;

  // 1: the string was taken, the engine deletes it, and `data` is null. 0: it was not.
  virtual int Send(unsigned long id, Kalvo_String*& data) = 0;

  virtual void StopThreads() = 0;
  virtual bool GetBusy() = 0;
  virtual void SetBusy(bool busy) = 0;
  virtual int GetKind() = 0;
  virtual void SetKind(int kind) = 0;
};

// What all handlers have in common.
class KALVO_API Kalvo_SocketHandlerObj {
 public:
  Kalvo_SocketHandlerObj();
  Kalvo_SocketHandlerObj(const Kalvo_SocketHandlerObj& other);
  Kalvo_SocketHandlerObj& operator=(const Kalvo_SocketHandlerObj& other);
  virtual ~Kalvo_SocketHandlerObj();

  virtual void* AllocBufferForRead(long& size) = 0;
};

// One TCP connection: one that the host makes, or one that a server accepted.
//
// One that the host makes can be kept up: what OnConnectFaild and OnDisConnect return is when
// to try again.
//
// SendData, Printf and vPrintf may be called from any thread, from within a call, too, while no
// Close runs. Connect, Close and InitLocal are for one thread at a time.
class KALVO_API Kalvo_TcpClientHandler : public Kalvo_SocketHandlerObj {
 public:
  Kalvo_TcpClientHandler();
  Kalvo_TcpClientHandler(const Kalvo_TcpClientHandler& other);
  Kalvo_TcpClientHandler& operator=(const Kalvo_TcpClientHandler& other);

  // As Close.
  ~Kalvo_TcpClientHandler() override;

  // Connections that are made later come from this address: a port of 0 leaves the port to the
  // system. Nothing happens between Connect and Close.
  void InitLocal(const char* host, int port);

  // Begins to connect and returns the connection's id, which is above 0; OnConnectOk or
  // OnConnectFaild tells what becomes of it, possibly before this returns. An attempt starts
  // within 100 ms, and up to 64 are under way in an engine. 0 for a null `host`, until Close was
  // called after an earlier Connect, and if there are too many connections already.
  unsigned long Connect(const char* host, int port);

  // Ends the connection, or the attempts to make it, with no call; what was not sent yet is
  // dropped. After that Connect may be called again.
  void Close();

  // The two ends. They belong to the handler. The own address is told when the connection
  // stands, unless InitLocal gave it.
  Kalvo_SocketAddr* GetLocalAddr();
  Kalvo_SocketAddr* GetPeerAddr();

  // Sends a copy of `length` bytes and returns `length`, also if there is nothing to send: for a
  // null `data`, or a `length` below 1. Returns 0 if the connection has ended, or if the other side
  // has taken nothing for more than 12 s with more than 1,024 pieces waiting, which ends the
  // connection as soon as nothing waits to be read; -1 without a connection. A number above 0 says
  // that the bytes will be sent in their turn, not that they have arrived. What is sent before
  // OnConnectOk is dropped, with the same result.
  int SendData(const char* data, int length);

  // The same without a copy. 1: the connection deletes the string, and `data` is null. 0 and -1:
  // it stays the caller's.
  int SendData(Kalvo_String*& data);

  // Send a text, formatted as by Kalvo_String::sprintf, and return its length, 0 or -1.
  int Printf(const char* format, ...);
  int vPrintf(const char* format, va_list args);

  // Gives a handler without a connection another engine, which stays the caller's; with null it
  // uses the shared one. A handler that is accepted gets the engine of its server. Returns 1.
  int SetManager(Kalvo_SocketManagerHelper* manager);

  // The rest is called by the engine. What these calls throw ends there.

  // Bytes have arrived, `size` in all. Returns where to put them, with room for `size` bytes,
  // which may be lowered to less: the rest is told of next. With `size` set to 0 nothing is
  // taken yet: the bytes wait, up to 2,048 of them, and are told of again, with what has come by
  // then; more of them end the connection, as does a null pointer with a `size` that is not 0,
  // and a `size` that is not above what waits from the last time. A raised `size` is waited for
  // on an accepted connection, with all others of the engine, and ends one of the host's.
  //
  // The memory stays the handler's. If reading fails, OnDataOk is not called.
  void* AllocBufferForRead(long& size) override = 0;

  // The connection stands. `active`: 1 if the host made it, 0 if it was accepted.
  virtual void OnConnectOk(Kalvo_SocketAddr* peer, int active) = 0;

  // An attempt has failed. Returns after how many milliseconds to try again; below 0 never: no
  // further call comes. If no socket can be made or bound there is no other attempt whatever it
  // returns.
  virtual int OnConnectFaild(Kalvo_SocketAddr* peer, int error) = 0;

  // The connection has ended: 0 if the other side closed it or takes nothing any more, -1 if a call
  // of the handler made the engine end it, else an error. What was not sent yet is lost. Returns
  // the same as OnConnectFaild; a connection that was accepted is never made again. If bytes were
  // being sent and another attempt is wanted, OnConnectFaild is called for them at once, with
  // 10053, and what that returns counts.
  virtual int OnDisConnect(Kalvo_SocketAddr* peer, int error) = 0;

  // The bytes have come to where AllocBufferForRead had them put. Returns 0 or more to go on;
  // below 0 ends the connection for good, with OnDisConnect. What it throws is told on the
  // kernel debug channel, and the connection goes on.
  virtual int OnDataOk(void* data, long length);

 private:
  friend class MP_TcpClient;

  MP_TcpClient* impl_;
};

// One listening TCP socket, for IPv4.
class KALVO_API Kalvo_TcpServerHandler : public Kalvo_SocketHandlerObj {
 public:
  Kalvo_TcpServerHandler();
  Kalvo_TcpServerHandler(const Kalvo_TcpServerHandler& other);
  Kalvo_TcpServerHandler& operator=(const Kalvo_TcpServerHandler& other);

  // As Close.
  ~Kalvo_TcpServerHandler() override;

  // Listens at an address of this machine, with a null or empty `host` at all of them, and
  // returns an id above 0. 0 on failure, and until Close was called after an earlier Listen.
  // With a port of 0 the system chooses one, which GetLocalAddr tells. Listen and Close are for
  // one thread at a time.
  unsigned long Listen(const char* host, int port);

  // Stops listening. Connections that were accepted stay.
  void Close();

  Kalvo_SocketAddr* GetLocalAddr();

  // Called by the engine for each client. Returns a handler, which the host has made and owns,
  // for the new connection; its OnConnectOk follows. Null, or throwing, refuses the client. `peer`
  // is good for the call only.
  //
  // A handler may be returned for several clients. It serves all of them until each ends:
  // OnConnectOk and OnDisConnect pass the peer that they are about, the calls for bytes do not.
  // SendData and GetPeerAddr are for the last client. Close and the destructor end all; close the
  // server before the handler is destroyed. While it has a connection that it made itself, or that
  // another server accepted, the client is refused.
  virtual Kalvo_TcpClientHandler* OnAcceptClient(Kalvo_SocketAddr* peer) = 0;

 private:
  friend class MP_TcpServer;

  void* AllocBufferForRead(long& size) override;

  MP_TcpServer* impl_;
};

// One UDP port.
//
// SendData, Printf and vPrintf may be called from any thread, while no Close runs: they send at
// once, or fail. The others are for one thread at a time. All may be called from within a call.
class KALVO_API Kalvo_UdpHandler : public Kalvo_SocketHandlerObj {
 public:
  Kalvo_UdpHandler();
  Kalvo_UdpHandler(const Kalvo_UdpHandler& other);
  Kalvo_UdpHandler& operator=(const Kalvo_UdpHandler& other);

  // As Close.
  ~Kalvo_UdpHandler() override;

  // Opens a port and returns an id above 0; calls may come before it returns. 0 on failure, and
  // until Close was called after an earlier Open. With a null `host` and a `port` of 0 the port is
  // not bound to an address: it gets a number with the first datagram that it sends.
  unsigned long Open(const char* host, int port);

  // The same for a port that is to be in a multicast group, whose number others may also use. With
  // a `host`, which must be an address of this machine, it gets what is sent to that address, to
  // its groups and as a broadcast, sends from that address, and its groups are on that interface.
  // Without one it gets what comes to any address.
  unsigned long OpenBroadCastPort(const char* host, int port);

  // Closes the port. After that Open may be called again.
  void Close();

  // The own address, which belongs to the handler. That of a port that is not bound has no number.
  Kalvo_SocketAddr* GetLocalAddr();

  // Sends one datagram: the number of bytes; below 0 if it could not be sent, with the error from
  // Kalvo_SOCK_GetLastError, and -1 if the port is closed.
  int SendData(Kalvo_SocketAddr* to, const char* data, int length);
  int Printf(Kalvo_SocketAddr* to, const char* format, ...);
  int vPrintf(Kalvo_SocketAddr* to, const char* format, va_list args);

  // Allows datagrams to broadcast addresses, or, with 0, forbids them.
  void EnableBroadcast(int on);

  // Joins an IPv4 multicast group. `port` is not used.
  void AddBroadcastGroup(const char* address, int port);

  // Leaves the group that was joined last. `address` is not used.
  void ExitBroadcastGroup(const char* address);

  // The rest is called by the engine. What these calls throw ends there.

  // A datagram of `size` bytes has arrived. Returns where to put it, with room for `size` bytes,
  // which may be lowered: a datagram that is larger is cut off. With `size` set to 0 the datagram
  // stays, and the call comes again at once, which is after a millisecond. A null pointer with
  // another `size`, or throwing, closes the port's socket for good. Empty datagrams are not told.
  void* AllocBufferForRead(long& size) override = 0;

  // The datagram has come. `length` is its size, or -1 if it could not be received whole, with
  // the error from Kalvo_SOCK_GetLastError: 10040 for one that was cut off. `from` is good for
  // the call only, and not to be changed. Below 0 ends receiving, but not sending.
  virtual int OnDataOk(void* data, long length, Kalvo_SocketAddr* from,
                       Kalvo_SocketAddr* local) = 0;

 private:
  friend class MP_UdpPort;

  MP_UdpPort* impl_;
};

#endif  // KALVOBASE_HANDLER_H_
