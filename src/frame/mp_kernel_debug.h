// MP_KernelDebug: the channel behind the Kalvo_KernelDebug functions.

#ifndef KALVOBASE_SRC_FRAME_MP_KERNEL_DEBUG_H_
#define KALVOBASE_SRC_FRAME_MP_KERNEL_DEBUG_H_

#include <atomic>
#include <cstdarg>
#include <memory>

#include "kalvobase/kernel_debug.h"

class MP_Log;

class MP_KernelDebug {
 public:
  // Levels of this value and below are errors.
  static constexpr int kErrorLevel = -4096;

  // Opens the error log if the environment asks for it.
  MP_KernelDebug();
  MP_KernelDebug(const MP_KernelDebug&) = delete;
  MP_KernelDebug& operator=(const MP_KernelDebug&) = delete;
  virtual ~MP_KernelDebug();

  // The channel of the process; null if memory ran out.
  static MP_KernelDebug* Get();
  static void Free();

  // For a fork: no other thread sets a callback or uses the error log between the two.
  static void Hold();
  static void Release();
  static void GoOnInChild();

  void Print(int level, const char* format, va_list args);
  void Log(int level, const char* format, va_list args);

  void SetPrint(KernelDebugFunction function) { Set(&print_, function); }
  void SetLog(KernelDebugFunction function) { Set(&log_, function); }
  void SetErrorLog(KernelDebugFunction function) { Set(&error_, function); }

 private:
  struct Slot {
    std::atomic<KernelDebugFunction> function;
    std::atomic<bool> called{false};  // since it was set
  };

  static void DoNothing(int level, const char* format, va_list args);
  static void Set(Slot* slot, KernelDebugFunction function);
  static void Call(Slot* slot, int level, const char* format, va_list args);

  // At the end of the process the host's static objects go in the reverse order of their making.
  // From when this is called the callback lasts as long as the objects that exist by then, if it
  // has fewer than so many entries already.
  static void EndWithStatics(KernelDebugFunction function, int entries);
  static void OnStaticsEnd();
  void Forget(KernelDebugFunction function);

  Slot print_{{DoNothing}};
  Slot log_{{DoNothing}};
  Slot error_{{nullptr}};             // null: the error log
  std::unique_ptr<MP_Log> errorLog_;  // null unless the environment asks for it
};

namespace kernel_debug {

// The level of every error of the library itself.
constexpr int kError = -4097;

// A line for the Log stream at one level, then for the Print stream at another.
void Tell(int logLevel, int printLevel, const char* format, ...);

}  // namespace kernel_debug

#endif  // KALVOBASE_SRC_FRAME_MP_KERNEL_DEBUG_H_
