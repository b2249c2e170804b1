#include "platform/posix/thread_control.h"

#include <errno.h>
#include <limits.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/clock.h"
#include "platform/posix/deadline.h"
#include "platform/posix/futex.h"
#include "platform/posix/sanitizer.h"
#include "platform/thread.h"
#include "platform/wait_result.h"

#if KALVOBASE_THREAD_SANITIZER
// The sanitizer's sigaction puts a handler off until the thread makes a call.
extern "C" int __sigaction(int, const struct sigaction*, struct sigaction*) noexcept;
#define KALVOBASE_SIGACTION __sigaction
#else
#define KALVOBASE_SIGACTION sigaction
#endif

namespace platform {
namespace {

// How long a thread gets to react. It does so at once, unless it waits in the kernel in a way
// that no signal interrupts, or the host has blocked the signal.
constexpr std::uint32_t kReactionMs = 2000;

__attribute__((tls_model("initial-exec"))) thread_local ThreadControl* current = nullptr;

struct sigaction replaced;

// The reserved signal. The host must leave it alone; docs/porting.md tells.
int Signal() { return SIGRTMAX - 1; }

}  // namespace

std::uint32_t ThreadControl::Next(std::uint32_t order, std::uint32_t kind) {
  constexpr std::uint32_t kCount = 0x3FFFFFFF;
  return ((((order >> 1) + 1) & kCount) << 1) | kind;
}

// The system refuses a signal when too many are on their way already.
void ThreadControl::Send(pthread_t thread) {
  for (std::uint32_t ms = 0; ms < kReactionMs; ++ms) {
    if (pthread_kill(thread, Signal()) != EAGAIN) return;
    sleep_ms(1);
  }
}

void ThreadControl::Begin() {
  current = this;
  sigset_t own;
  sigemptyset(&own);
  sigaddset(&own, Signal());
  pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
}

void ThreadControl::End(bool last) {
  if (last) current = nullptr;
  shields_.store(0, std::memory_order_relaxed);
  Answer(kEnded);
}

void ThreadControl::Unshield() {
  shields_.store(Shields() - 1, std::memory_order_relaxed);
  std::atomic_signal_fence(std::memory_order_seq_cst);
  if (Shields() == 0 && IsOrdered()) pthread_kill(pthread_self(), Signal());
}

bool ThreadControl::Suspend(pthread_t thread) {
  std::uint32_t seen = order_;
  if ((seen & kKind) != kRun || seen == kKill || HasEnded()) return false;
  std::uint32_t order = Next(seen, kSuspend);
  if (!order_.compare_exchange_strong(seen, order)) return false;
  Send(thread);
  if (AwaitAnswer(order, kReactionMs) && !HasEnded()) return true;
  Resume();
  return false;
}

void ThreadControl::SuspendSelf() {
  std::uint32_t seen = order_;
  if (seen == kKill || !order_.compare_exchange_strong(seen, Next(seen, kSuspend))) return;
  Send(pthread_self());
}

bool ThreadControl::Resume() {
  std::uint32_t seen = order_;
  if (seen == kKill || (seen & kKind) != kSuspend) return false;
  if (!order_.compare_exchange_strong(seen, Next(seen, kRun))) return false;
  futex_wake(&order_, INT_MAX, FutexScope::kProcess);
  return true;
}

bool ThreadControl::Kill(pthread_t thread) {
  order_ = kKill;
  futex_wake(&order_, INT_MAX, FutexScope::kProcess);  // if it was held
  if (!HasEnded()) Send(thread);
  return AwaitAnswer(kEnded, kReactionMs);
}

bool ThreadControl::AwaitAnswer(std::uint32_t order, std::uint32_t ms) {
  const timespec deadline = deadline_after(ms);
  bool inTime = true;
  while (inTime) {
    const std::uint32_t seen = answer_;
    if (seen == order || IsEnd(seen)) return true;
    inTime = futex_wait(&answer_, seen, &deadline, FutexScope::kProcess);
  }
  return false;
}

void ThreadControl::Answer(std::uint32_t order) {
  // Only the address is used behind the store: whoever waits may free this.
  answer_ = order;
  futex_wake(&answer_, INT_MAX, FutexScope::kProcess);
}

void ThreadControl::OnSignal(int) {
  const int error = errno;
  if (current != nullptr) current->Obey();
  errno = error;
}

void ThreadControl::Obey() {
  while (Shields() <= 0) {
    const std::uint32_t order = order_;
    if (order == kKill) EndHere();
    if ((order & kKind) == kRun) return;
    // A thread whose body has ended runs nothing of the host any more.
    if (HasEnded()) return;
    Answer(order);
    futex_wait(&order_, order, nullptr, FutexScope::kProcess);
  }
}

void ThreadControl::EndHere() {
  // The C library hands a thread's memory on to the next one, and what it keeps for the
  // thread by keys along with it.
  for (pthread_key_t key = 0; key < PTHREAD_KEYS_MAX; ++key) {
    if (pthread_getspecific(key) != nullptr) pthread_setspecific(key, nullptr);
  }
  Answer(kLeft);
  // Ends the kernel's thread alone. The kernel tells the C library of it, so that a join
  // comes back, and lets go of robust mutexes.
  for (;;) syscall(SYS_exit, 0);
}

bool ThreadControl::InstallHandler() {
  struct sigaction action = {};
  action.sa_handler = OnSignal;
  action.sa_flags = SA_RESTART | SA_ONSTACK;
  sigfillset(&action.sa_mask);
  return KALVOBASE_SIGACTION(Signal(), &action, &replaced) == 0;
}

void ThreadControl::RemoveHandler() {
  struct sigaction now = {};
  if (KALVOBASE_SIGACTION(Signal(), nullptr, &now) == 0 && now.sa_handler == OnSignal) {
    KALVOBASE_SIGACTION(Signal(), &replaced, nullptr);
  }
}

SignalsBlocked::SignalsBlocked() {
  static_assert(sizeof(sigset_t) <= sizeof(before_), "the mask has its place");
  sigset_t blocked;
  sigfillset(&blocked);
  for (const int open : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, Signal()}) {
    sigdelset(&blocked, open);
  }
  pthread_sigmask(SIG_SETMASK, &blocked, reinterpret_cast<sigset_t*>(before_));
}

SignalsBlocked::~SignalsBlocked() {
  pthread_sigmask(SIG_SETMASK, reinterpret_cast<const sigset_t*>(before_), nullptr);
}

}  // namespace platform
