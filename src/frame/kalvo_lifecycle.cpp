// The start and the stop of the library.

#include <atomic>
#include <cstdint>
#include <initializer_list>

#include "frame/mp_kernel_debug.h"
#include "kalvobase/lifecycle.h"
#include "monitor/kalvo_kobj_manager.h"
#include "net/mp_null_handler.h"
#include "net/socket_managers.h"
#include "platform/clock.h"
#include "platform/process.h"
#include "platform/thread.h"
#include "timers/kalvo_timer_manager.h"

namespace {

void Nothing() {}

// The last stages of the stop call no callback of the host.
void StopCallbacks() {
  ResetKalvo_KernelDebugPrintFunction();
  ResetKalvo_KernelDebugLogFunction();
}

void MakeChannel() { MP_KernelDebug::Get(); }

// The objects of which a process has one, in their start order. In the reverse order their
// threads are stopped, and after a rest they are freed. A subsystem that needs one keeps it in
// a ProcessObject behind an accessor and adds its line here.
struct ProcessObjectEntry {
  void (*make)();
  void (*stop)();
  void (*free)();
};
constexpr std::initializer_list<ProcessObjectEntry> kStartOrder = {
    {MP_NullHandler::Make, Nothing, MP_NullHandler::Free},
    {MakeChannel, Nothing, MP_KernelDebug::Free},
    {Kalvo_KObjManager::Make, Kalvo_KObjManager::Stop, Kalvo_KObjManager::Free},
    {Nothing, StopCallbacks, Nothing},
    {Kalvo_TimerManager::Make, Kalvo_TimerManager::Stop, Kalvo_TimerManager::Free},
    {socket_managers::Make, socket_managers::Stop, socket_managers::Free},
};

std::atomic<bool> started{false};

// A fork finds nothing half done. The locks are taken in the order in which they nest.
void BeforeFork() {
  socket_managers::Hold();
  Kalvo_TimerManager::HoldTimers();
  Kalvo_KObjManager::HoldRegistry();
  MP_KernelDebug::Hold();
}

void AfterFork() {
  MP_KernelDebug::Release();
  Kalvo_KObjManager::ReleaseRegistry();
  Kalvo_TimerManager::ReleaseTimers();
  socket_managers::Release();
}

void InForkedChild() {
  MP_KernelDebug::GoOnInChild();
  Kalvo_KObjManager::ReleaseRegistry();
  Kalvo_TimerManager::GoOnInChild();
  socket_managers::GoOnInChild();
}

void WatchForks() {
  platform::threads_watch_forks();
  static const bool watching = (platform::watch_forks(BeforeFork, AfterFork, InForkedChild), true);
  static_cast<void>(watching);
}

// How long threads that were told to end get to leave the library's code, and how long those
// get that nobody owns any more.
constexpr std::uint32_t kRestMs = 20;
constexpr std::uint32_t kFinishMs = 2000;

}  // namespace

extern "C" void klbase_init(void) {
  started = true;
  for (const ProcessObjectEntry& object : kStartOrder) object.make();
  WatchForks();
}

extern "C" void klbase_fini(void) {
  if (!started.exchange(false)) return;
  for (const ProcessObjectEntry* object = kStartOrder.end(); object != kStartOrder.begin();) {
    (--object)->stop();
  }
  // Threads that have destroyed their own object go on without one.
  platform::threads_finish(kFinishMs);
  platform::sleep_ms(kRestMs);
  for (const ProcessObjectEntry* object = kStartOrder.end(); object != kStartOrder.begin();) {
    (--object)->free();
  }
  platform::threads_finish(kFinishMs);
}
