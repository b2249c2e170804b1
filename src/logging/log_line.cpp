#include "logging/log_line.h"

#include "text/format_engine.h"

namespace {

constexpr int kHexPerLine = 32;

}  // namespace

void LogLine::AddMessage(const char* format, va_list args) { text::Format(this, format, args); }

void LogLine::AddHex(const char* data, int length) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  char line[kHexPerLine * 3 + 1];
  char* out = line;
  for (int i = 0; data != nullptr && i < length; ++i) {
    const unsigned char byte = static_cast<unsigned char>(data[i]);
    *out++ = kDigits[byte >> 4];
    *out++ = kDigits[byte & 15];
    *out++ = ' ';
    if ((i + 1) % kHexPerLine != 0) continue;
    *out++ = '\n';
    WriteBlock(line, static_cast<int>(out - line));
    out = line;
  }
  WriteBlock(line, static_cast<int>(out - line));
}

void LogLine::EndLine() {
  if (GetLastByte() == '\n' || PutByte('\n') == '\n') return;
  end[-1] = '\n';  // no memory is left for another byte
}
