// The kernel debug channel: what the library says about itself.
//
//   void ShowLine(int level, const char* format, va_list args) {
//     if (level <= 3) std::vfprintf(stderr, format, args);
//   }
//   ...
//   SetKalvo_KernelDebugPrintFunction(ShowLine);
//
// There are two streams, Print and Log, and nothing happens to a line until the host installs
// a callback for its stream. Many lines go to both, to Log first. A host may write to the
// channel, too.
//
// A level of -4096 or below is an error. If the environment variable Kalvo_Err_LogDir is set
// when the library is loaded, errors of the Log stream go to a log named "kl_error" below the
// directory that it names (see Kalvo_Log), unless an error callback is installed.
//
// Install callbacks before other threads use the library. They run on the thread that has
// something to say, often with a lock of the library held, so they must not make or destroy
// threads, logs or timers, and should return soon. What they are given is good for the call
// only. A format may end in a line feed or not. Chinese texts are GBK.
//
// At the end of the process static objects are destroyed in the reverse order of their making. When
// that comes to the moment at which a callback was first set, or first called, it is not called any
// more. So it may use static objects that existed by then, its own among them.

#ifndef KALVOBASE_KERNEL_DEBUG_H_
#define KALVOBASE_KERNEL_DEBUG_H_

#include <cstdarg>

#include "kalvobase/types.h"

// Takes a level and what printf takes. A callback that reads `args` twice copies it first.
typedef void (*KernelDebugFunction)(int level, const char* format, va_list args);

extern "C" {

// Give a line to the Print stream. `args` is left as it was.
KALVO_API void Kalvo_KernelDebugPrint(int level, const char* format, ...);
KALVO_API void Kalvo_KernelDebugVPrint(int level, const char* format, va_list args);

// Give a line to the Log stream: an error goes to the error callback, or else to the
// "kl_error" log if there is one; then every line goes to the log callback.
KALVO_API void Kalvo_KernelDebugLog(int level, const char* format, ...);
KALVO_API void Kalvo_KernelDebugVLog(int level, const char* format, va_list args);

// Install a callback in place of the one before. For Print and Log a null one does nothing
// from then on. So does a null error callback, and with it the "kl_error" log is silent for
// good.
KALVO_API void SetKalvo_KernelDebugPrintFunction(KernelDebugFunction function);
KALVO_API void SetKalvo_KernelDebugLogFunction(KernelDebugFunction function);
KALVO_API void SetKalvo_KernelDebugErrLogFunction(KernelDebugFunction function);

// Nothing happens to the lines of a stream any more.
KALVO_API void ResetKalvo_KernelDebugPrintFunction(void);
KALVO_API void ResetKalvo_KernelDebugLogFunction(void);
}

#endif  // KALVOBASE_KERNEL_DEBUG_H_
