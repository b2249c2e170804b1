// The completion port on epoll.
//
// Streams are watched for edges: once when they are added, and nothing is armed or disarmed
// after that. What the system reported while no read waited is remembered and completes the
// next one. Datagram sockets and listeners are watched as long as an operation waits for them,
// so that a read need not find out whether it was the last. A write is tried at once; only a
// stream that did not take all is watched for room from then on.
//
// What the system knows of a socket is its tag: the place of its entry and a number that
// changes when the socket is removed.

#include "platform/completion_port.h"

#include <errno.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "platform/clock.h"
#include "platform/descriptor.h"
#include "platform/posix/new_descriptor.h"

namespace platform {
namespace {

constexpr int kBatch = 128;
constexpr std::uint32_t kRetryMs = 100;  // of accepts without a descriptor

// So many rounds of what is due go by before the system is asked again.
constexpr int kRoundsInARow = 8;

constexpr std::int64_t kShortWaitNs = 50000;

// No socket has these tags, since no stamp is 0.
constexpr PortTag kWakeTag = PortTag{0} << 32;
constexpr PortTag kTickTag = PortTag{1} << 32;

constexpr std::uint32_t kReadable = EPOLLIN | EPOLLPRI | EPOLLRDHUP | EPOLLHUP | EPOLLERR;
constexpr std::uint32_t kEnded = EPOLLRDHUP | EPOLLHUP | EPOLLERR;
constexpr std::uint32_t kWritable = EPOLLOUT | EPOLLHUP | EPOLLERR;

struct WaitingAccept {
  std::uint32_t key;
  void* context;
};

struct Entry {
  std::uint32_t stamp = 1;  // never 0
  int socket = -1;          // -1: free
  PortSocket kind = PortSocket::kStream;
  std::uint32_t key = 0;
  void* context = nullptr;

  bool watched = false;      // the system tells of it
  bool watchedRoom = false;  // of room to write, too
  bool readWaits = false;
  bool readDue = false;  // completes without a report
  bool writeWaits = false;
  bool readable = false;  // was reported while no read waited
  bool writable = false;  // was reported while no write waited
  bool ended = false;     // no further report need come
  bool urgent = false;    // had urgent data, at which reading stops short

  std::unique_ptr<std::deque<WaitingAccept>> accepts;  // of a listener
};

// A completion that needs no report of the system.
struct Due {
  PortOperation operation;
  std::uint32_t key;
  void* context;
  PortTag tag;
};

struct Later {
  PortTag tag;
  std::uint32_t tick;
};

void Fill(Completion* completion, PortOperation operation, std::uint32_t key, void* context,
          PortTag tag) {
  completion->operation = operation;
  completion->key = key;
  completion->context = context;
  completion->tag = tag;
  completion->bytes = 0;
  completion->socket = -1;
}

std::int64_t Nanoseconds() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

}  // namespace

struct CompletionPort {
  bool Open();
  void Close();

  // These expect the lock to be held.
  Entry* Find(PortTag tag);
  bool Watch(PortTag tag, Entry* entry);
  void WatchOrRetry(PortTag tag, Entry* entry);
  void Unwatch(Entry* entry);
  bool AddDue(const Due& due);

  bool Take(Completion* completion);
  void Ask();
  void Wake() { eventfd_write(wake, 1); }

  int epoll = -1;
  int wake = -1;
  int ticker = -1;

  std::mutex lock;
  std::deque<Entry> entries;
  std::vector<std::uint32_t> freeEntries;
  std::vector<Due> due;
  std::vector<Later> later;  // reads that complete and listeners that are watched at their time
  bool asleep = false;       // the draining thread needs to be woken

 private:
  void LookAhead();
  bool TakeReport(epoll_event* report, Completion* completion);
  bool TakeDue(const Due& due, Completion* completion);
  bool TakeRead(PortTag tag, Entry* entry, Completion* completion);
  bool TakeAccept(PortTag tag, Entry* entry, Completion* completion);
  int Wait(int ms);
  int MsToSleep();
  void DoLater();

  // Of the draining thread alone.
  epoll_event reports_[kBatch];
  int reported_ = 0;
  int nextReport_ = 0;
  std::vector<Due> round_;
  std::size_t nextDue_ = 0;
  int rounds_ = 0;
  const bool severalProcessors_ = sysconf(_SC_NPROCESSORS_ONLN) > 1;
  bool lastWaitWasShort_ = false;
};

bool CompletionPort::Open() {
  epoll = above_standard_streams(epoll_create1(EPOLL_CLOEXEC));
  wake = above_standard_streams(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  ticker = above_standard_streams(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
  if (epoll < 0 || wake < 0 || ticker < 0) return false;
  constexpr timespec interval = {0, kPortWaitMs * 1000000L};
  const itimerspec ticks = {interval, interval};
  epoll_event event = {};
  event.events = EPOLLIN | EPOLLET;  // each write is told, with no need to read
  event.data.u64 = kWakeTag;
  if (epoll_ctl(epoll, EPOLL_CTL_ADD, wake, &event) != 0) return false;
  event.data.u64 = kTickTag;
  return timerfd_settime(ticker, 0, &ticks, nullptr) == 0 &&
         epoll_ctl(epoll, EPOLL_CTL_ADD, ticker, &event) == 0;
}

void CompletionPort::Close() {
  for (int* descriptor : {&epoll, &wake, &ticker}) {
    if (*descriptor >= 0) close(*descriptor);
    *descriptor = -1;
  }
}

Entry* CompletionPort::Find(PortTag tag) {
  const std::size_t place = static_cast<std::size_t>(tag >> 32);
  if (place >= entries.size()) return nullptr;
  Entry* const entry = &entries[place];
  return entry->socket >= 0 && entry->stamp == (tag & 0xFFFFFFFF) ? entry : nullptr;
}

bool CompletionPort::Watch(PortTag tag, Entry* entry) {
  if (entry->watched) return true;
  epoll_event event = {};
  event.events = entry->kind == PortSocket::kStream ? EPOLLIN | EPOLLPRI | EPOLLRDHUP | EPOLLET
                                                    : std::uint32_t{EPOLLIN};
  event.data.u64 = tag;
  entry->watched = epoll_ctl(epoll, EPOLL_CTL_ADD, entry->socket, &event) == 0;
  return entry->watched;
}

// Watching can fail for want of memory.
void CompletionPort::WatchOrRetry(PortTag tag, Entry* entry) {
  if (!Watch(tag, entry)) later.push_back({tag, tick_count() + kRetryMs});
}

void CompletionPort::Unwatch(Entry* entry) {
  if (!entry->watched) return;
  epoll_ctl(epoll, EPOLL_CTL_DEL, entry->socket, nullptr);
  entry->watched = false;
}

// Whether the draining thread must be woken.
bool CompletionPort::AddDue(const Due& added) {
  due.push_back(added);
  const bool mustWake = asleep;
  asleep = false;
  return mustWake;
}

// --- Draining -------------------------------------------------------------------------

bool CompletionPort::Take(Completion* completion) {
  for (;;) {
    while (nextReport_ < reported_) {
      epoll_event* const report = &reports_[nextReport_];
      const bool taken = TakeReport(report, completion);
      if (report->events == 0) ++nextReport_;
      if (taken) return true;
    }
    while (nextDue_ < round_.size()) {
      if (TakeDue(round_[nextDue_++], completion)) return true;
    }
    if (++rounds_ > kRoundsInARow) return false;
    round_.clear();
    nextDue_ = 0;
    const std::lock_guard<std::mutex> guard(lock);
    if (due.empty()) return false;
    round_.swap(due);
  }
}

// With thousands of connections the memory of the next one is far away, so it is sent for early.
void CompletionPort::LookAhead() {
  if (nextReport_ + 2 >= reported_) return;
  const auto entryOf = [this](int report) -> const Entry* {
    const std::size_t place = static_cast<std::size_t>(reports_[report].data.u64 >> 32);
    return place < entries.size() ? &entries[place] : nullptr;
  };
  __builtin_prefetch(entryOf(nextReport_ + 2));
  const Entry* const next = entryOf(nextReport_ + 1);
  if (next == nullptr || next->context == nullptr) return;
  const char* const context = static_cast<const char*>(next->context);
  for (std::size_t line = 0; line < 4; ++line) __builtin_prefetch(context + line * 64);
}

// Takes one operation of a report and leaves the rest in it.
bool CompletionPort::TakeReport(epoll_event* report, Completion* completion) {
  const PortTag tag = report->data.u64;
  if (tag == kTickTag) {
    std::uint64_t count;
    static_cast<void>(!read(ticker, &count, sizeof(count)));  // so that it goes on
  }
  const std::lock_guard<std::mutex> guard(lock);
  LookAhead();
  Entry* const entry = Find(tag);
  if (entry == nullptr) {
    report->events = 0;
    return false;
  }
  if (entry->kind == PortSocket::kListener) {
    report->events = 0;
    return TakeAccept(tag, entry, completion);
  }
  if (entry->kind == PortSocket::kStream && (report->events & kEnded) != 0) entry->ended = true;
  if ((report->events & EPOLLPRI) != 0) entry->urgent = true;
  if (entry->readDue && entry->kind == PortSocket::kDatagram) {  // told again, if it still counts
    report->events = 0;
    return false;
  }
  if ((report->events & kReadable) != 0) {
    // Reading comes first: it tells why a connection has ended.
    report->events = (report->events & kWritable) != 0 ? std::uint32_t{EPOLLOUT} : 0;
    if (entry->readWaits) return TakeRead(tag, entry, completion);
    entry->readable = true;
    if (entry->kind == PortSocket::kDatagram) Unwatch(entry);
    return false;
  }
  report->events = 0;
  entry->writable = !entry->writeWaits;
  if (!entry->writeWaits) return false;
  entry->writeWaits = false;
  Fill(completion, PortOperation::kWrite, entry->key, entry->context, tag);
  return true;
}

bool CompletionPort::TakeDue(const Due& taken, Completion* completion) {
  const std::lock_guard<std::mutex> guard(lock);
  Entry* const entry = Find(taken.tag);
  if (entry == nullptr && taken.tag != 0) return false;
  if (taken.operation == PortOperation::kRead) return TakeRead(taken.tag, entry, completion);
  Fill(completion, taken.operation, taken.key, taken.context, taken.tag);
  return true;
}

// What has become of the socket is told by reading it.
bool CompletionPort::TakeRead(PortTag tag, Entry* entry, Completion* completion) {
  entry->readWaits = false;
  entry->readDue = false;
  Fill(completion, PortOperation::kRead, entry->key, entry->context, tag);
  return true;
}

bool CompletionPort::TakeAccept(PortTag tag, Entry* entry, Completion* completion) {
  if (entry->accepts->empty()) {
    Unwatch(entry);
    return false;
  }
  socklen_t length = kAddressRoom;
  int socket;
  do {
    socket = accept4(entry->socket, reinterpret_cast<sockaddr*>(completion->address), &length,
                     SOCK_CLOEXEC);
  } while (socket < 0 && errno == EINTR);
  socket = above_standard_streams(socket);
  if (socket < 0) {
    if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
      later.push_back({tag, tick_count() + kRetryMs});  // which may throw
      Unwatch(entry);
    }
    return false;  // of anything else the next report tells, if more have come
  }
  const WaitingAccept& accept = entry->accepts->front();
  Fill(completion, PortOperation::kAccept, accept.key, accept.context, tag);
  completion->socket = socket;
  completion->addressLength = static_cast<int>(length);
  entry->accepts->pop_front();
  return true;
}

// The ticker ends each wait in time, which is cheaper than a time-out of every wait.
void CompletionPort::Ask() {
  int sleep;
  {
    const std::lock_guard<std::mutex> guard(lock);
    asleep = due.empty();
    sleep = asleep ? MsToSleep() : 0;
  }
  nextReport_ = 0;
  reported_ = Wait(sleep);
  if (reported_ < 0) {
    if (errno != EINTR) sleep_ms(kPortWaitMs);  // a port that is of no use must not spin
    reported_ = 0;
  }
  rounds_ = 0;
  const std::lock_guard<std::mutex> guard(lock);
  asleep = false;
  if (!later.empty()) DoLater();
}

// Waking a thread takes longer than many an answer takes to come, so after a short wait the next
// one looks for a moment before it sleeps. With one processor nobody could answer meanwhile.
int CompletionPort::Wait(int ms) {
  if (ms == 0) return epoll_wait(epoll, reports_, kBatch, 0);
  const std::int64_t start = Nanoseconds();
  int count = 0;
  while (count == 0 && lastWaitWasShort_ && Nanoseconds() - start < kShortWaitNs) {
    count = epoll_wait(epoll, reports_, kBatch, 0);
  }
  if (count == 0) count = epoll_wait(epoll, reports_, kBatch, ms);
  lastWaitWasShort_ = severalProcessors_ && Nanoseconds() - start < kShortWaitNs;
  return count;
}

int CompletionPort::MsToSleep() {
  if (later.empty()) return -1;
  const std::uint32_t now = tick_count();
  int ms = kPortWaitMs;
  for (const Later& one : later) ms = std::min(ms, static_cast<std::int32_t>(one.tick - now));
  return std::max(ms, 0);
}

void CompletionPort::DoLater() {
  const std::uint32_t now = tick_count();
  for (std::size_t i = 0; i < later.size();) {
    if (static_cast<std::int32_t>(later[i].tick - now) > 0) {
      ++i;
      continue;
    }
    const PortTag tag = later[i].tag;
    later[i] = later.back();
    later.pop_back();
    Entry* const entry = Find(tag);
    if (entry == nullptr) continue;
    if (entry->kind == PortSocket::kDatagram) {
      due.push_back({PortOperation::kRead, 0, nullptr, tag});
    } else {
      WatchOrRetry(tag, entry);
    }
  }
}

// --- The port -------------------------------------------------------------------------

CompletionPort* port_create() {
  auto* port = new (std::nothrow) CompletionPort;
  if (port == nullptr || port->Open()) return port;
  port_destroy(port);
  return nullptr;
}

void port_destroy(CompletionPort* port) {
  if (port == nullptr) return;
  port_abandon(port);
  delete port;
}

void port_abandon(CompletionPort* port) {
  if (port == nullptr) return;
  port->Close();
}

PortTag port_add(CompletionPort* port, int socket, PortSocket kind, std::uint32_t key,
                 void* context) {
  const std::lock_guard<std::mutex> guard(port->lock);
  std::unique_ptr<std::deque<WaitingAccept>> accepts;
  try {
    if (port->freeEntries.empty()) {
      port->entries.emplace_back();
      port->freeEntries.push_back(static_cast<std::uint32_t>(port->entries.size() - 1));
    }
    if (kind == PortSocket::kListener) accepts = std::make_unique<std::deque<WaitingAccept>>();
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return 0;
  }
  const std::uint32_t place = port->freeEntries.back();
  Entry* const entry = &port->entries[place];
  const std::uint32_t stamp = entry->stamp;
  *entry = {};
  entry->stamp = stamp;
  entry->socket = socket;
  entry->kind = kind;
  entry->key = key;
  entry->context = context;
  const PortTag tag = static_cast<PortTag>(place) << 32 | stamp;
  entry->accepts = std::move(accepts);
  if (!port->Watch(tag, entry)) {
    entry->socket = -1;
    return 0;
  }
  port->freeEntries.pop_back();
  return tag;
}

void port_remove(CompletionPort* port, PortTag tag) {
  const std::lock_guard<std::mutex> guard(port->lock);
  Entry* const entry = port->Find(tag);
  if (entry == nullptr) return;
  // A stream leaves when it is closed. If a child of this process still holds the socket, it
  // does not, and one that is not watched for edges would be reported for ever.
  if (entry->kind != PortSocket::kStream) port->Unwatch(entry);
  entry->socket = -1;
  if (++entry->stamp == 0) entry->stamp = 1;
  entry->accepts.reset();
  port->freeEntries.push_back(static_cast<std::uint32_t>(tag >> 32));
}

void port_post(CompletionPort* port, std::uint32_t key, void* context, PortTag tag) {
  std::unique_lock<std::mutex> guard(port->lock);
  const bool mustWake = port->AddDue({PortOperation::kPosted, key, context, tag});
  guard.unlock();
  if (mustWake) port->Wake();
}

bool port_read(CompletionPort* port, PortTag tag, PortReadAfter after) {
  std::unique_lock<std::mutex> guard(port->lock);
  Entry* const entry = port->Find(tag);
  if (entry == nullptr) {
    errno = ENOTSOCK;
    return false;
  }
  if (entry->kind == PortSocket::kDatagram && after != PortReadAfter::kMore) {
    entry->readWaits = true;
    port->WatchOrRetry(tag, entry);
    return true;
  }
  const bool more =
      after == PortReadAfter::kMore || (after == PortReadAfter::kTaken && entry->urgent);
  if (!more && !entry->readable && !entry->ended) {
    entry->readWaits = true;
    return true;
  }
  const bool mustWake = port->AddDue({PortOperation::kRead, 0, nullptr, tag});  // which may throw
  if (!more) entry->readable = false;  // else what was reported may not be what is read next
  entry->readWaits = false;
  entry->readDue = true;
  guard.unlock();
  if (mustWake) port->Wake();
  return true;
}

bool port_read_later(CompletionPort* port, PortTag tag, std::uint32_t ms) {
  const std::lock_guard<std::mutex> guard(port->lock);
  Entry* const entry = port->Find(tag);
  if (entry == nullptr) {
    errno = ENOTSOCK;
    return false;
  }
  port->Unwatch(entry);
  port->later.push_back({tag, tick_count() + ms});
  return true;
}

std::int64_t port_send(CompletionPort* port, PortTag tag, int socket, const char* data,
                       std::size_t size) {
  const std::int64_t n = socket_send_now(socket, data, size);
  if (n == kTransferFailed || n == static_cast<std::int64_t>(size)) return n;
  std::unique_lock<std::mutex> guard(port->lock);
  Entry* const entry = port->Find(tag);
  if (entry == nullptr) {
    errno = ENOTSOCK;
    return kTransferFailed;
  }
  entry->writeWaits = true;
  if (!entry->watchedRoom) {
    epoll_event event = {};  // which also reports what there is already
    event.events = EPOLLIN | EPOLLPRI | EPOLLOUT | EPOLLRDHUP | EPOLLET;
    event.data.u64 = tag;
    if (epoll_ctl(port->epoll, EPOLL_CTL_MOD, socket, &event) != 0) return kTransferFailed;
    entry->watchedRoom = true;
  } else if (entry->writable) {  // there was room at some time since the last write
    entry->writable = false;
    entry->writeWaits = false;
    const bool mustWake = port->AddDue({PortOperation::kWrite, entry->key, entry->context, tag});
    guard.unlock();
    if (mustWake) port->Wake();
  }
  return n < 0 ? 0 : n;
}

void port_accept(CompletionPort* port, PortTag listener, std::uint32_t key, void* context) {
  const std::lock_guard<std::mutex> guard(port->lock);
  Entry* const entry = port->Find(listener);
  if (entry == nullptr) return;
  entry->accepts->push_back({key, context});
  port->WatchOrRetry(listener, entry);
}

bool port_wait(CompletionPort* port, Completion* completion) {
  if (port->Take(completion)) return true;
  port->Ask();
  return port->Take(completion);
}

bool port_next(CompletionPort* port, Completion* completion) { return port->Take(completion); }

}  // namespace platform
