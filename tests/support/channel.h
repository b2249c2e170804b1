// What the library says on the kernel debug channel while a test runs.

#ifndef KALVOBASE_TESTS_SUPPORT_CHANNEL_H_
#define KALVOBASE_TESTS_SUPPORT_CHANNEL_H_

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

#include "kalvobase/kernel_debug.h"

namespace support {

// Collects the lines of both streams, each as "level text". One at a time.
class Channel {
 public:
  Channel() {
    SetKalvo_KernelDebugLogFunction(OnLog);
    SetKalvo_KernelDebugPrintFunction(OnPrint);
    Take(&logged_);
    Take(&printed_);
  }
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;
  ~Channel() {
    ResetKalvo_KernelDebugLogFunction();
    ResetKalvo_KernelDebugPrintFunction();
  }

  // The lines since the last call that contain `part`.
  std::vector<std::string> Logged(const std::string& part = "") {
    return Filter(Take(&logged_), part);
  }
  std::vector<std::string> Printed(const std::string& part = "") {
    return Filter(Take(&printed_), part);
  }

 private:
  using Lines = std::vector<std::string>;

  static void OnLog(int level, const char* format, va_list args) {
    Add(&logged_, level, format, args);
  }
  static void OnPrint(int level, const char* format, va_list args) {
    Add(&printed_, level, format, args);
  }
  static void Add(Lines* lines, int level, const char* format, va_list args) {
    char text[1000];
    std::vsnprintf(text, sizeof(text), format, args);
    const std::lock_guard<std::mutex> guard(lock_);
    lines->push_back(std::to_string(level) + " " + text);
  }
  static Lines Take(Lines* lines) {
    const std::lock_guard<std::mutex> guard(lock_);
    Lines taken;
    taken.swap(*lines);
    return taken;
  }
  static Lines Filter(const Lines& lines, const std::string& part) {
    Lines found;
    for (const std::string& line : lines) {
      if (line.find(part) != std::string::npos) found.push_back(line);
    }
    return found;
  }

  static inline std::mutex lock_;
  static inline Lines logged_;
  static inline Lines printed_;
};

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_CHANNEL_H_
