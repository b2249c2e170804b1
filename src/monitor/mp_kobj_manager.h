// MP_KObjManager: the registry of threads and logs, and the thread that looks after them.

#ifndef KALVOBASE_SRC_MONITOR_MP_KOBJ_MANAGER_H_
#define KALVOBASE_SRC_MONITOR_MP_KOBJ_MANAGER_H_

#include <atomic>
#include <cstdint>
#include <memory>

#include "concurrency/mp_lock.h"
#include "concurrency/mp_thread.h"
#include "kalvobase/queue.h"
#include "platform/event.h"

class MP_Log;

class MP_KObjManager {
 public:
  // Has no thread yet.
  MP_KObjManager();
  MP_KObjManager(const MP_KObjManager&) = delete;
  MP_KObjManager& operator=(const MP_KObjManager&) = delete;

  // Stops every thread and closes every log that is left.
  virtual ~MP_KObjManager();

  // Makes the thread, or another one if the process was forked from one that has it. Does nothing
  // after StopThreads.
  void EnsureRunning();

  // For a fork: no other thread holds the registry or a log between the two.
  void Hold();
  void Release();

  // Ends the thread for good, and all threads of the registry.
  void StopThreads();

  // The thread waits at its start gate until the caller starts it. Null if memory ran out.
  MP_Thread* NewThread(MP_Thread::Routine routine, void* context, bool run, const char* name,
                       const char* stackText);

  // Stops and frees what NewThread gave. Nothing happens to a null one, nor to one that is gone.
  void DeleteThread(MP_Thread* thread);

  MP_Log* NewLog();
  void DeleteLog(MP_Log* log);

  // One look at everything; the threads only if `threads` is true.
  void RunPass(bool threads);

 private:
  class Node;
  class ThreadNode;
  class LogNode;

  static unsigned long DoMonitor(void* self);
  void Monitor();
  bool Add(std::unique_ptr<Node> node);
  void Delete(const void* object);
  std::unique_ptr<Node> TakeThread();
  template <class Action>
  void ForEachLog(Action action);

  // Guards the registry; held during a whole pass, and taken before the lock of any log.
  MP_Lock lock_;
  Kalvo_Queue registry_{0, 0};
  platform::Event* stop_;  // cuts the monitor's sleep short
  std::atomic<bool> started_{false};
  std::atomic<bool> stopped_{false};
  std::atomic<std::uint32_t> forks_{0};      // when the thread was made
  std::atomic<MP_Thread*> thread_{nullptr};  // not in the registry
};

#endif  // KALVOBASE_SRC_MONITOR_MP_KOBJ_MANAGER_H_
