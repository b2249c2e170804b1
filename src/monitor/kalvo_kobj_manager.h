// Kalvo_KObjManager: the object monitor of the process, which owns every thread and every log.

#ifndef KALVOBASE_SRC_MONITOR_KALVO_KOBJ_MANAGER_H_
#define KALVOBASE_SRC_MONITOR_KALVO_KOBJ_MANAGER_H_

#include <atomic>
#include <memory>

#include "concurrency/mp_thread.h"

class MP_KObjManager;
class MP_Log;

class Kalvo_KObjManager {
 public:
  Kalvo_KObjManager();
  Kalvo_KObjManager(const Kalvo_KObjManager&) = delete;
  Kalvo_KObjManager& operator=(const Kalvo_KObjManager&) = delete;
  virtual ~Kalvo_KObjManager();

  // The monitor, whose thread runs from the first call on. Null if memory ran out.
  static Kalvo_KObjManager* Get();

  // The steps of the library's start and stop.
  static void Make();
  static void Stop();
  static void Free();

  // As MP_KObjManager's, if there is one.
  static void Hold();
  static void Release();

  // The thread stands at its start gate; who asked for it starts it. Null if memory ran out.
  MP_Thread* NewThread(MP_Thread::Routine routine, void* context, bool run, const char* name,
                       const char* stackText);

  // Stops and frees what NewThread gave. Nothing happens to a null one, nor to one that is gone.
  void DeleteThread(MP_Thread* thread);

  MP_Log* NewLog();
  void DeleteLog(MP_Log* log);

 private:
  std::unique_ptr<MP_KObjManager> impl_;
};

#endif  // KALVOBASE_SRC_MONITOR_KALVO_KOBJ_MANAGER_H_
