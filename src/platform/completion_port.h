// The completion port: one queue of what has become of the operations on many sockets. The
// system feeds it, any thread may post to it, and one thread drains it.
//
// A socket is added under a key and is named by a tag from then on. Its operations complete
// one by one; a completion carries the key, the context and the tag, so that the receiver can
// tell it from one of an earlier socket. Nothing is handed out any more for a socket that was
// removed, whatever had happened by then, nor for the next one that gets its number.
//
// Arming a read of a stream makes no system call, and a completion shares its system call with
// all that happened at that time.

#ifndef KALVOBASE_SRC_PLATFORM_COMPLETION_PORT_H_
#define KALVOBASE_SRC_PLATFORM_COMPLETION_PORT_H_

#include <cstddef>
#include <cstdint>

#include "platform/socket.h"

namespace platform {

struct CompletionPort;

// Names the time of one socket at a port. 0 names none.
using PortTag = std::uint64_t;

enum class PortOperation { kPosted, kRead, kWrite, kAccept };

struct Completion {
  PortOperation operation = PortOperation::kPosted;
  std::uint32_t key = 0;
  void* context = nullptr;
  PortTag tag = 0;  // for an accept that of the listener

  // Of a write: what has gone out since it was started.
  std::size_t bytes = 0;

  // Of an accept: the new socket, which is the receiver's, and the other side's address.
  int socket = -1;
  int addressLength = 0;
  char address[kAddressRoom];
};

// Null on failure. Nobody may use a port that is being destroyed; the sockets stay open.
CompletionPort* port_create();
void port_destroy(CompletionPort* port);

// For a child of fork: closes what the port has of the system, and leaves the rest as it is.
void port_abandon(CompletionPort* port);

enum class PortSocket { kStream, kDatagram, kListener };

// Adds a socket: its tag, or 0 on failure. It is removed before it is closed. These and all
// that follow may be called from any thread, but for port_wait and port_next.
PortTag port_add(CompletionPort* port, int socket, PortSocket kind, std::uint32_t key,
                 void* context);
void port_remove(CompletionPort* port, PortTag tag);

// Makes a kPosted completion. With a tag it is dropped if that socket is removed meanwhile.
void port_post(CompletionPort* port, std::uint32_t key, void* context, PortTag tag);

// What the caller knows of a socket when it starts a read. Of a datagram socket it need not know
// anything; with kMore the read completes at once.
enum class PortReadAfter {
  kEmpty,  // it was found empty, or was not read yet
  kTaken,  // all that it told to hold, or gave, was taken
  kMore,   // something was left
};

// Starts a read of no bytes, which completes when something can be read, or the connection has
// ended or failed, and takes nothing off the socket: which it is, the next call on it tells.
// False on failure.
bool port_read(CompletionPort* port, PortTag tag, PortReadAfter after);

// The same for a datagram socket, but it completes after `ms` milliseconds, whatever there is to
// read then.
bool port_read_later(CompletionPort* port, PortTag tag, std::uint32_t ms);

// Starts a write: the number of bytes that went out at once, or kTransferFailed. If these are
// not all, a completion tells when to send on from where the bytes end that went out by then.
// One write at a time, and its buffer stays until it has completed or the socket was removed.
std::int64_t port_send(CompletionPort* port, PortTag tag, int socket, const char* data,
                       std::size_t size);

// Starts an accept on a listener, which completes under a key and a context of its own. Those
// that wait are served in turn; connections for which none waits stay with the system. Without
// descriptors nothing is accepted, and it is tried again ten times a second.
void port_accept(CompletionPort* port, PortTag listener, std::uint32_t key, void* context);

// The next completion, waiting up to kPortWaitMs milliseconds for it. False if there is none yet.
constexpr int kPortWaitMs = 100;
bool port_wait(CompletionPort* port, Completion* completion);

// The same without waiting, as long as the system need not be asked.
bool port_next(CompletionPort* port, Completion* completion);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_COMPLETION_PORT_H_
