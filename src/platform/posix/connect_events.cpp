#include "platform/connect_events.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <new>

#include "platform/clock.h"

namespace platform {

struct ConnectEvents {
  int epoll;
};

ConnectEvents* connect_events_create() {
  const int epoll = epoll_create1(EPOLL_CLOEXEC);
  return epoll < 0 ? nullptr : new (std::nothrow) ConnectEvents{epoll};
}

void connect_events_destroy(ConnectEvents* events) {
  if (events == nullptr) return;
  close(events->epoll);
  delete events;
}

bool connect_events_add(ConnectEvents* events, int socket, int slot) {
  if (events == nullptr) return false;
  epoll_event event = {};
  event.events = EPOLLOUT | EPOLLONESHOT;
  event.data.u64 = static_cast<std::uint64_t>(slot) << 32 | static_cast<std::uint32_t>(socket);
  return epoll_ctl(events->epoll, EPOLL_CTL_ADD, socket, &event) == 0;
}

int connect_events_wait(ConnectEvents* events, std::uint32_t ms) {
  if (events == nullptr) {
    sleep_ms(ms);
    return -1;
  }
  epoll_event event;
  if (epoll_wait(events->epoll, &event, 1, static_cast<int>(ms)) < 1) return -1;
  // If the number is another socket's by now, that one is not in this set.
  epoll_ctl(events->epoll, EPOLL_CTL_DEL, static_cast<int>(event.data.u64 & 0xFFFFFFFF), nullptr);
  return static_cast<int>(event.data.u64 >> 32);
}

}  // namespace platform
