// Waiting for connects that are under way: each has a slot, a small number of the caller's.

#ifndef KALVOBASE_SRC_PLATFORM_CONNECT_EVENTS_H_
#define KALVOBASE_SRC_PLATFORM_CONNECT_EVENTS_H_

#include <cstdint>

namespace platform {

struct ConnectEvents;

// Null on failure. The other calls take a null object, wait as long and tell of nothing. For
// one thread.
ConnectEvents* connect_events_create();
void connect_events_destroy(ConnectEvents* events);

// Tells the slot once, when the connect has come to its end, well or badly. Nothing is told of
// a socket that was closed before. One that lives on is removed after that.
bool connect_events_add(ConnectEvents* events, int socket, int slot);
void connect_events_remove(ConnectEvents* events, int socket);

// The slot of a connect that has come to its end; -1 after `ms` milliseconds.
int connect_events_wait(ConnectEvents* events, std::uint32_t ms);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_CONNECT_EVENTS_H_
