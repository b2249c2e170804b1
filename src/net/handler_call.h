// Calling the handlers of a host.

#ifndef KALVOBASE_SRC_NET_HANDLER_CALL_H_
#define KALVOBASE_SRC_NET_HANDLER_CALL_H_

#include <functional>

#include "net/mp_socket_item.h"
#include "platform/thread.h"

namespace net {

// False if the call threw. Allocates nothing.
template <class Call>
bool CallHandler(Call call) {
  return platform::call_guarded(std::ref(call));
}

}  // namespace net

#endif  // KALVOBASE_SRC_NET_HANDLER_CALL_H_
