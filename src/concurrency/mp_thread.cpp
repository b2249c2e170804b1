#include "concurrency/mp_thread.h"

#include <cstring>

#include "frame/messages.h"
#include "frame/mp_kernel_debug.h"
#include "platform/clock.h"
#include "platform/process.h"
#include "platform/wait_result.h"

namespace {

using kernel_debug::Tell;

// Addresses are told as 32-bit numbers.
unsigned Address(const void* p) {
  return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(p));
}

// A line about the calling thread.
void TellOfSelf(int logLevel, int printLevel, const char* format, const char* name) {
  Tell(logLevel, printLevel, format, platform::current_thread_id(), platform::process_id(), name);
}

}  // namespace

MP_Thread::MP_Thread(Routine routine, void* context, bool run, const char* name,
                     const char* stackText)
    : routine_(routine),
      context_(context),
      stackText_(stackText),
      toldGate_(platform::event_create()),
      startGate_(platform::event_create()),
      exitGate_(platform::event_create()),
      lastActive_(platform::wall_time().seconds) {
  std::strncpy(name_, name != nullptr ? name : "anonymous", kNameSize - 1);
  name_[kNameSize - 1] = '\0';
  if (toldGate_ != nullptr && startGate_ != nullptr && exitGate_ != nullptr) {
    thread_ = platform::thread_create(Body, this, name_);
  }
  if (thread_ == nullptr) state_ = kInvalid;
  Tell(2, 2, "Thread(%s)[0x%x] create by thread[0x%x] %s", name_, id(),
       platform::current_thread_id(), run ? "run now" : "suspend");
  platform::event_set(toldGate_);
}

MP_Thread::~MP_Thread() {
  Tell(6, 6, "~MP_Thread ,addr=0x%x,id=0x%x", Address(this), id());
  platform::thread_close(thread_);
  platform::event_destroy(toldGate_);
  platform::event_destroy(startGate_);
  platform::event_destroy(exitGate_);
}

void MP_Thread::Destroy(MP_Thread* thread) {
  if (thread->IsCurrent()) {
    thread->destroyMark_ = true;
    thread->running_ = false;
    platform::thread_disown(thread->thread_);
    return;
  }
  thread->WaitFor(kStopMs);
  Tell(1, 1, "Thread[0x%x] kill thread(0x%x)", platform::current_thread_id(), thread->id());
  delete thread;
}

void MP_Thread::Start() {
  int parked = kParked;
  if (state_.compare_exchange_strong(parked, kReleased)) platform::event_set(startGate_);
}

void MP_Thread::Body(void* self) {
  MP_Thread* const thread = static_cast<MP_Thread*>(self);
  char name[kNameSize];  // which outlives the object
  std::memcpy(name, thread->name_, kNameSize);
  platform::event_wait(thread->toldGate_, platform::kNoLimit);
  Tell(3, 3, "[0x%08x]create THREAD[%x:%d](%s)\n", Address(thread), platform::current_thread_id(),
       platform::process_id(), name);
  platform::event_wait(thread->startGate_, platform::kNoLimit);
  thread->lastActive_ = platform::wall_time().seconds;
  if (thread->running_) {
    thread->RunRoutine(name);
  } else {
    TellOfSelf(3, 3, "THREAD[0x%x:%d](%s) destroy without running\n", name);
    thread->Finish(name);
  }
}

// Also finishes when the routine ends the thread by the system's own means, which unwinds.
void MP_Thread::RunRoutine(const char* name) {
  struct Ending {
    MP_Thread* const thread;
    const char* const name;
    bool failed;
    ~Ending() {
      if (failed) {
        TellOfSelf(kernel_debug::kError, 3, "THREAD[0x%x:%d](%s) Error.\n", name);
      } else {
        TellOfSelf(3, 3, "THREAD[0x%x:%d](%s) exit.\n", name);
      }
      thread->Finish(name);
    }
  };
  TellOfSelf(3, 3, "THREAD[0x%x:%d](%s) runing\n", name);
  Ending ending{this, name, false};
  ending.failed = !platform::call_guarded(
      [this] { exitCode_ = static_cast<std::uint32_t>(routine_(context_)); });
}

void MP_Thread::Finish(const char* name) {
  const bool destroy = destroyMark_;
  running_ = false;
  finished_ = true;
  platform::event_set(exitGate_);  // from here on the object may be gone
  if (!destroy) return;
  TellOfSelf(4, 4, "THREAD[0x%x:%d](%s) destroy by self\n", name);
  delete this;
}

int MP_Thread::Running() {
  lastActive_ = platform::wall_time().seconds;
  return running_;
}

int MP_Thread::WaitFor(std::uint32_t ms) {
  running_ = false;
  const std::uint32_t threadId = id();
  if (IsCurrent()) {
    Tell(-1, -1, "thread[%x](%s) WaitFor self.\n", threadId, name_);
    return 0;
  }
  if (state_ == kInvalid) {
    Tell(-1, -1, "thread[%x](%s) state=%d WaitFor return 0.\n", threadId, name_, kInvalid);
    return 0;
  }
  Resume();
  // Nobody opens the gate of a lost thread but Kill.
  const bool signalled = platform::event_wait(exitGate_, IsLost() ? 0 : ms) == 0;
  if (!signalled || !finished_) {
    Tell(-1, -1, "thread[%x](%s) not exit normally...,Kill it.\n", threadId, name_);
    platform::thread_kill(thread_);
  }
  state_ = kInvalid;
  Tell(-1, -1, "thread[%x](%s) state=%d WaitFor(end) return 0.\n", threadId, name_, kInvalid);
  return 0;
}

int MP_Thread::Kill(std::uint32_t code) {
  if (state_ == kInvalid) return 1;
  if (IsCurrent()) Exit(code);
  platform::thread_kill(thread_);
  exitCode_ = code;
  // A WaitFor must not wait for what cannot come. The thread may have been killed between
  // opening the gate and waking who waits there.
  platform::event_signal(exitGate_);
  platform::event_wake(exitGate_);
  return 1;
}

int MP_Thread::Exit(std::uint32_t code) {
  if (!IsCurrent()) {
    WaitFor(kExitMs);
    exitCode_ = code;
    return 1;
  }
  exitCode_ = code;
  const bool destroy = destroyMark_;
  finished_ = true;
  platform::event_set(exitGate_);  // from here on the object may be gone
  if (destroy) delete this;
  platform::thread_exit();
}

// A thread that suspends itself stands still when it leaves the guard.
std::uint32_t MP_Thread::Suspend() {
  const MP_ShieldedGuard guard(&holdLock_);
  if (state_ != kReleased) return 0;
  const std::uint32_t result = platform::thread_suspend(thread_);
  if (result != platform::kSuspendFailed) state_ = kSuspended;
  return result;
}

std::uint32_t MP_Thread::Resume() {
  {
    const MP_ShieldedGuard guard(&holdLock_);
    int seen = kSuspended;
    if (state_.compare_exchange_strong(seen, kReleased)) return platform::thread_resume(thread_);
  }
  Start();
  return 0;
}

int MP_Thread::GetExitCode(unsigned long& code) const {
  if (state_ != kInvalid) return 0;
  code = exitCode_;
  return 1;
}

int MP_Thread::GetPriority() const {
  return state_ != kInvalid ? platform::thread_priority(thread_) : platform::kPriorityUnknown;
}

int MP_Thread::SetPriority(int priority) {
  return state_ != kInvalid && platform::thread_set_priority(thread_, priority) ? 0 : 1;
}

const char* MP_Thread::StateText() const {
  switch (state_) {
    case kInvalid:
      return messages::kThreadInvalid;
    case kParked:
      return messages::kThreadParked;
    case kReleased:
      return messages::kThreadReleased;
    case kSuspended:
      return messages::kThreadSuspended;
    default:
      return messages::kThreadUnknown;
  }
}
