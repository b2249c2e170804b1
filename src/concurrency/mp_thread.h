// MP_Thread: what is behind a Kalvo_Thread. The object monitor owns it.

#ifndef KALVOBASE_SRC_CONCURRENCY_MP_THREAD_H_
#define KALVOBASE_SRC_CONCURRENCY_MP_THREAD_H_

#include <atomic>
#include <cstdint>

#include "concurrency/mp_lock.h"
#include "platform/event.h"
#include "platform/thread.h"

// What others ask for is guarded by no lock: a thread that is killed or held inside an operation
// must not keep them, the monitor among them, from asking.
class MP_Thread {
 public:
  using Routine = unsigned long (*)(void*);

  enum State : int { kInvalid = -1, kParked = 0, kReleased = 1, kSuspended = 2 };

  // Makes the thread, which stands at its start gate until Start. `run` is only told.
  MP_Thread(Routine routine, void* context, bool run, const char* name, const char* stackText);
  MP_Thread(const MP_Thread&) = delete;
  MP_Thread& operator=(const MP_Thread&) = delete;

  // Stops the thread and deletes the object; called by the thread itself, has it delete the
  // object when its routine has returned.
  static void Destroy(MP_Thread* thread);

  // Opens the start gate.
  void Start();

  int Running();
  void NotifyQuit() { running_ = false; }
  int WaitFor(std::uint32_t ms);
  int Kill(std::uint32_t code);
  int Exit(std::uint32_t code);
  std::uint32_t Suspend();
  std::uint32_t Resume();
  int IsValid() const { return state_ != kInvalid; }
  int GetExitCode(unsigned long& code) const;
  long lastActive() const { return lastActive_; }
  const char* name() const { return name_; }
  const char* stackText() const { return stackText_; }

  // Publishes what the thread has written to its stack text.
  void StackTextChanged() { lastActive_.fetch_add(0, std::memory_order_release); }

  // The state in words.
  const char* StateText() const;

  std::uint32_t id() const { return platform::thread_id(thread_); }
  void* handle() const { return platform::thread_native_handle(thread_); }
  int GetPriority() const;
  int SetPriority(int priority);

  // Whether the thread will never end by itself: it was killed, or belongs to the process that
  // this one was forked from.
  bool IsLost() const { return platform::thread_was_killed(thread_); }

 private:
  static constexpr std::uint32_t kStopMs = 2000;
  static constexpr std::uint32_t kExitMs = 200;
  static constexpr int kNameSize = 64;

  // The destructor closes a thread that has ended, or is the calling one.
  ~MP_Thread();

  static void Body(void* self);
  void RunRoutine(const char* name);
  void Finish(const char* name);
  bool IsCurrent() const { return platform::thread_is_current(thread_); }

  const Routine routine_;
  void* const context_;
  const char* const stackText_;
  char name_[kNameSize];
  platform::Event* const toldGate_;  // opens when the line about the new thread is out
  platform::Event* const startGate_;
  platform::Event* const exitGate_;
  MP_Lock holdLock_;  // from a change between released and suspended until it has taken effect
  std::atomic<int> state_{kParked};
  std::atomic<bool> running_{true};
  std::atomic<bool> destroyMark_{false};
  std::atomic<bool> finished_{false};  // the exit gate was opened by the thread itself
  std::atomic<std::uint32_t> exitCode_{0};
  std::atomic<long> lastActive_;
  platform::Thread* thread_ = nullptr;
};

#endif  // KALVOBASE_SRC_CONCURRENCY_MP_THREAD_H_
