#include "net/socket_managers.h"

#include <memory>
#include <mutex>
#include <new>

#include "net/engine_call.h"

namespace socket_managers {
namespace {

// Nothing of these is ever destroyed: threads that the library does not know may come until the
// process has ended. The lock is recursive, for hosts whose callback makes a handler when a thread
// is created. Not every C++ library has a recursive mutex that needs no constructor and destructor.
std::recursive_mutex& Lock() {
  alignas(std::recursive_mutex) static unsigned char memory[sizeof(std::recursive_mutex)];
  static std::recursive_mutex* const lock = new (memory) std::recursive_mutex;
  return *lock;
}

MP_SocketManager* first = nullptr;
bool open = true;  // not from the stop of the library to its next start

constexpr std::uint32_t kPatienceMs = 100;

template <class Do>
void ForEach(Do what) {
  for (MP_SocketManager* manager = first; manager != nullptr; manager = manager->next()) {
    what(manager);
  }
}

}  // namespace

MP_SocketManager* GetManager(int kind) {
  const std::lock_guard<std::recursive_mutex> guard(Lock());
  if (!open) return nullptr;
  const bool server = kind == MANAGER_SERVER;
  MP_SocketManager* last = nullptr;
  for (MP_SocketManager* manager = first; manager != nullptr; manager = manager->next()) {
    last = manager;
    if (manager->GetKind() != kind || (server && manager->GetBusy())) continue;
    manager->SetBusy(server);
    return manager;
  }
  std::unique_ptr<MP_SocketManager> made(new (std::nothrow) MP_SocketManager);
  if (made == nullptr || !made->IsSound()) return nullptr;
  made->SetKind(kind);
  made->SetBusy(server);
  if (last != nullptr) {
    last->SetNext(made.get());
  } else {
    first = made.get();
  }
  return made.release();
}

MP_SocketManager* FindManager(Kalvo_SocketManagerHelper* manager) {
  const std::lock_guard<std::recursive_mutex> guard(Lock());
  MP_SocketManager* found = nullptr;
  ForEach([&](MP_SocketManager* one) { found = one == manager ? one : found; });
  return found;
}

void Make() {
  Kalvo_SOCK_Init();
  const std::lock_guard<std::recursive_mutex> guard(Lock());
  open = true;
}

// Handlers may still be in use in other threads, which are stopped after this.
void Stop() {
  {
    const std::lock_guard<std::recursive_mutex> guard(Lock());
    open = false;
  }
  ForEach([](MP_SocketManager* manager) { manager->NotifyQuit(); });
  ForEach([](MP_SocketManager* manager) { manager->StopThreads(); });
}

// Threads that the library does not know may still be inside, when the process ends before them.
// Then the system gets the memory.
void Free() {
  MP_EngineCall::EndTime();
  const bool unused = MP_EngineCall::WaitUntilNone(kPatienceMs);
  while (first != nullptr) {
    MP_SocketManager* const manager = first;
    first = manager->next();
    if (unused) delete manager;
  }
}

void Hold() { Lock().lock(); }
void Release() { Lock().unlock(); }

// What other threads had under way in the managers cannot be brought to an end, so they are left
// as they are, and no handler finds them any more.
void GoOnInChild() {
  MP_EngineCall::EndTime();
  MP_EngineCall::ForgetOthers();
  ForEach([](MP_SocketManager* manager) { manager->Abandon(); });
  first = nullptr;
  new (&Lock()) std::recursive_mutex;  // the old one knows its owner by a number of the parent's
}

}  // namespace socket_managers
