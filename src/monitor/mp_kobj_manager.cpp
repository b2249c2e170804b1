#include "monitor/mp_kobj_manager.h"

#include <cstdint>
#include <memory>
#include <new>

#include "frame/messages.h"
#include "frame/mp_kernel_debug.h"
#include "logging/mp_log.h"
#include "monitor/log_reclaim.h"
#include "platform/calendar.h"
#include "platform/clock.h"
#include "platform/process.h"
#include "platform/thread.h"

namespace {

constexpr char kThreadName[] = "Kalvo_KObjManager::doMonitor";

// All in milliseconds.
constexpr std::uint32_t kSleep = 100;
constexpr std::uint32_t kPassInterval = 1000;
constexpr std::uint32_t kThreadInterval = 10000;

// How long a thread may give no sign of life before it is reported, and reported as an error.
constexpr long kQuietSeconds = 5;
constexpr long kHungSeconds = 120;

void CheckThread(MP_Thread* thread) {
  const long lag = platform::wall_time().seconds - thread->lastActive();
  if (lag < kQuietSeconds) return;
  const int level = lag <= kHungSeconds ? 3 : kernel_debug::kError;
  const int seconds = static_cast<int>(lag);
  if (thread->stackText() != nullptr) {
    kernel_debug::Tell(level, 3, messages::kMonitorHungWithStack, thread->id(), thread->name(),
                       seconds, thread->StateText(), thread->stackText());
  } else {
    kernel_debug::Tell(level, 3, messages::kMonitorHung, thread->id(), thread->name(), seconds,
                       thread->StateText());
  }
}

bool CheckLog(MP_Log* log) {
  log->CheckFile();
  std::tm today = {};
  platform::local_time(platform::wall_time().seconds, &today);
  return ReclaimLogSpace(log->MainDirectory(), today);
}

}  // namespace

// What the registry holds.
class MP_KObjManager::Node : public Kalvo_QueueObject {
 public:
  enum Type { kThread = 1, kLog = 2 };
  virtual const void* object() const = 0;
};

class MP_KObjManager::ThreadNode : public Node {
 public:
  ~ThreadNode() override {
    if (thread_ != nullptr) MP_Thread::Destroy(thread_);
  }
  int GetType() override { return kThread; }
  const void* object() const override { return thread_; }
  MP_Thread* thread() const { return thread_; }
  void Hold(MP_Thread* thread) { thread_ = thread; }

 private:
  MP_Thread* thread_ = nullptr;
};

class MP_KObjManager::LogNode : public Node {
 public:
  int GetType() override { return kLog; }
  const void* object() const override { return &log_; }
  MP_Log* log() { return &log_; }

 private:
  MP_Log log_;
};

MP_KObjManager::MP_KObjManager() : stop_(platform::event_create()) {}

MP_KObjManager::~MP_KObjManager() {
  StopThreads();
  registry_.RemoveAll();
  platform::event_destroy(stop_);
}

void MP_KObjManager::EnsureRunning() {
  const std::uint32_t forks = platform::fork_count();
  if (stopped_ || (started_ && forks_ == forks)) return;
  Kalvo_AutoLock guard(&lock_);
  if (stopped_ || (started_ && forks_ == forks)) return;
  // Before all else: a callback of the host that hears of the new thread may lead back here.
  started_ = true;
  forks_ = forks;
  if (MP_Thread* lost = thread_.exchange(nullptr)) MP_Thread::Destroy(lost);
  const platform::SignalsBlocked quiet;
  MP_Thread* const thread =
      new (std::nothrow) MP_Thread(DoMonitor, this, false, kThreadName, nullptr);
  thread_ = thread;
  started_ = thread != nullptr;
  if (thread != nullptr) thread->Start();
}

void MP_KObjManager::Hold() {
  lock_.Lock();
  ForEachLog([](MP_Log* log) { log->Hold(); });
}

void MP_KObjManager::Release() {
  ForEachLog([](MP_Log* log) { log->Release(); });
  lock_.Unlock();
}

template <class Action>
void MP_KObjManager::ForEachLog(Action action) {
  for (Kalvo_QueueObject* item = registry_.PeekHead(0); item != nullptr; item = item->Next()) {
    if (item->GetType() == Node::kLog) action(static_cast<LogNode*>(item)->log());
  }
}

void MP_KObjManager::StopThreads() {
  stopped_ = true;
  if (MP_Thread* thread = thread_.exchange(nullptr)) {
    thread->NotifyQuit();
    platform::event_set(stop_);
    MP_Thread::Destroy(thread);
  }
  // While everything that they may use is still there. Each is destroyed outside the lock.
  while (TakeThread() != nullptr) {
  }
}

std::unique_ptr<MP_KObjManager::Node> MP_KObjManager::TakeThread() {
  const MP_ShieldedGuard guard(&lock_);
  Kalvo_QueueObject* item = registry_.PeekHead(0);
  while (item != nullptr && item->GetType() != Node::kThread) item = item->Next();
  if (item != nullptr) item->Remove();
  return std::unique_ptr<Node>(static_cast<Node*>(item));
}

unsigned long MP_KObjManager::DoMonitor(void* self) {
  static_cast<MP_KObjManager*>(self)->Monitor();
  return 0;
}

void MP_KObjManager::Monitor() {
  MP_Thread* const self = thread_;
  std::uint32_t last = platform::tick_count();
  std::uint32_t elapsed = 0;
  std::uint32_t sinceCheck = 0;
  while (self != nullptr && self->Running() != 0) {
    platform::event_wait(stop_, kSleep);
    const std::uint32_t now = platform::tick_count();
    elapsed += now - last;
    last = now;
    if (elapsed < kPassInterval) continue;
    sinceCheck += elapsed;
    elapsed = 0;
    RunPass(sinceCheck > kThreadInterval);
    if (sinceCheck > kThreadInterval) sinceCheck = 0;
  }
}

void MP_KObjManager::RunPass(bool threads) {
  Kalvo_AutoLock guard(&lock_);
  Node* acted = nullptr;
  for (Kalvo_QueueObject* item = registry_.PeekHead(0); item != nullptr; item = item->Next()) {
    if (item->GetType() == Node::kThread) {
      MP_Thread* const thread = static_cast<ThreadNode*>(item)->thread();
      if (threads) platform::call_guarded([thread] { CheckThread(thread); });
    } else if (acted == nullptr) {
      LogNode* const node = static_cast<LogNode*>(item);
      platform::call_guarded([&] {
        if (CheckLog(node->log())) acted = node;
      });
    }
  }
  // The next log gets its turn.
  if (acted != nullptr) acted->ToTail();
}

// Takes the node; what it holds goes with it if there is no memory for its place.
bool MP_KObjManager::Add(std::unique_ptr<Node> node) {
  const MP_ShieldedGuard guard(&lock_);
  if (registry_.AddItemAtTail(node.get()) == nullptr) return false;
  static_cast<void>(node.release());
  return true;
}

// The node goes outside the lock, since a thread may take its time to end.
void MP_KObjManager::Delete(const void* object) {
  if (object == nullptr) return;
  std::unique_ptr<Node> found;
  {
    const MP_ShieldedGuard guard(&lock_);
    Kalvo_QueueObject* item = registry_.PeekHead(0);
    while (item != nullptr && static_cast<Node*>(item)->object() != object) item = item->Next();
    if (item == nullptr) return;
    item->Remove();
    found.reset(static_cast<Node*>(item));
  }
}

MP_Thread* MP_KObjManager::NewThread(MP_Thread::Routine routine, void* context, bool run,
                                     const char* name, const char* stackText) {
  std::unique_ptr<ThreadNode> node(new (std::nothrow) ThreadNode);
  if (node == nullptr) return nullptr;
  MP_Thread* const thread = new (std::nothrow) MP_Thread(routine, context, run, name, stackText);
  node->Hold(thread);
  return thread != nullptr && Add(std::move(node)) ? thread : nullptr;
}

void MP_KObjManager::DeleteThread(MP_Thread* thread) { Delete(thread); }

MP_Log* MP_KObjManager::NewLog() {
  std::unique_ptr<LogNode> node(new (std::nothrow) LogNode);
  if (node == nullptr) return nullptr;
  MP_Log* const log = node->log();
  return Add(std::move(node)) ? log : nullptr;
}

void MP_KObjManager::DeleteLog(MP_Log* log) { Delete(log); }
