#include "platform/connect_events.h"

#include <errno.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <new>

#include "platform/clock.h"
#include "platform/posix/new_descriptor.h"

namespace platform {

struct ConnectEvents {
  int epoll;
};

ConnectEvents* connect_events_create() {
  const int epoll = above_standard_streams(epoll_create1(EPOLL_CLOEXEC));
  if (epoll < 0) return nullptr;
  auto* const events = new (std::nothrow) ConnectEvents{epoll};
  if (events == nullptr) close(epoll);
  return events;
}

void connect_events_destroy(ConnectEvents* events) {
  if (events == nullptr) return;
  close(events->epoll);
  delete events;
}

bool connect_events_add(ConnectEvents* events, int socket, int slot) {
  if (events == nullptr) {
    errno = EMFILE;
    return false;
  }
  epoll_event event = {};
  event.events = EPOLLOUT | EPOLLONESHOT;
  event.data.u32 = static_cast<std::uint32_t>(slot);
  return epoll_ctl(events->epoll, EPOLL_CTL_ADD, socket, &event) == 0;
}

void connect_events_remove(ConnectEvents* events, int socket) {
  if (events != nullptr) epoll_ctl(events->epoll, EPOLL_CTL_DEL, socket, nullptr);
}

int connect_events_wait(ConnectEvents* events, std::uint32_t ms) {
  if (events == nullptr) {
    sleep_ms(ms);
    return -1;
  }
  epoll_event event;
  if (epoll_wait(events->epoll, &event, 1, static_cast<int>(ms)) < 1) return -1;
  return static_cast<int>(event.data.u32);
}

}  // namespace platform
