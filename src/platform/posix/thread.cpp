#include "platform/thread.h"

#include <cxxabi.h>
#include <errno.h>
#include <pthread.h>
#include <setjmp.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <memory>
#include <mutex>
#include <new>

#include "platform/clock.h"
#include "platform/posix/deadline.h"
#include "platform/posix/futex.h"
#include "platform/posix/sanitizer.h"
#include "platform/posix/thread_control.h"
#include "platform/process.h"

namespace platform {

struct Thread {
  pthread_t handle;
  ThreadControl control;
  std::atomic<std::uint32_t> id{0};  // 0 until the thread has begun
  void (*body)(void*);
  void* context;
  char name[16];  // the kernel keeps no more
  jmp_buf end;    // where thread_exit goes to
  bool inBody = false;
  bool foreign = false;    // stayed behind when the process was forked
  bool disowned = false;   // nobody else will close it
  bool detached = false;   // closed by itself, not freed yet
  bool finishing = false;  // threads_finish waits for it
  Thread* next = nullptr;  // of all threads that are not freed yet
};

namespace {

// How long a thread whose body has ended gets for what the host has it do at its very end.
constexpr std::uint32_t kEndMs = 2000;
constexpr std::uint32_t kLastSteps = 20;

__attribute__((tls_model("initial-exec"))) thread_local Thread* current = nullptr;

// Every thread that is not freed yet. Used up to the very end of the process, so nothing in it
// has a destructor.
struct Register {
  std::mutex lock;
  bool prepared = false;  // whether the handlers are installed
  Thread* first = nullptr;
  std::atomic<std::uint32_t> detached{0};
};

Register all;

// Holds the register. A thread that is killed meanwhile would hold it for ever.
class RegisterGuard {
 public:
  RegisterGuard() { all.lock.lock(); }
  RegisterGuard(const RegisterGuard&) = delete;
  RegisterGuard& operator=(const RegisterGuard&) = delete;
  ~RegisterGuard() { all.lock.unlock(); }

 private:
  const ThreadShield shield_;
};

// A forked child has only the thread that forked.
void HoldRegister() { all.lock.lock(); }
void ReleaseRegister() { all.lock.unlock(); }
void GoOnInChild() {
  for (Thread* thread = all.first; thread != nullptr; thread = thread->next) {
    thread->foreign = thread != current;
  }
  if (current != nullptr) current->id = current_thread_id();
  all.lock.unlock();
}

void* Run(void* argument) {
  Thread* const self = static_cast<Thread*>(argument);
  current = self;
  self->control.Begin();
  pthread_setname_np(pthread_self(), self->name);
  self->id = current_thread_id();
  futex_wake(&self->id, INT_MAX, FutexScope::kProcess);
  struct Ending {
    Thread* const self;
    ~Ending() {
      self->inBody = false;
      // Once it has ended, anybody frees one that has closed itself. The host's thread-local
      // objects, which are destroyed after that, find a thread that is none of the library's.
      if (self->detached) current = nullptr;
      self->control.End(self->detached);
    }
  };
  const Ending ending{self};
  self->inBody = true;
  if (_setjmp(self->end) == 0) self->body(self->context);
  return nullptr;
}

// Waits until the system has done with the thread and what it kept for it is free.
bool Join(Thread* thread, std::uint32_t ms) {
  if (thread->detached) return thread->control.AwaitEnd(ms);
#if KALVOBASE_THREAD_SANITIZER
  // It takes a killed thread for a running one. As long as that is not joined, no other gets
  // its handle.
  if (thread->control.WasKilled()) return true;
  return thread->control.AwaitEnd(ms) && pthread_join(thread->handle, nullptr) == 0;
#elif KALVOBASE_HAS_CLOCKJOIN
  const timespec deadline = deadline_after(ms);
  return pthread_clockjoin_np(thread->handle, nullptr, CLOCK_MONOTONIC, &deadline) == 0;
#else
  const timespec deadline = deadline_after(ms);
  if (!thread->control.AwaitEnd(ms)) return false;
  for (std::uint32_t steps = 0; pthread_tryjoin_np(thread->handle, nullptr) != 0; ++steps) {
    // Not every C library notices the end of a thread that left by EndHere. The stack of such
    // a thread stays mapped.
    const bool left = thread->control.LeftByForce();
    if (left ? steps >= kLastSteps : has_passed(deadline)) return left;
    sleep_ms(1);
  }
  return true;
#endif
}

bool JoinOrKill(Thread* thread, std::uint32_t ms) {
  if (thread->foreign || Join(thread, ms)) return true;
  thread->control.Kill(thread->handle);
  return Join(thread, kEndMs);
}

// These expect the register to be locked.
void Prepare() {
  if (!all.prepared) all.prepared = ThreadControl::InstallHandler();
}

void Forget(Thread* thread) {
  Thread** link = &all.first;
  while (*link != thread) link = &(*link)->next;
  *link = thread->next;
  if (thread->detached) --all.detached;
}

Thread* FirstDisowned() {
  Thread* thread = all.first;
  while (thread != nullptr && (!thread->disowned || thread == current)) thread = thread->next;
  return thread;
}

// Frees what is left of threads that closed themselves and have ended since.
void FreeDetached() {
  if (all.detached == 0) return;
  const RegisterGuard guard;
  Thread* next;
  for (Thread* thread = all.first; thread != nullptr; thread = next) {
    next = thread->next;
    if (!thread->detached || thread->finishing) continue;
    if (!thread->foreign && !thread->control.HasEnded()) continue;
    Forget(thread);
    delete thread;
  }
}

}  // namespace

void threads_watch_forks() {
  static const bool watching = (watch_forks(HoldRegister, ReleaseRegister, GoOnInChild), true);
  static_cast<void>(watching);
}

Thread* thread_create(void (*body)(void*), void* context, const char* name) {
  threads_watch_forks();
  FreeDetached();
  std::unique_ptr<Thread> thread(new (std::nothrow) Thread);
  if (thread == nullptr) return nullptr;
  thread->body = body;
  thread->context = context;
  strncpy(thread->name, name, sizeof(thread->name) - 1);
  thread->name[sizeof(thread->name) - 1] = '\0';
  {
    const RegisterGuard guard;
    Prepare();
    if (pthread_create(&thread->handle, nullptr, Run, thread.get()) != 0) return nullptr;
    thread->next = all.first;
    all.first = thread.get();
  }
  while (thread->id == 0) futex_wait(&thread->id, 0, nullptr, FutexScope::kProcess);
  return thread.release();
}

void thread_close(Thread* thread) {
  if (thread == nullptr) return;
  const bool gone = thread != current && JoinOrKill(thread, kEndMs);
  {
    const RegisterGuard guard;
    if (gone) Forget(thread);
    thread->disowned = true;  // if not even a kill has ended it, threads_finish tries once more
    if (thread == current && !thread->finishing) {
      pthread_detach(thread->handle);
      thread->detached = true;
      ++all.detached;
    }
  }
  if (gone) delete thread;
  FreeDetached();
}

std::uint32_t thread_id(const Thread* thread) { return thread != nullptr ? thread->id.load() : 0; }

std::uint32_t current_thread_id() { return static_cast<std::uint32_t>(syscall(SYS_gettid)); }

bool thread_is_current(const Thread* thread) { return thread != nullptr && thread == current; }

bool thread_was_killed(const Thread* thread) {
  return thread == nullptr || thread->control.WasKilled() || thread->foreign;
}

void* thread_native_handle(Thread* thread) {
  void* handle = nullptr;
  static_assert(sizeof(handle) == sizeof(thread->handle), "a number or a pointer");
  if (thread != nullptr) memcpy(&handle, &thread->handle, sizeof(handle));
  return handle;
}

int thread_priority(const Thread* thread) {
  if (thread == nullptr || thread->foreign || thread->control.HasEnded()) return kPriorityUnknown;
  errno = 0;
  const int priority = getpriority(PRIO_PROCESS, thread->id);
  return errno == 0 ? priority : kPriorityUnknown;
}

bool thread_set_priority(Thread* thread, int priority) {
  return thread != nullptr && !thread->foreign && !thread->control.HasEnded() &&
         setpriority(PRIO_PROCESS, thread->id, priority) == 0;
}

std::uint32_t thread_suspend(Thread* thread) {
  if (thread == nullptr) return kSuspendFailed;
  if (thread == current) {
    thread->control.SuspendSelf();
    return 0;
  }
  return !thread->foreign && thread->control.Suspend(thread->handle) ? 0 : kSuspendFailed;
}

std::uint32_t thread_resume(Thread* thread) {
  return thread != nullptr && thread->control.Resume() ? 1 : kSuspendFailed;
}

void thread_kill(Thread* thread) {
  if (thread != nullptr && !thread->foreign) thread->control.Kill(thread->handle);
}

ThreadShield::ThreadShield() {
  if (current != nullptr) current->control.Shield();
}

ThreadShield::~ThreadShield() {
  if (current != nullptr) current->control.Unshield();
}

void thread_exit() {
  if (current == nullptr) pthread_exit(nullptr);
  if (current->inBody) _longjmp(current->end, 1);
  current->control.EndHere();  // its thread-local objects are being destroyed
}

bool call_guarded(const std::function<void()>& call) {
  try {
    call();
    return true;
#if KALVOBASE_HAS_FORCED_UNWIND
  } catch (const abi::__forced_unwind&) {
    throw;
#endif
  } catch (...) {
    return false;
  }
}

void thread_disown(Thread* thread) {
  if (thread == nullptr) return;
  const RegisterGuard guard;
  thread->disowned = true;
}

void threads_finish(std::uint32_t ms) {
  const std::uint32_t start = tick_count();
  bool resting = false;
  std::unique_lock<std::mutex> guard(all.lock);
  Thread* thread;
  while ((thread = FirstDisowned()) != nullptr) {
    thread->finishing = true;
    resting = resting || thread->detached;
    guard.unlock();
    const std::uint32_t passed = tick_count() - start;
    const bool gone = JoinOrKill(thread, passed < ms ? ms - passed : 0);
    guard.lock();
    Forget(thread);
    if (gone) delete thread;  // what cannot even be killed keeps what it runs on
  }
  // One that nobody can join is a few instructions away from its end.
  if (resting) sleep_ms(kLastSteps);
  if (all.first != nullptr || !all.prepared) return;
  ThreadControl::RemoveHandler();
  all.prepared = false;
}

}  // namespace platform
