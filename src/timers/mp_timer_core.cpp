#include "timers/mp_timer_core.h"

#include <algorithm>
#include <cstdio>
#include <new>

#include "frame/messages.h"
#include "frame/mp_kernel_debug.h"
#include "monitor/kalvo_kobj_manager.h"
#include "platform/clock.h"
#include "platform/process.h"

namespace {

// How long the thread sleeps at most, in milliseconds: it has to give signs of life.
constexpr std::uint32_t kLongestWait = 1000;

// For how many firings at once memory is kept.
constexpr std::size_t kKeptFirings = 1024;

// How many milliseconds count as having passed if the tick count has stepped back, in a pass and
// elsewhere.
constexpr std::uint32_t kPassStep = 10;
constexpr std::uint32_t kArmStep = 5;

}  // namespace

MP_TimerCore::MP_TimerCore() : lastTick_(platform::tick_count()), wake_(platform::event_create()) {
  text_[0] = '\0';
}

MP_TimerCore::~MP_TimerCore() {
  StopThread();
  platform::event_destroy(wake_);
}

void MP_TimerCore::Dispatch(MP_TimerInfo*) {}

// --- The thread -----------------------------------------------------------------------

void MP_TimerCore::EnsureRunning(const char* name) {
  const std::uint32_t forks = platform::fork_count();
  if (started_ && forks_ == forks) return;
  Kalvo_KObjManager* const monitor = Kalvo_KObjManager::Get();
  if (monitor == nullptr) return;
  Kalvo_AutoLock guard(&lock_);
  if (started_ && forks_ == forks) return;
  // Before all else: what the host is told of the new thread may lead back here.
  started_ = true;
  forks_ = forks;
  monitor->DeleteThread(thread_.exchange(nullptr));
  text_[0] = '\0';
  char threadName[64];
  std::snprintf(threadName, sizeof(threadName), "MP_TimerThread(%s)", name);
  MP_Thread* const thread = monitor->NewThread(ThreadRoutine, this, true, threadName, text_);
  thread_ = thread;
  started_ = thread != nullptr;
  if (thread != nullptr) thread->Start();
}

void MP_TimerCore::StopThread() {
  MP_Thread* const thread = thread_.exchange(nullptr);
  if (thread == nullptr) return;
  thread->NotifyQuit();
  platform::event_set(wake_);
  if (Kalvo_KObjManager* monitor = Kalvo_KObjManager::Get()) monitor->DeleteThread(thread);
}

unsigned long MP_TimerCore::ThreadRoutine(void* self) {
  MP_TimerCore* const core = static_cast<MP_TimerCore*>(self);
  if (MP_Thread* thread = core->thread_) core->Run(thread);
  return 0;
}

void MP_TimerCore::Run(MP_Thread* thread) {
  while (thread->Running() != 0) {
    if (fired_.empty()) platform::event_wait(wake_, wait_);
    platform::event_reset(wake_);  // the pass sees whatever it was set for
    DeliverFired();
    RunPass();
  }
}

void MP_TimerCore::DeliverFired() {
  delivering_.swap(fired_);
  for (MP_TimerInfo& info : delivering_) Deliver(&info);
  delivering_.clear();
  if (delivering_.capacity() > kKeptFirings) delivering_.shrink_to_fit();
}

void MP_TimerCore::Deliver(MP_TimerInfo* info) {
  std::snprintf(text_, sizeof(text_), "id=[%d],owner=[%d],time=[%d],attr=[%d]",
                static_cast<int>(info->id), static_cast<int>(info->owner),
                static_cast<int>(info->ms), static_cast<int>(info->attr));
  if (MP_Thread* thread = thread_) thread->StackTextChanged();
  if (!platform::call_guarded([this, info] { Dispatch(info); })) {
    Kalvo_KernelDebugLog(kernel_debug::kError, "<error> OnTimer Fatal ERROR!!!");
  }
}

// --- Firing ---------------------------------------------------------------------------

// Moves the clock on by what the tick count has gained, which wraps.
std::uint64_t MP_TimerCore::Now(std::uint32_t stepBack) {
  const std::uint32_t tick = platform::tick_count();
  const std::uint32_t gained = tick - lastTick_;
  lastTick_ = tick;
  now_ += static_cast<std::int32_t>(gained) >= 0 ? gained : stepBack;
  return now_;
}

// All that is due is taken before anything is armed again, so a timer fires once in a pass.
void MP_TimerCore::RunPass() {
  const MP_ShieldedGuard guard(&lock_);
  const std::uint64_t now = Now(kPassStep);
  wakeAt_ = 0;  // nothing that is armed below has to wake this thread
  std::uint64_t next = lists_.TakeDue(now, now + kLongestWait, &due_);
  for (const std::uint16_t place : due_) {
    MP_TimerRecord* const record = records_.At(std::uint32_t{place} << 16);
    if (!Fire(record)) {
      Arm(record, MP_TimerDue(now, false));  // and the next pass tries again
    } else if (record->repeat != 0) {
      Rearm(record, now);
    } else {
      Free(record);
      continue;
    }
    next = std::min(next, record->due.time());
  }
  due_.clear();
  wakeAt_ = std::max(next, now + 1);
  wait_ = static_cast<std::uint32_t>(wakeAt_ - now);
}

bool MP_TimerCore::Fire(MP_TimerRecord* record) {
  ++record->count;
  try {
    fired_.push_back(*record);
  } catch (const std::bad_alloc&) {
    --record->count;
    return false;
  }
  if (record->repeat != kWithoutEnd) --record->repeat;
  return true;
}

// An interval is kept to the millisecond: what comes early by the slack each time would come
// too often, and if the slack is all of it, in every pass.
void MP_TimerCore::Rearm(MP_TimerRecord* record, std::uint64_t now) {
  Arm(record, MP_TimerDue(now + std::max<std::uint32_t>(record->ms, 1), true));
}

void MP_TimerCore::Arm(MP_TimerRecord* record, MP_TimerDue due) {
  record->list = lists_.Arm(due, record->place);
  record->due = due;
  if (due.time() >= wakeAt_) return;
  wakeAt_ = due.time();  // for which the thread now sleeps too long
  platform::event_set(wake_);
}

void MP_TimerCore::Free(MP_TimerRecord* record) {
  record->hasData = false;
  record->data = std::string();
  records_.Give(record);
}

// --- Operations -----------------------------------------------------------------------

// A free record with a new number; null if there are too many or memory ran out.
MP_TimerRecord* MP_TimerCore::TakeRecord() {
  if (records_.HasFree()) return records_.Take();
  due_.reserve(static_cast<std::size_t>(records_.groupCount() + 1) * records_.kGroupSize);
  if (!records_.AddGroup()) return nullptr;
  MP_TimerRecord* const record = records_.Take();
  kernel_debug::Tell(0, 0, messages::kTimerGroupMade, records_.groupCount());
  return record;
}

std::uint32_t MP_TimerCore::Set(std::uint32_t count, const MP_TimerInfo& timer, const char* data) {
  if (count == 0) return 0;
  const MP_ShieldedGuard guard(&lock_);
  MP_TimerRecord* record = nullptr;
  try {
    record = TakeRecord();
    if (record != nullptr) {
      const std::uint32_t id = record->id;
      static_cast<MP_TimerInfo&>(*record) = timer;
      record->id = id;
      record->repeat = count;
      record->hasData = data != nullptr;
      if (data != nullptr) record->data = data;
      Arm(record, MP_TimerDue(Now(kArmStep) + timer.ms, false));
      return id;
    }
  } catch (const std::bad_alloc&) {
    if (record != nullptr) Free(record);
  }
  Kalvo_KernelDebugLog(kernel_debug::kError, messages::kTimerNoResource, timer.ms, timer.owner,
                       timer.attr, timer.seq, data != nullptr ? data : "NULL");
  return 0;
}

// The record of a timer; null, with a line about it, if there is none of that number.
MP_TimerRecord* MP_TimerCore::Find(std::uint32_t id, const char* missing,
                                   const char* mismatch) const {
  MP_TimerRecord* const record = records_.At(id);
  if (record == nullptr) {
    Kalvo_KernelDebugLog(0, missing, id);
    return nullptr;
  }
  if (record->id != id) {
    Kalvo_KernelDebugLog(0, mismatch, id, record->id);
    return nullptr;
  }
  return record;
}

void MP_TimerCore::Clear(std::uint32_t id) {
  if (id == 0) return;
  const MP_ShieldedGuard guard(&lock_);
  MP_TimerRecord* const record =
      Find(id, messages::kTimerClearMissing, messages::kTimerClearMismatch);
  if (record == nullptr) return;
  Disarm(record);
  Free(record);
}

std::uint32_t MP_TimerCore::Reset(std::uint32_t id, std::uint32_t ms) {
  if (id == 0) return 0;
  const MP_ShieldedGuard guard(&lock_);
  MP_TimerRecord* const record =
      Find(id, messages::kTimerClearMissing, messages::kTimerClearMismatch);
  if (record == nullptr) return 0;
  Disarm(record);
  if (ms != 0) record->ms = ms;
  record->count = 0;
  Arm(record, MP_TimerDue(Now(kArmStep) + record->ms, false));
  return id;
}

std::uint32_t MP_TimerCore::Watch(std::uint32_t id, bool stop) {
  if (id == 0) return 0;
  const MP_ShieldedGuard guard(&lock_);
  MP_TimerRecord* const record =
      Find(id, messages::kTimerWatchMissing, messages::kTimerWatchMismatch);
  if (record == nullptr) return 0xFFFFFFFF;
  const std::uint64_t now = Now(kArmStep);
  const std::uint64_t left = record->due.time() > now ? record->due.time() - now : 0;
  const std::uint64_t passed = record->ms > left ? record->ms - left : 0;
  if (stop) {
    Disarm(record);
    Free(record);
  }
  return static_cast<std::uint32_t>(passed);
}
