#include "timers/mp_timer_core.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <utility>

#include "frame/messages.h"
#include "frame/mp_kernel_debug.h"
#include "monitor/kalvo_kobj_manager.h"
#include "platform/clock.h"
#include "platform/process.h"
#include "platform/thread.h"
#include "platform/thread_number.h"

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
  // In a child that was forked in OnTimer the calling thread still uses these. The new thread
  // starts without any.
  abandoned_.swap(delivering_);
  delivering_.clear();
  fired_.clear();
  deliveredPass_ = pass_;
  text_[0] = '\0';
  char threadName[64];
  std::snprintf(threadName, sizeof(threadName), "MP_TimerThread(%s)", name);
  const platform::SignalsBlocked quiet;
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
  if (Kalvo_KObjManager* monitor = Kalvo_KObjManager::Find()) monitor->DeleteThread(thread);
  DropFirings();
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
    if (!DeliverFired()) return;
    RunPass();
  }
}

bool MP_TimerCore::DeliverFired() {
  if (fired_.empty()) return true;
  MP_Thread* const deliverer = thread_;
  deliverer_ = platform::thread_number();
  std::uint64_t pass;
  {
    const MP_ShieldedGuard guard(&lock_);
    delivering_.swap(fired_);
    delivered_ = 0;
    pass = pass_;
  }
  for (MP_TimerInfo& info : delivering_) {
    Deliver(&info);
    // After the stop, or in a child that was forked in OnTimer, all of this is another thread's.
    if (thread_ != deliverer) return false;
    ++delivered_;
  }
  const MP_ShieldedGuard guard(&lock_);
  delivering_.clear();
  if (delivering_.capacity() > kKeptFirings) delivering_.shrink_to_fit();
  deliveredPass_ = pass;
  return true;
}

// For when no thread delivers them any more.
void MP_TimerCore::DropFirings() {
  const MP_ShieldedGuard guard(&lock_);
  fired_.clear();
  delivered_ = delivering_.size();
  deliveredPass_ = pass_;
}

bool MP_TimerCore::IsUndelivered(std::uint32_t id) {
  const MP_ShieldedGuard guard(&lock_);
  const auto isMeant = [id](const MP_TimerInfo& info) { return info.id == id; };
  const auto next = std::min<std::size_t>(delivered_, delivering_.size());
  return std::any_of(fired_.begin(), fired_.end(), isMeant) ||
         std::any_of(delivering_.begin() + static_cast<std::ptrdiff_t>(next), delivering_.end(),
                     isMeant);
}

// A destructor that clears its timers relies on this. The limit keeps a host going that clears a
// timer under a lock for which OnTimer waits.
void MP_TimerCore::AwaitDelivery(std::uint32_t id) {
  if (deliverer_ == platform::thread_number()) return;
  const std::uint32_t start = platform::tick_count();
  while (IsUndelivered(id) && platform::tick_count() - start < kDeliveryMs) platform::sleep_ms(1);
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
  ++pass_;
  std::uint64_t next = lists_.TakeDue(now, now + kLongestWait, &due_);
  SortDue();
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

// The lists are taken one after the other. What is due at the same time fires in the order in which
// it was armed.
void MP_TimerCore::SortDue() {
  const auto isBefore = [this](std::uint16_t left, std::uint16_t right) {
    const MP_TimerRecord* const a = records_.At(std::uint32_t{left} << 16);
    const MP_TimerRecord* const b = records_.At(std::uint32_t{right} << 16);
    return std::make_pair(a->due.time(), a->armed) < std::make_pair(b->due.time(), b->armed);
  };
  if (!std::is_sorted(due_.begin(), due_.end(), isBefore)) {
    std::sort(due_.begin(), due_.end(), isBefore);
  }
}

bool MP_TimerCore::Fire(MP_TimerRecord* record) {
  ++record->count;
  try {
    fired_.push_back(*record);
  } catch (const std::bad_alloc&) {
    --record->count;
    return false;
  }
  record->pass = pass_;
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
  record->armed = ++armed_;
  if (due.time() >= wakeAt_) return;
  wakeAt_ = due.time();  // for which the thread now sleeps too long
  platform::event_set(wake_);
}

void MP_TimerCore::Free(MP_TimerRecord* record) {
  record->hasData = false;
  record->data = std::string();
  record->pass = 0;
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
  {
    const MP_ShieldedGuard guard(&lock_);
    MP_TimerRecord* const record =
        Find(id, messages::kTimerClearMissing, messages::kTimerClearMismatch);
    // The last firing of a timer frees its record, so this also counts for one that is not found.
    const std::uint64_t pass = record != nullptr ? record->pass : pass_;
    if (record != nullptr) {
      Disarm(record);
      Free(record);
    }
    if (pass <= deliveredPass_) return;
  }
  AwaitDelivery(id);
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
