#include "platform/descriptor.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>

#include "platform/posix/deadline.h"
#include "platform/wait_result.h"

namespace platform {

namespace {

int Wait(int descriptor, short events, std::uint32_t ms) {
  if (descriptor < 0) {
    errno = EBADF;
    return -1;
  }
  pollfd poll = {descriptor, events, 0};
  const bool limited = ms != kNoLimit;
  const timespec deadline = deadline_after(limited ? ms : 0);
  for (;;) {
    timespec left = {};
    if (limited) left = time_until(deadline);
    const int ready = ppoll(&poll, 1, limited ? &left : nullptr, nullptr);
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 1) return ready;
    if ((poll.revents & POLLNVAL) != 0) {
      errno = EBADF;
      return -1;
    }
    // An error or a hang-up is told by the transfer itself.
    const int exceptional = (poll.revents & POLLPRI) != 0 ? 1 : 0;
    return exceptional + ((poll.revents & ~POLLPRI) != 0 ? 1 : 0);
  }
}

short EventsOf(WaitFor what) { return what == WaitFor::kReading ? POLLIN : POLLOUT; }

}  // namespace

int descriptor_wait(int descriptor, WaitFor what, std::uint32_t ms) {
  return Wait(descriptor, EventsOf(what), ms);
}

int descriptor_wait_or_exception(int descriptor, WaitFor what, std::uint32_t ms) {
  return Wait(descriptor, static_cast<short>(EventsOf(what) | POLLPRI), ms);
}

bool descriptor_is_open(int descriptor) { return fcntl(descriptor, F_GETFD) != -1; }

}  // namespace platform
