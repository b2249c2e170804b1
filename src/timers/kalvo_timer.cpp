#include "kalvobase/timer.h"
#include "timers/kalvo_timer_manager.h"

Kalvo_Timer::Kalvo_Timer() : identify_(0) {
  if (Kalvo_TimerManager* timers = Kalvo_TimerManager::Get()) identify_ = timers->AddOwner(this);
}
Kalvo_Timer::Kalvo_Timer(const Kalvo_Timer& other) = default;
Kalvo_Timer& Kalvo_Timer::operator=(const Kalvo_Timer& other) = default;
Kalvo_Timer::~Kalvo_Timer() {
  if (Kalvo_TimerManager* timers = Kalvo_TimerManager::Find()) timers->RemoveOwner(identify_);
}

unsigned long Kalvo_Timer::SetTimer(unsigned long ms, unsigned long owner, unsigned long attr,
                                    unsigned long seq, const char* data) {
  return SetRepeatTimer(1, ms, owner, attr, seq, data);
}

unsigned long Kalvo_Timer::SetRepeatTimer(unsigned long count, unsigned long ms,
                                          unsigned long owner, unsigned long attr,
                                          unsigned long seq, const char* data) {
  Kalvo_TimerManager* const timers = Kalvo_TimerManager::Get();
  if (timers == nullptr) return 0;
  MP_TimerInfo timer;
  timer.timerId = identify_;
  timer.ms = static_cast<std::uint32_t>(ms);
  timer.owner = static_cast<std::uint32_t>(owner);
  timer.attr = static_cast<std::uint32_t>(attr);
  timer.seq = static_cast<std::uint32_t>(seq);
  return timers->Set(static_cast<std::uint32_t>(count), timer, data);
}

void Kalvo_Timer::ClearTimer(unsigned long id) {
  if (Kalvo_TimerManager* timers = Kalvo_TimerManager::Get()) {
    timers->Clear(static_cast<std::uint32_t>(id));
  }
}

unsigned long Kalvo_Timer::ResetTimer(unsigned long id, unsigned long ms) {
  Kalvo_TimerManager* const timers = Kalvo_TimerManager::Get();
  if (timers == nullptr) return 0;
  return timers->Reset(static_cast<std::uint32_t>(id), static_cast<std::uint32_t>(ms));
}

unsigned long Kalvo_Timer::Watch(unsigned long id, int stop) {
  Kalvo_TimerManager* const timers = Kalvo_TimerManager::Get();
  if (timers == nullptr) return 0xFFFFFFFF;
  return timers->Watch(static_cast<std::uint32_t>(id), stop != 0);
}

void Kalvo_Timer::OnTimer(unsigned long, unsigned long, unsigned long, unsigned long, unsigned long,
                          const char*) {}
