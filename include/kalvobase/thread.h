// Threads that can be asked to end, and are ended if they do not.
//
//   class Meter {
//    public:
//     Meter() : thread_(Work, this, 1, "meter", nullptr, 0) {}
//     ~Meter() { thread_.Stop(); }  // asks, waits up to 2 s, then ends it whatever it does
//
//    private:
//     static unsigned long Work(void* context) {
//       Meter* meter = static_cast<Meter*>(context);
//       while (meter->thread_.Running()) meter->Step();  // at least every few seconds
//       return 0;
//     }
//     void Step();
//
//     int readings_ = 0;
//     Kalvo_Thread thread_;  // the last member: it starts at once and uses the others
//   };
//
// A worker's call of Running is at once its question whether to go on and its sign of life: a
// thread that has not called it for 5 s is reported on the kernel debug channel.
//
// A thread that has to be killed stops at whatever instruction it is at. Nothing is unwound,
// locks that it holds stay held, memory that only it could free is lost, and if it was inside
// the system's allocator, that can stay locked for good. On POSIX systems killing, Suspend and
// Resume use the real-time signal SIGRTMAX - 1, which the host must leave alone; a system call
// of a thread that was suspended may return early with EINTR.

#ifndef KALVOBASE_THREAD_H_
#define KALVOBASE_THREAD_H_

#include "kalvobase/types.h"

class MP_Thread;

// Any thread may call any operation, and the thread itself may destroy its own object.
//
// A copy speaks of the same thread with no count of users. Destroying one handle destroys the
// thread; a second handle may then only be destroyed, and that before another thread is made,
// which may get its place.
class KALVO_API Kalvo_Thread {
 public:
  // Makes a thread that runs `routine(context)`: at once if `run` is not 0, else after Resume.
  // `name` is copied, up to 63 bytes; null gives "anonymous". `stackText` tells what the thread
  // is doing, for reports about it; it may be null, is not copied and belongs to the caller,
  // who may change what it says. `extra` is not used. If the system refuses the thread, IsValid
  // gives 0.
  Kalvo_Thread(unsigned long (*routine)(void*), void* context, long run, const char* name,
               void* stackText, unsigned int extra);
  Kalvo_Thread(const Kalvo_Thread& other);
  Kalvo_Thread& operator=(const Kalvo_Thread& other);

  // As Stop, and frees the thread. Called by the thread itself it only asks it to end, and the
  // thread is freed when its routine has returned.
  virtual ~Kalvo_Thread();

  // Deletes this handle, which was made with `new`. Nothing happens to a null one.
  void Destroy();

  // For the worker: 1 to go on, 0 to return. Counts as a sign of life.
  int Running();

  // Makes Running give 0. Does not wait. Nothing happens on a null handle.
  void NotifyQuit();

  // As WaitFor(2000).
  void Stop();

  // Makes Running give 0, lets a parked or suspended thread go on, and waits up to `ms`
  // milliseconds for its end, with 0xFFFFFFFF without limit. A thread that has not ended by
  // then is killed. Called by the thread itself it does not wait. Always 0.
  int WaitFor(unsigned long ms);

  // Kills the thread, the calling one, too, and stores the exit code. Nothing happens once
  // IsValid gives 0. Always 1.
  int Kill(unsigned long code);
  int Terminate(int code);

  // Called by the thread itself: ends it at once, without unwinding, and does not return.
  // Called by another: WaitFor(200), and returns 1. Both store the exit code.
  int Exit(unsigned long code);

  // Holds a running thread, and returns when it stands still: 0, also for a thread that is not
  // running; 0xFFFFFFFF if it has ended or does not react. Nothing counts how often.
  unsigned long Suspend();

  // Let a suspended thread go on, which gives 1 (0xFFFFFFFF if it was killed meanwhile), or start
  // a parked one, which gives 0, as does a thread that is neither.
  unsigned long Resume();
  unsigned long Continue();

  // 1 until a WaitFor has seen the thread's end; 0 after that and if there never was one.
  int IsValid();

  // Once IsValid gives 0: stores what the routine returned, or what Kill, Terminate or Exit
  // were given, and returns 1. Until then returns 0.
  int GetExitCode(unsigned long& code);

  // When the worker last called Running, in seconds since 1970.
  long GetLastActiveTime();

  const char* GetThreadName();

  // The system's number of this thread, and of the calling one.
  unsigned long GetId();
  unsigned long GetRealId();

  // The system's handle: a pthread_t on POSIX systems. Null if there is no thread.
  void* GetHandle();

  // The system's own numbers, on Linux the nice value: 0 is usual, 19 the lowest, -20 the
  // highest priority. SetPriority gives 0, or 1 on failure; GetPriority 0x7FFFFFFF on failure.
  int GetPriority();
  int SetPriority(int priority);

 private:
  MP_Thread* impl_;
};

#endif  // KALVOBASE_THREAD_H_
