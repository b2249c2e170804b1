// LogLine: what a record says, put together before anything is locked.

#ifndef KALVOBASE_SRC_LOGGING_LOG_LINE_H_
#define KALVOBASE_SRC_LOGGING_LOG_LINE_H_

#include <cstdarg>

#include "files/mp_stream_core.h"

// Grows as it needs to. What no memory can be had for is left out.
class LogLine : public MP_StreamCore {
 public:
  LogLine() : MP_StreamCore(firstBlock_, sizeof(firstBlock_), sizeof(firstBlock_) - 1, false) {}

  void AddMessage(const char* format, va_list args);

  // Two digits and a blank for each byte, 32 of them in a line.
  void AddHex(const char* data, int length);

  // Begins a new line, if it does not stand at the beginning of one.
  void EndLine();

  const char* text() const { return block_; }

 private:
  char firstBlock_[1024];
};

#endif  // KALVOBASE_SRC_LOGGING_LOG_LINE_H_
