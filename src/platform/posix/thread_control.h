// How a thread is held and ended from outside: the part of a thread that the handler of the
// reserved signal works on.
//
// Whoever wants something of a thread stores an order and sends the signal. The handler runs
// on the thread itself: it ends the kernel's thread there and then, or stands still until the
// order changes. It calls nothing that takes a lock, so it does not matter where the thread
// was interrupted.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_THREAD_CONTROL_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_THREAD_CONTROL_H_

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace platform {

class ThreadControl {
 public:
  // For the thread itself, before anything else: takes orders from now on, also if the host
  // has blocked the signal.
  void Begin();

  // For the thread itself, when its body has ended: it can no longer be held. It can still be
  // ended, unless this is the `last` use of the control.
  void End(bool last);

  bool HasEnded() const { return IsEnd(answer_); }
  bool AwaitEnd(std::uint32_t ms) { return AwaitAnswer(kEnded, ms); }
  bool WasKilled() const { return order_ == kKill; }
  bool LeftByForce() const { return answer_ == kLeft; }

  // For the thread itself: orders wait while the shields outnumber the unshields.
  void Shield() { shields_.store(Shields() + 1, std::memory_order_relaxed); }
  void Unshield();

  // For the thread itself: ends it there and then.
  [[noreturn]] void EndHere();

  // These two are for other threads and return when the thread stands still, or has ended.
  // False if it does not react.
  bool Suspend(pthread_t thread);
  bool Kill(pthread_t thread);

  // For the thread itself: stands still until somebody else calls Resume.
  void SuspendSelf();

  // Whether it was held.
  bool Resume();

  // The signal's handler is installed with the first thread and goes with the library.
  static bool InstallHandler();
  static void RemoveHandler();

 private:
  // An order is a kind and above it a count, so that the answer to one order is not taken for
  // that to the next.
  static constexpr std::uint32_t kRun = 0;
  static constexpr std::uint32_t kSuspend = 1;
  static constexpr std::uint32_t kKind = 1;
  static constexpr std::uint32_t kKill = 0xFFFFFFFE;
  static constexpr std::uint32_t kLeft = 0xFFFFFFFD;   // an answer: ended by EndHere
  static constexpr std::uint32_t kEnded = 0xFFFFFFFF;  // an answer: the body has ended

  static bool IsEnd(std::uint32_t answer) { return answer == kEnded || answer == kLeft; }

  bool IsOrdered() const {
    const std::uint32_t order = order_;
    return order == kKill || ((order & kKind) == kSuspend && answer_ != order);
  }
  static std::uint32_t Next(std::uint32_t order, std::uint32_t kind);
  static void Send(pthread_t thread);
  static void OnSignal(int);
  void Obey();
  bool AwaitAnswer(std::uint32_t order, std::uint32_t ms);
  void Answer(std::uint32_t order);

  int Shields() const { return shields_.load(std::memory_order_relaxed); }

  std::atomic<int> shields_{0};  // of the thread and the handler that interrupts it alone
  std::atomic<std::uint32_t> order_{kRun};
  std::atomic<std::uint32_t> answer_{kRun};  // the last order to stand still that was obeyed
};

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_THREAD_CONTROL_H_
