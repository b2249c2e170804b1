// The socket managers of the process, in the order in which they were made.

#ifndef KALVOBASE_SRC_NET_SOCKET_MANAGERS_H_
#define KALVOBASE_SRC_NET_SOCKET_MANAGERS_H_

#include "net/mp_socket_manager.h"

namespace socket_managers {

// The first of its kind; of servers' the first that is not in use, which is in use from then on.
// If there is none, one is made. Null if that failed, and when the library has stopped.
MP_SocketManager* GetManager(int kind);

// The manager, if it is one of these; else null.
MP_SocketManager* FindManager(Kalvo_SocketManagerHelper* manager);

// The steps of the library's start and stop.
void Make();
void Stop();
void Free();

// For a fork: nobody makes a manager between the two. The child goes on without any.
void Hold();
void Release();
void GoOnInChild();

}  // namespace socket_managers

#endif  // KALVOBASE_SRC_NET_SOCKET_MANAGERS_H_
