#include "monitor/kalvo_kobj_manager.h"

#include "frame/process_object.h"

namespace {

ProcessObject<Kalvo_KObjManager> theMonitor;

}  // namespace

Kalvo_KObjManager* Kalvo_KObjManager::Get() {
  Kalvo_KObjManager* const monitor = theMonitor.Get();
  if (monitor != nullptr) monitor->EnsureRunning();
  return monitor;
}

Kalvo_KObjManager* Kalvo_KObjManager::Find() { return theMonitor.Peek(); }

void Kalvo_KObjManager::Make() { theMonitor.Get(); }

void Kalvo_KObjManager::Stop() {
  if (Kalvo_KObjManager* monitor = Find()) monitor->StopThreads();
}

void Kalvo_KObjManager::Free() { theMonitor.Free(); }

void Kalvo_KObjManager::HoldRegistry() {
  if (Kalvo_KObjManager* monitor = Find()) monitor->Hold();
}

void Kalvo_KObjManager::ReleaseRegistry() {
  if (Kalvo_KObjManager* monitor = Find()) monitor->Release();
}
