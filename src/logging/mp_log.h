// MP_Log: what is behind a Kalvo_Log. The object monitor owns it.

#ifndef KALVOBASE_SRC_LOGGING_MP_LOG_H_
#define KALVOBASE_SRC_LOGGING_MP_LOG_H_

#include <atomic>
#include <climits>
#include <cstdarg>
#include <string>

#include "concurrency/mp_lock.h"
#include "logging/log_file.h"
#include "logging/log_line.h"

// Every log has a lock, also one of which the host promises to use it from one thread: the
// monitor is another one.
class MP_Log {
 public:
  MP_Log() = default;
  MP_Log(const MP_Log&) = delete;
  MP_Log& operator=(const MP_Log&) = delete;

  void Init(const char* name, int level);
  void SetMainDirectory(const char* directory);
  void ChangeLevel(int level) { level_ = level; }
  void SetSizeLimit(int bytes);

  void Print(int level, const char* format, va_list args);
  void Print(long time, int level, const char* format, va_list args);
  void HexPrint(int level, const char* data, int length, const char* format, va_list args);
  void Write(const char* text);
  void Flush();
  void CheckFile();

  // For a fork: nobody else uses the log between the two.
  void Hold() { lock_.Lock(); }
  void Release() { lock_.Unlock(); }

  // The second is for threads other than those that set it.
  const char* GetDirInfo() const { return file_.mainDirectory().c_str(); }
  std::string MainDirectory();

 private:
  static constexpr int kStampLength = 21;
  static constexpr int kIdDigits = 4;

  // The local time of a second, and as it stands in a prefix, up to the milliseconds.
  struct Stamp {
    long second = LONG_MIN;
    std::tm local = {};
    char text[kStampLength + 1] = "";
  };

  bool Passes(int level) const { return level <= level_.load(std::memory_order_relaxed); }

  // These expect the lock to be held. SetStamp looks again also for the second that it has.
  void Record(int milliseconds, LogLine* line);
  void SetStamp(long second);
  void StorePrefix(int milliseconds, char* prefix) const;
  void PutWaiting();

  std::atomic<int> level_{INT_MIN};
  MP_Lock lock_;
  LogFile file_;
  Stamp stamp_;
  std::string waiting_;  // what Write was given while there was no file
};

#endif  // KALVOBASE_SRC_LOGGING_MP_LOG_H_
