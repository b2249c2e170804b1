#include "frame/mp_kernel_debug.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>

#include "frame/process_object.h"
#include "logging/mp_log.h"
#include "platform/clock.h"
#include "platform/process.h"

namespace {

ProcessObject<MP_KernelDebug> theChannel;

constexpr int kErrorLogSize = 0x1400000;
constexpr int kErrorLogLevel = 1000;

// How long the end of the process waits in all for callbacks that other threads run.
constexpr std::uint32_t kPatienceMs = 500;

// Which callback ends with each entry of the library in the list of what runs at exit, the last one
// first.
struct Ending {
  KernelDebugFunction function;
  Ending* next;
};
std::mutex endingsLock;
Ending* lastEnding = nullptr;

std::atomic<int> runningCallbacks{0};
thread_local int ownCallbacks = 0;  // of these in the calling thread

// Outlives the channel, which may be freed while a thread that the library does not know is in a
// callback.
class RunningCallback {
 public:
  RunningCallback() {
    ++runningCallbacks;
    ++ownCallbacks;
  }
  RunningCallback(const RunningCallback&) = delete;
  RunningCallback& operator=(const RunningCallback&) = delete;
  ~RunningCallback() {
    --ownCallbacks;
    --runningCallbacks;
  }
};

}  // namespace

MP_KernelDebug* MP_KernelDebug::Get() { return theChannel.Get(); }

void MP_KernelDebug::Free() { theChannel.Free(); }

void MP_KernelDebug::Hold() {
  endingsLock.lock();
  MP_KernelDebug* const channel = theChannel.Peek();
  if (channel != nullptr && channel->errorLog_ != nullptr) channel->errorLog_->Hold();
}

void MP_KernelDebug::Release() {
  endingsLock.unlock();
  MP_KernelDebug* const channel = theChannel.Peek();
  if (channel != nullptr && channel->errorLog_ != nullptr) channel->errorLog_->Release();
}

// The callbacks of other threads do not run in the child.
void MP_KernelDebug::GoOnInChild() {
  runningCallbacks = ownCallbacks;
  Release();
}

MP_KernelDebug::MP_KernelDebug() {
  const char* const directory = platform::environment_variable("Kalvo_Err_LogDir");
  if (directory == nullptr) return;
  std::printf("Kalvo_Err_LogDir = %s\n", directory);
  errorLog_.reset(new (std::nothrow) MP_Log);
  if (errorLog_ == nullptr) return;
  errorLog_->SetMainDirectory(directory);
  errorLog_->SetSizeLimit(kErrorLogSize);
  errorLog_->Init("kl_error", kErrorLogLevel);
}

MP_KernelDebug::~MP_KernelDebug() = default;

void MP_KernelDebug::DoNothing(int, const char*, va_list) {}

void MP_KernelDebug::Set(Slot* slot, KernelDebugFunction function) {
  if (function != nullptr) EndWithStatics(function, 1);
  slot->called = false;
  slot->function = function != nullptr ? function : DoNothing;
}

// Static objects inside a callback are made by its first call: so a callback has one entry from
// when it is set, and one from behind that call.
void MP_KernelDebug::EndWithStatics(KernelDebugFunction function, int entries) {
  const std::lock_guard<std::mutex> guard(endingsLock);
  for (const Ending* ending = lastEnding; ending != nullptr; ending = ending->next) {
    if (ending->function == function) --entries;
  }
  if (entries < 1) return;
  Ending* const ending = new (std::nothrow) Ending{function, lastEnding};
  if (ending == nullptr) return;
  if (std::atexit(OnStaticsEnd) == 0) {
    lastEnding = ending;
  } else {
    delete ending;
  }
}

void MP_KernelDebug::OnStaticsEnd() {
  std::unique_ptr<Ending> last;
  {
    const std::lock_guard<std::mutex> guard(endingsLock);
    last.reset(lastEnding);
    lastEnding = last->next;
  }
  if (MP_KernelDebug* channel = theChannel.Peek()) channel->Forget(last->function);
}

// Waits for the calls that run, but for those that the calling thread is in.
void MP_KernelDebug::Forget(KernelDebugFunction function) {
  for (Slot* slot : {&print_, &log_, &error_}) {
    KernelDebugFunction expected = function;
    slot->function.compare_exchange_strong(expected, DoNothing);
  }
  static const std::uint32_t start = platform::tick_count();
  while (runningCallbacks > ownCallbacks && platform::tick_count() - start < kPatienceMs) {
    platform::sleep_ms(1);
  }
}

// Counts first and looks at the slot then, for the sake of Forget. The callback reads a list of its
// own, so that the next one finds the arguments from their beginning.
void MP_KernelDebug::Call(Slot* slot, int level, const char* format, va_list args) {
  if (slot->function == DoNothing) return;
  const RunningCallback running;
  const KernelDebugFunction function = slot->function;
  va_list copy;
  va_copy(copy, args);
  function(level, format, copy);
  va_end(copy);
  if (!slot->called.exchange(true)) EndWithStatics(function, 2);
}

void MP_KernelDebug::Print(int level, const char* format, va_list args) {
  Call(&print_, level, format, args);
}

void MP_KernelDebug::Log(int level, const char* format, va_list args) {
  if (level <= kErrorLevel) {
    if (error_.function != nullptr) {  // which it will never be again
      Call(&error_, level, format, args);
    } else if (errorLog_ != nullptr) {
      errorLog_->Print(level, format, args);
    }
  }
  Call(&log_, level, format, args);
}

void kernel_debug::Tell(int logLevel, int printLevel, const char* format, ...) {
  MP_KernelDebug* const channel = MP_KernelDebug::Get();
  if (channel == nullptr) return;
  va_list args;
  va_start(args, format);
  channel->Log(logLevel, format, args);
  channel->Print(printLevel, format, args);
  va_end(args);
}
