#include "timers/kalvo_timer_manager.h"

#include "frame/process_object.h"
#include "kalvobase/timer.h"

namespace {

ProcessObject<Kalvo_TimerManager> theTimers;

}  // namespace

// The thread must not find this object half destroyed.
Kalvo_TimerManager::~Kalvo_TimerManager() { StopThread(); }

Kalvo_TimerManager* Kalvo_TimerManager::Get() {
  Kalvo_TimerManager* const timers = theTimers.Get();
  if (timers != nullptr) timers->EnsureRunning("Kalvo_TimerManager");
  return timers;
}

Kalvo_TimerManager* Kalvo_TimerManager::Find() { return theTimers.Peek(); }

void Kalvo_TimerManager::Make() { theTimers.Get(); }

void Kalvo_TimerManager::Stop() {
  if (Kalvo_TimerManager* timers = Find()) timers->StopThread();
}

void Kalvo_TimerManager::Free() { theTimers.Free(); }

void Kalvo_TimerManager::HoldTimers() {
  if (Kalvo_TimerManager* timers = Find()) timers->Hold();
}

void Kalvo_TimerManager::ReleaseTimers() {
  if (Kalvo_TimerManager* timers = Find()) timers->Release();
}

void Kalvo_TimerManager::GoOnInChild() {
  if (Kalvo_TimerManager* timers = Find()) timers->ownerLock_.TakeOver();
  ReleaseTimers();
}

std::uint32_t Kalvo_TimerManager::AddOwner(Kalvo_Timer* owner) {
  Kalvo_AutoLock guard(&ownerLock_);
  if (!owners_.HasFree() && !owners_.AddGroup()) return 0;
  MP_TimerOwner* const entry = owners_.Take();
  entry->timer = owner;
  return entry->id;
}

void Kalvo_TimerManager::RemoveOwner(std::uint32_t id) {
  Kalvo_AutoLock guard(&ownerLock_);
  if (MP_TimerOwner* entry = FindOwner(id)) owners_.Give(entry);
}

Kalvo_TimerManager::MP_TimerOwner* Kalvo_TimerManager::FindOwner(std::uint32_t id) const {
  MP_TimerOwner* const entry = owners_.At(id);
  return id != 0 && entry != nullptr && entry->id == id ? entry : nullptr;
}

void Kalvo_TimerManager::Dispatch(MP_TimerInfo* info) {
  Kalvo_AutoLock guard(&ownerLock_);
  MP_TimerOwner* const entry = FindOwner(info->timerId);
  if (entry == nullptr) return;
  entry->timer->OnTimer(info->id, info->count, info->owner, info->attr, info->seq, info->text());
}
