#include "net/socket_managers.h"

#include <memory>
#include <new>
#include <vector>

#include "frame/process_object.h"
#include "net/engine_call.h"

namespace socket_managers {
namespace {

struct Registry {
  Registry() { Kalvo_SOCK_Init(); }

  MP_Lock lock;
  std::vector<MP_SocketManager*> managers;
};

ProcessObject<Registry> theRegistry;

constexpr std::uint32_t kPatienceMs = 100;

}  // namespace

MP_SocketManager* GetManager(int kind) {
  Registry* const registry = theRegistry.Get();
  if (registry == nullptr) return nullptr;
  Kalvo_AutoLock guard(&registry->lock);
  const bool server = kind == MANAGER_SERVER;
  for (MP_SocketManager* manager : registry->managers) {
    if (manager->GetKind() != kind || (server && manager->GetBusy())) continue;
    manager->SetBusy(server);
    return manager;
  }
  std::unique_ptr<MP_SocketManager> made(new (std::nothrow) MP_SocketManager);
  if (made == nullptr || !made->IsSound()) return nullptr;
  made->SetKind(kind);
  made->SetBusy(server);
  registry->managers.push_back(made.get());
  return made.release();
}

MP_SocketManager* FindManager(Kalvo_SocketManagerHelper* manager) {
  Registry* const registry = theRegistry.Get();
  if (registry == nullptr) return nullptr;
  Kalvo_AutoLock guard(&registry->lock);
  for (MP_SocketManager* one : registry->managers) {
    if (one == manager) return one;
  }
  return nullptr;
}

void Make() { theRegistry.Get(); }

// Handlers may still be in use in other threads, which are stopped after this.
void Stop() {
  Registry* const registry = theRegistry.Peek();
  if (registry == nullptr) return;
  std::vector<MP_SocketManager*> managers;
  {
    Kalvo_AutoLock guard(&registry->lock);
    managers = registry->managers;
  }
  for (MP_SocketManager* manager : managers) manager->NotifyQuit();
  for (MP_SocketManager* manager : managers) manager->StopThreads();
}

// Threads that the library does not know may still be inside, when the process ends before them.
// Then the system gets the memory.
void Free() {
  Registry* const registry = theRegistry.Peek();
  if (registry == nullptr) return;
  MP_EngineCall::EndTime();
  if (MP_EngineCall::WaitUntilNone(kPatienceMs)) {
    for (MP_SocketManager* manager : registry->managers) delete manager;
  }
  theRegistry.Free();
}

void Hold() {
  if (Registry* registry = theRegistry.Peek()) registry->lock.Lock();
}

void Release() {
  if (Registry* registry = theRegistry.Peek()) registry->lock.Unlock();
}

// What other threads had under way in the managers cannot be brought to an end, so they are left
// as they are, and no handler finds them any more.
void GoOnInChild() {
  Registry* const registry = theRegistry.Peek();
  if (registry == nullptr) return;
  MP_EngineCall::EndTime();
  MP_EngineCall::ForgetOthers();
  for (MP_SocketManager* manager : registry->managers) manager->Abandon();
  registry->managers.clear();
  registry->lock.Unlock();
}

}  // namespace socket_managers
