// A program's log: what it does, how its metrics move, and what the library says of itself.

#ifndef GATEWAY_JOURNAL_H_
#define GATEWAY_JOURNAL_H_

#include <kalvobase/kalvobase.h>

// One at a time. Any thread may write to it.
class Journal {
 public:
  // Writes to a log of this name below `directory`, from where the program was started. Of the
  // library's lines those of up to `level` are kept.
  Journal(const char* directory, const char* name, int level);
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;
  ~Journal();

  Kalvo_Log* log() { return &log_; }

  // An FSM_LogCallback: a line of a state machine. Without a journal it goes nowhere.
  static void Trace(int level, const char* format, ...);

 private:
  static void OnLine(int level, const char* format, va_list args);

  Kalvo_Log log_;
};

#endif  // GATEWAY_JOURNAL_H_
