#include "concurrency/mp_thread.h"
#include "kalvobase/thread.h"
#include "monitor/kalvo_kobj_manager.h"

namespace {

// Hosts call some operations on a null handle, which a compiler takes for impossible.
Kalvo_Thread* MaybeNull(Kalvo_Thread* handle) {
  Kalvo_Thread* volatile seen = handle;
  return seen;
}

}  // namespace

Kalvo_Thread::Kalvo_Thread(unsigned long (*routine)(void*), void* context, long run,
                           const char* name, void* stackText, unsigned int)
    : impl_(nullptr) {
  const bool runNow = static_cast<Kalvo_Long>(run) != 0;
  Kalvo_KObjManager* const monitor = Kalvo_KObjManager::Get();
  if (monitor == nullptr) return;
  impl_ = monitor->NewThread(routine, context, runNow, name, static_cast<const char*>(stackText));
  // Last of all: the routine may use this handle, and destroy it.
  if (impl_ != nullptr && runNow) impl_->Start();
}
Kalvo_Thread::Kalvo_Thread(const Kalvo_Thread& other) = default;
Kalvo_Thread& Kalvo_Thread::operator=(const Kalvo_Thread& other) = default;
Kalvo_Thread::~Kalvo_Thread() {
  if (Kalvo_KObjManager* monitor = Kalvo_KObjManager::Find()) monitor->DeleteThread(impl_);
}

void Kalvo_Thread::Destroy() { delete MaybeNull(this); }

int Kalvo_Thread::Running() { return impl_ != nullptr ? impl_->Running() : 0; }
void Kalvo_Thread::NotifyQuit() {
  Kalvo_Thread* const self = MaybeNull(this);
  if (self != nullptr && self->impl_ != nullptr) self->impl_->NotifyQuit();
}
void Kalvo_Thread::Stop() { WaitFor(2000); }
int Kalvo_Thread::WaitFor(unsigned long ms) {
  return impl_ != nullptr ? impl_->WaitFor(static_cast<std::uint32_t>(ms)) : 0;
}
int Kalvo_Thread::Kill(unsigned long code) {
  return impl_ != nullptr ? impl_->Kill(static_cast<std::uint32_t>(code)) : 1;
}
int Kalvo_Thread::Terminate(int code) {
  return Kill(static_cast<unsigned long>(static_cast<std::uint32_t>(code)));
}
int Kalvo_Thread::Exit(unsigned long code) {
  return impl_ != nullptr ? impl_->Exit(static_cast<std::uint32_t>(code)) : 1;
}
unsigned long Kalvo_Thread::Suspend() { return impl_ != nullptr ? impl_->Suspend() : 0; }
unsigned long Kalvo_Thread::Resume() { return impl_ != nullptr ? impl_->Resume() : 0; }
unsigned long Kalvo_Thread::Continue() { return Resume(); }
int Kalvo_Thread::IsValid() { return impl_ != nullptr ? impl_->IsValid() : 0; }
int Kalvo_Thread::GetExitCode(unsigned long& code) {
  return impl_ != nullptr ? impl_->GetExitCode(code) : 0;
}
long Kalvo_Thread::GetLastActiveTime() { return impl_ != nullptr ? impl_->lastActive() : 0; }
const char* Kalvo_Thread::GetThreadName() { return impl_ != nullptr ? impl_->name() : ""; }
unsigned long Kalvo_Thread::GetId() { return impl_ != nullptr ? impl_->id() : 0; }
unsigned long Kalvo_Thread::GetRealId() { return platform::current_thread_id(); }
void* Kalvo_Thread::GetHandle() { return impl_ != nullptr ? impl_->handle() : nullptr; }
int Kalvo_Thread::GetPriority() {
  return impl_ != nullptr ? impl_->GetPriority() : platform::kPriorityUnknown;
}
int Kalvo_Thread::SetPriority(int priority) {
  return impl_ != nullptr ? impl_->SetPriority(priority) : 1;
}
