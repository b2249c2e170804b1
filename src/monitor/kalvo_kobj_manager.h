// Kalvo_KObjManager: the object monitor of the process, which owns every thread and every log.

#ifndef KALVOBASE_SRC_MONITOR_KALVO_KOBJ_MANAGER_H_
#define KALVOBASE_SRC_MONITOR_KALVO_KOBJ_MANAGER_H_

#include "monitor/mp_kobj_manager.h"

class Kalvo_KObjManager : public MP_KObjManager {
 public:
  // The monitor, whose thread runs from the first call on. Null if memory ran out.
  static Kalvo_KObjManager* Get();

  // The monitor if there is one, for callers that need no thread of it.
  static Kalvo_KObjManager* Find();

  // The steps of the library's start and stop.
  static void Make();
  static void Stop();
  static void Free();

  // As MP_KObjManager's, if there is a monitor.
  static void HoldRegistry();
  static void ReleaseRegistry();
};

#endif  // KALVOBASE_SRC_MONITOR_KALVO_KOBJ_MANAGER_H_
