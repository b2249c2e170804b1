#include "frame/mp_kernel_debug.h"
#include "kalvobase/kernel_debug.h"

extern "C" void Kalvo_KernelDebugPrint(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  Kalvo_KernelDebugVPrint(level, format, args);
  va_end(args);
}

extern "C" void Kalvo_KernelDebugVPrint(int level, const char* format, va_list args) {
  if (MP_KernelDebug* channel = MP_KernelDebug::Get()) channel->Print(level, format, args);
}

extern "C" void Kalvo_KernelDebugLog(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  Kalvo_KernelDebugVLog(level, format, args);
  va_end(args);
}

extern "C" void Kalvo_KernelDebugVLog(int level, const char* format, va_list args) {
  if (MP_KernelDebug* channel = MP_KernelDebug::Get()) channel->Log(level, format, args);
}

extern "C" void SetKalvo_KernelDebugPrintFunction(KernelDebugFunction function) {
  if (MP_KernelDebug* channel = MP_KernelDebug::Get()) channel->SetPrint(function);
}

extern "C" void SetKalvo_KernelDebugLogFunction(KernelDebugFunction function) {
  if (MP_KernelDebug* channel = MP_KernelDebug::Get()) channel->SetLog(function);
}

extern "C" void SetKalvo_KernelDebugErrLogFunction(KernelDebugFunction function) {
  if (MP_KernelDebug* channel = MP_KernelDebug::Get()) channel->SetErrorLog(function);
}

extern "C" void ResetKalvo_KernelDebugPrintFunction(void) {
  SetKalvo_KernelDebugPrintFunction(nullptr);
}

extern "C" void ResetKalvo_KernelDebugLogFunction(void) {
  SetKalvo_KernelDebugLogFunction(nullptr);
}
