#include "frame/mp_kernel_debug.h"

#include <cstdio>
#include <new>

#include "frame/process_object.h"
#include "logging/mp_log.h"
#include "platform/clock.h"
#include "platform/process.h"

namespace {

ProcessObject<MP_KernelDebug> theChannel;

constexpr int kErrorLogSize = 0x1400000;
constexpr int kErrorLogLevel = 1000;

}  // namespace

MP_KernelDebug* MP_KernelDebug::Get() { return theChannel.Get(); }

void MP_KernelDebug::Free() { theChannel.Free(); }

void MP_KernelDebug::Hold() {
  MP_KernelDebug* const channel = theChannel.Peek();
  if (channel != nullptr && channel->errorLog_ != nullptr) channel->errorLog_->Hold();
}

void MP_KernelDebug::Release() {
  MP_KernelDebug* const channel = theChannel.Peek();
  if (channel != nullptr && channel->errorLog_ != nullptr) channel->errorLog_->Release();
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

// The callback reads a list of its own, so that the next one finds the arguments from their
// beginning.
void MP_KernelDebug::Call(KernelDebugFunction function, int level, const char* format,
                          va_list args) {
  if (function == DoNothing) return;
  va_list copy;
  va_copy(copy, args);
  function(level, format, copy);
  va_end(copy);
}

void MP_KernelDebug::Print(int level, const char* format, va_list args) {
  Call(print_, level, format, args);
}

void MP_KernelDebug::Log(int level, const char* format, va_list args) {
  if (level <= kErrorLevel) {
    const KernelDebugFunction error = error_;
    if (error != nullptr) {
      Call(error, level, format, args);
    } else if (errorLog_ != nullptr) {
      errorLog_->Print(level, format, args);
    }
  }
  Call(log_, level, format, args);
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
