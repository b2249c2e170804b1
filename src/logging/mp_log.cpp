#include "logging/mp_log.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

#include "files/stream_kind.h"
#include "kalvobase/text.h"
#include "platform/calendar.h"
#include "platform/clock.h"
#include "platform/thread.h"
#include "text/number_text.h"

void MP_Log::Init(const char* name, int level) {
  const MP_ShieldedGuard guard(&lock_);
  file_.SetBaseName(name);
  level_ = level;
}

void MP_Log::SetMainDirectory(const char* directory) {
  if (directory == nullptr) return;
  const MP_ShieldedGuard guard(&lock_);
  file_.SetMainDirectory(directory);
}

void MP_Log::SetSizeLimit(int bytes) {
  const MP_ShieldedGuard guard(&lock_);
  file_.SetSizeLimit(bytes);
}

std::string MP_Log::MainDirectory() {
  const MP_ShieldedGuard guard(&lock_);
  return file_.mainDirectory();
}

void MP_Log::Print(int level, const char* format, va_list args) {
  if (!Passes(level)) return;
  LogLine line;
  line.AddMessage(format, args);
  line.EndLine();
  const MP_ShieldedGuard guard(&lock_);
  const platform::WallTime now = platform::wall_time();
  if (stamp_.second != now.seconds) SetStamp(now.seconds);
  Record(now.milliseconds, &line);
}

void MP_Log::Print(long time, int level, const char* format, va_list args) {
  if (!Passes(level)) return;
  LogLine line;
  line.AddMessage(format, args);
  line.EndLine();
  const MP_ShieldedGuard guard(&lock_);
  SetStamp(time);
  Record(platform::wall_time().milliseconds, &line);
}

void MP_Log::HexPrint(int level, const char* data, int length, const char* format, va_list args) {
  if (!Passes(level)) return;
  LogLine line;
  line.AddMessage(format, args);
  line.EndLine();
  line.AddHex(data, length);
  line.AddEmptyLine();
  const MP_ShieldedGuard guard(&lock_);
  SetStamp(platform::wall_time().seconds);
  Record(static_cast<int>(platform::tick_count() % 1000), &line);
}

// One write, so that records of other processes do not come in between. Nothing that goes wrong
// reaches the host.
void MP_Log::Record(int milliseconds, LogLine* line) {
  try {
    file_.Roll(stamp_.local);
    if (!file_.IsOpen()) return;
    file_.MendLine();
    PutWaiting();
    file_.Flush();
    StorePrefix(milliseconds, line->text());
    file_.Count(file_.writer()->WriteDirect(line->text(), line->Length()));
  } catch (const std::exception&) {
  }
}

// A second that no calendar knows counts as now.
void MP_Log::SetStamp(long second) {
  constexpr int kLastYear = INT_MAX - 1900;
  if (!platform::local_time(second, &stamp_.local) || stamp_.local.tm_year > kLastYear) {
    second = platform::wall_time().seconds;
    platform::local_time(second, &stamp_.local);
  }
  try {
    Kalvo_String text;
    text.sprintf("[%4d-%02d-%02d %02d:%02d:%02d ", stamp_.local.tm_year + 1900,
                 stamp_.local.tm_mon + 1, stamp_.local.tm_mday, stamp_.local.tm_hour,
                 stamp_.local.tm_min, stamp_.local.tm_sec);
    std::memcpy(stamp_.text, text.c_str(), std::min<std::size_t>(text.length(), kStampLength));
    stamp_.second = second;
  } catch (const std::bad_alloc&) {
    stamp_.second = LONG_MIN;
  }
}

// The milliseconds and the thread's number follow the stamp.
void MP_Log::StorePrefix(int milliseconds, char* prefix) const {
  char id[text::kMaxIntegerDigits];
  char* const end = id + sizeof(id);
  std::fill_n(id, sizeof(id), '0');
  const char* digits = text::BitDigits(platform::current_thread_id(), 4, "0123456789abcdef", end);
  digits = std::min(digits, static_cast<const char*>(end - kIdDigits));

  char* out = std::copy_n(stamp_.text, kStampLength, prefix);
  for (const int unit : {100, 10, 1}) *out++ = static_cast<char>('0' + milliseconds / unit % 10);
  *out++ = ' ';
  out = std::copy_n(digits, kIdDigits, out);
  *out++ = ']';
  *out = ' ';
}

void MP_Log::Write(const char* text) {
  if (text == nullptr) return;
  LogLine line;
  line.WriteBlock(text, -1);
  line.EndLine();
  const MP_ShieldedGuard guard(&lock_);
  try {
    if (file_.IsOpen()) {
      file_.MendLine();
      file_.Count(file_.writer()->WriteBlock(line.text(), line.Length()));
    } else if (waiting_.size() + static_cast<std::size_t>(line.Length()) <= kStreamCapacity) {
      waiting_.append(line.text(), static_cast<std::size_t>(line.Length()));
    }
  } catch (const std::exception&) {
  }
}

// What Write was given while there was no file.
void MP_Log::PutWaiting() {
  if (waiting_.empty()) return;
  file_.Count(file_.writer()->WriteBlock(waiting_.data(), static_cast<int>(waiting_.size())));
  waiting_.clear();
}

void MP_Log::Flush() {
  const MP_ShieldedGuard guard(&lock_);
  if (file_.IsOpen()) file_.Flush();
}

void MP_Log::CheckFile() {
  const MP_ShieldedGuard guard(&lock_);
  try {
    SetStamp(platform::wall_time().seconds);
    file_.Check(stamp_.local);
  } catch (const std::exception&) {
  }
}
