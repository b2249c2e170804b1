// LogLine: what a record says, put together before anything is locked.

#ifndef KALVOBASE_SRC_LOGGING_LOG_LINE_H_
#define KALVOBASE_SRC_LOGGING_LOG_LINE_H_

#include <cstdarg>

#include "files/mp_stream_core.h"

// It begins with room for the prefix, in blanks. Grows as it needs to; what no memory can be had
// for is left out.
class LogLine : public MP_StreamCore {
 public:
  static constexpr int kPrefixLength = 31;

  LogLine() : MP_StreamCore(firstBlock_, sizeof(firstBlock_), sizeof(firstBlock_) - 1, false) {
    PutRun(' ', kPrefixLength);
  }

  void AddMessage(const char* format, va_list args);

  // Two digits and a blank for each byte, 32 of them in a line.
  void AddHex(const char* data, int length);

  // Ends the line, if it does not stand at the beginning of one.
  void EndLine();

  // Ends the line, whether or not there is something in it.
  void AddEmptyLine() { WriteBlock("\n", 1); }

  // All of it, the place of the prefix first.
  char* text() { return block_; }

 private:
  char firstBlock_[1024];
};

#endif  // KALVOBASE_SRC_LOGGING_LOG_LINE_H_
