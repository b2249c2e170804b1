// Threads, and power over them from outside.
//
// A thread can be held, let go on and ended at any point of what it runs. A thread that is
// ended runs no further instruction of it: nothing is unwound, the locks that it holds stay
// held, and what only it could free stays taken.

#ifndef KALVOBASE_SRC_PLATFORM_THREAD_H_
#define KALVOBASE_SRC_PLATFORM_THREAD_H_

#include <cstdint>
#include <functional>

namespace platform {

struct Thread;

// Keeps the register of threads whole in a child of fork. The first thread_create does it at the
// latest. Locks under which threads are made must be watched after this, so that a fork takes them
// before that of the register.
void threads_watch_forks();

// Starts a thread that runs `body(context)`. `name` is what the system's tools show, as much
// of it as they take. Null on failure. The other calls take a null thread and give their
// failure result.
Thread* thread_create(void (*body)(void*), void* context, const char* name);

// Gives a thread back, after waiting for its end for a moment and then ending it. The thread
// itself may call it: what it has is freed when it has ended.
void thread_close(Thread* thread);

// The system's number of a thread; 0 if there is none.
std::uint32_t thread_id(const Thread* thread);
std::uint32_t current_thread_id();

bool thread_is_current(const Thread* thread);

// Whether the thread was ended by thread_kill, or stayed behind when the process was forked.
bool thread_was_killed(const Thread* thread);

// The system's own handle, for hosts that use the system's functions on it.
void* thread_native_handle(Thread* thread);

// The system's number for the priority of a thread. kPriorityUnknown, or false, on failure.
constexpr int kPriorityUnknown = 0x7FFFFFFF;
int thread_priority(const Thread* thread);
bool thread_set_priority(Thread* thread, int priority);

// Holds a thread and lets it go on. thread_suspend returns when the thread stands still, and
// gives 0; thread_resume gives 1 for a thread that was held. Both give kSuspendFailed for a
// thread that has ended or does not react. A thread that holds itself returns when another
// has let it go on.
constexpr std::uint32_t kSuspendFailed = 0xFFFFFFFF;
std::uint32_t thread_suspend(Thread* thread);
std::uint32_t thread_resume(Thread* thread);

// Ends a thread, held or not, and returns when it runs no more. Not for the calling thread.
void thread_kill(Thread* thread);

// While one of these lives, the calling thread is neither held nor killed: both wait for it.
// For the moments in which the library holds a lock that others need and runs no code of the
// host.
class ThreadShield {
 public:
  ThreadShield();
  ThreadShield(const ThreadShield&) = delete;
  ThreadShield& operator=(const ThreadShield&) = delete;
  ~ThreadShield();
};

// While one of these lives, the calling thread and the threads that it makes take no signals but
// the reserved one and those for errors of the thread itself. For threads of the library's own,
// which must not take a signal that the host waits for.
class SignalsBlocked {
 public:
  SignalsBlocked();
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked();

 private:
  alignas(long) unsigned char before_[128];  // the mask that is restored
};

// Ends the calling thread, which thread_create made, without unwinding.
[[noreturn]] void thread_exit();

// Runs `call`. False if it let an exception out, which ends here. The end of the thread from
// inside (pthread_exit and cancellation on POSIX systems), which unwinds like an exception,
// goes on.
bool call_guarded(const std::function<void()>& call);

// Tells that only the thread itself will close it.
void thread_disown(Thread* thread);

// Ends all disowned threads but the calling one, which get `ms` milliseconds in all to end by
// themselves. If no thread is left then, undoes what the first thread_create prepared.
void threads_finish(std::uint32_t ms);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_THREAD_H_
