#include "logging/mp_log.h"

#include <algorithm>
#include <cstring>
#include <exception>

#include "files/stream_kind.h"
#include "kalvobase/text.h"
#include "platform/calendar.h"
#include "platform/clock.h"
#include "platform/thread.h"
#include "text/number_text.h"

namespace {

constexpr int kPrefixLength = 31;
constexpr int kIdDigits = 4;

// A record of up to this size goes out in one write.
constexpr int kOnePiece = 0x10000;

}  // namespace

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
  Record(now.milliseconds, line);
}

void MP_Log::Print(long time, int level, const char* format, va_list args) {
  if (!Passes(level)) return;
  LogLine line;
  line.AddMessage(format, args);
  line.EndLine();
  const MP_ShieldedGuard guard(&lock_);
  SetStamp(time);
  Record(platform::wall_time().milliseconds, line);
}

void MP_Log::HexPrint(int level, const char* data, int length, const char* format, va_list args) {
  if (!Passes(level)) return;
  LogLine line;
  line.AddMessage(format, args);
  line.EndLine();
  line.AddHex(data, length);
  line.PutByte('\n');
  const MP_ShieldedGuard guard(&lock_);
  SetStamp(platform::wall_time().seconds);
  Record(static_cast<int>(platform::tick_count() % 1000), line);
}

// Nothing that goes wrong reaches the host.
void MP_Log::Record(int milliseconds, const LogLine& line) {
  try {
    file_.Roll(stamp_.local);
    if (!file_.IsOpen()) return;
    file_.MendLine();
    PutBytes(waiting_.data(), waiting_.size());
    waiting_.clear();
    const int length = kPrefixLength + line.Length();
    if (length <= kOnePiece) file_.writer()->Reserve(length);
    PutPrefix(milliseconds);
    PutBytes(line.text(), static_cast<std::size_t>(line.Length()));
    file_.Flush();
  } catch (const std::exception&) {
  }
}

// A second that no calendar knows counts as now.
void MP_Log::SetStamp(long second) {
  if (!platform::local_time(second, &stamp_.local)) {
    second = platform::wall_time().seconds;
    platform::local_time(second, &stamp_.local);
  }
  Kalvo_String text;
  text.sprintf("[%4d-%02d-%02d %02d:%02d:%02d ", stamp_.local.tm_year + 1900,
               stamp_.local.tm_mon + 1, stamp_.local.tm_mday, stamp_.local.tm_hour,
               stamp_.local.tm_min, stamp_.local.tm_sec);
  stamp_.text = text.c_str();
  stamp_.second = second;
}

void MP_Log::PutPrefix(int milliseconds) {
  char id[text::kMaxIntegerDigits];
  char* const end = id + sizeof(id);
  std::fill_n(id, sizeof(id), '0');
  const char* digits = text::BitDigits(platform::current_thread_id(), 4, "0123456789abcdef", end);
  digits = std::min(digits, static_cast<const char*>(end - kIdDigits));

  char tail[kPrefixLength];
  char* out = tail;
  for (const int unit : {100, 10, 1}) *out++ = static_cast<char>('0' + milliseconds / unit % 10);
  *out++ = ' ';
  out = std::copy_n(digits, kIdDigits, out);
  *out++ = ']';
  *out++ = ' ';
  PutBytes(stamp_.text.data(), stamp_.text.size());
  PutBytes(tail, static_cast<std::size_t>(out - tail));
}

void MP_Log::PutBytes(const char* bytes, std::size_t n) {
  file_.Count(file_.writer()->WriteBlock(bytes, static_cast<int>(n)));
}

void MP_Log::Write(const char* text) {
  if (text == nullptr) return;
  const MP_ShieldedGuard guard(&lock_);
  try {
    std::string line(kPrefixLength, ' ');
    line += text;
    if (line.back() != '\n') line += '\n';
    if (file_.IsOpen()) {
      PutBytes(line.data(), line.size());
    } else if (waiting_.size() + line.size() <= kStreamCapacity) {
      waiting_ += line;
    }
  } catch (const std::exception&) {
  }
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
