#include "monitor/kalvo_kobj_manager.h"

#include "frame/process_object.h"
#include "monitor/mp_kobj_manager.h"

namespace {

ProcessObject<Kalvo_KObjManager> theMonitor;

}  // namespace

Kalvo_KObjManager::Kalvo_KObjManager() : impl_(new MP_KObjManager) {}
Kalvo_KObjManager::~Kalvo_KObjManager() = default;

Kalvo_KObjManager* Kalvo_KObjManager::Get() {
  Kalvo_KObjManager* const monitor = theMonitor.Get();
  if (monitor != nullptr) monitor->impl_->EnsureRunning();
  return monitor;
}

void Kalvo_KObjManager::Make() { theMonitor.Get(); }

void Kalvo_KObjManager::Stop() {
  if (Kalvo_KObjManager* monitor = Get()) monitor->impl_->Stop();
}

void Kalvo_KObjManager::Free() { theMonitor.Free(); }

void Kalvo_KObjManager::Hold() {
  if (Kalvo_KObjManager* monitor = theMonitor.Peek()) monitor->impl_->Hold();
}

void Kalvo_KObjManager::Release() {
  if (Kalvo_KObjManager* monitor = theMonitor.Peek()) monitor->impl_->Release();
}

MP_Thread* Kalvo_KObjManager::NewThread(MP_Thread::Routine routine, void* context, bool run,
                                        const char* name, const char* stackText) {
  return impl_->NewThread(routine, context, run, name, stackText);
}
void Kalvo_KObjManager::DeleteThread(MP_Thread* thread) { impl_->DeleteThread(thread); }
MP_Log* Kalvo_KObjManager::NewLog() { return impl_->NewLog(); }
void Kalvo_KObjManager::DeleteLog(MP_Log* log) { impl_->DeleteLog(log); }
