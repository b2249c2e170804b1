// Formatting, conversion and searching in strings.

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "text/base64.h"
#include "text/date_format.h"
#include "text/format_engine.h"
#include "text/mp_string.h"
#include "text/number_text.h"
#include "text/text_bytes.h"

// --- Formatting ---------------------------------------------------------------------

// What is formatted for this string. Format and arguments may be parts of the string, which
// stays whole until all of it has been written.
MP_String* MP_String::Formatted(const char* format, va_list args) {
  MP_String* scratch = Scratch();
  text::Format(scratch, format, args);
  return scratch;
}

MP_String* MP_String::FormattedDate(long stamp, const char* format) {
  MP_String* scratch = Scratch();
  text::AppendDate(scratch, stamp, format);
  return scratch;
}

// Made by the first formatted write, and made anew when it has grown large.
MP_String* MP_String::Scratch() {
  constexpr int kLargestScratch = 1 << 16;
  if (scratch_ == nullptr || scratch_->capacity() > kLargestScratch) {
    scratch_ = std::make_unique<MP_String>();
  }
  scratch_->Clear();
  return scratch_.get();
}

void MP_String::Format(const char* format, va_list args) { Assign(*Formatted(format, args)); }

void MP_String::AppendFormat(const char* format, va_list args) { Append(*Formatted(format, args)); }

void MP_String::InsertFormat(int position, const char* format, va_list args) {
  const MP_String& formatted = *Formatted(format, args);
  Insert(position, formatted.Content(), formatted.Length());
}

void MP_String::FormatDate(long stamp, const char* format) {
  Assign(*FormattedDate(stamp, format));
}

void MP_String::AppendDate(long stamp, const char* format) {
  Append(*FormattedDate(stamp, format));
}

// --- Numbers ------------------------------------------------------------------------

// Digits of 1 or 4 bits each behind an optional sign, wrapping at 32 bits. In hexadecimal
// an 'x' starts the number anew, which skips the prefix of 0x1F.
std::int32_t MP_String::ToInt(int base) {
  Trim();
  switch (base) {
    case 16:
      return text::ParseDigits(Text(), 4);
    case 2:
      return text::ParseDigits(Text(), 1);
    default:
      return static_cast<std::int32_t>(std::strtoll(Text(), nullptr, 10));
  }
}

double MP_String::ToFloat() { return std::strtod(Text(), nullptr); }

char MP_String::ToChar() {
  const char* c = Text();
  if (c[0] == '\\') return text::Unescape(c[1]);
  if (c[0] != '0') return static_cast<char>(std::strtoll(c, nullptr, 10));
  return c[1] == 'x' || c[1] == 'X' ? static_cast<char>(text::ParseDigits(c, 4)) : '0';
}

// --- Searching ----------------------------------------------------------------------

// One pass that does not step back: the byte that breaks a partial match is not compared
// with the start of the pattern again.
const char* MP_String::Find(int start, const char* pattern, int& position, int patternLength) {
  position = -1;
  const char* content = Text();
  if (patternLength < 1) patternLength = text::Length(pattern);
  start = std::max(start, 0);
  if (pattern == nullptr || patternLength == 0 || start >= Length()) return nullptr;
  int matched = 0;
  for (const char* c = content + start; c != end; ++c) {
    if (*c != pattern[matched]) {
      matched = 0;
    } else if (++matched == patternLength) {
      position = static_cast<int>(c - content) + 1 - patternLength;
      return content + position;
    }
  }
  return nullptr;
}

const char* MP_String::FindLast(const char* pattern, int& position, int patternLength) {
  position = -1;
  const char* content = Text();
  if (patternLength < 1) patternLength = text::Length(pattern);
  if (pattern == nullptr || patternLength == 0) return nullptr;
  int matched = 0;
  for (const char* c = end; c != content;) {
    --c;
    if (*c != pattern[patternLength - 1 - matched]) {
      matched = 0;
    } else if (++matched == patternLength) {
      position = static_cast<int>(c - content);
      return c;
    }
  }
  return nullptr;
}

int MP_String::FindLastChar(char c) const {
  int i = Length() - 1;
  while (i >= 0 && block_[i] != c) --i;
  return i;
}

const char* MP_String::MatchBrack(int start, const char* open, const char* close, int& openPosition,
                                  int& closePosition) {
  closePosition = -1;
  const char* opening = Find(start, open, openPosition, 0);
  if (opening == nullptr) return nullptr;
  if (Find(openPosition, close, closePosition, 0) == nullptr) return nullptr;

  const int openLength = text::Length(open);
  const int closeLength = text::Length(close);
  int nested = 0;
  int at = openPosition;
  while (Find(at + openLength, open, at, 0) != nullptr && at <= closePosition) ++nested;
  for (; nested > 0; --nested) {
    if (Find(closePosition + closeLength, close, closePosition, 0) == nullptr) return nullptr;
  }
  return opening;
}

// --- Base64 -------------------------------------------------------------------------

const char* MP_String::AppendBase64(const char* bytes, int n) {
  if (bytes == nullptr || n < 1) return Text();
  const std::ptrdiff_t offset = OffsetOf(bytes);
  const std::int64_t size = text::Base64EncodedSize(n);
  if (size <= INT_MAX && Reserve(static_cast<int>(size)) > 0) {
    end = text::Base64Encode(offset < 0 ? bytes : block_ + offset, n, end);
  }
  return Text();
}

const char* MP_String::AppendDecodedBase64(const char* text) {
  return AppendDecodedBase64(text, text::Length(text));
}

const char* MP_String::AppendDecodedBase64(const char* bytes, int n) {
  if (bytes == nullptr || n < 4) return Text();
  const std::ptrdiff_t offset = OffsetOf(bytes);
  if (Reserve(text::Base64DecodedSize(n)) > 0) {
    end = text::Base64Decode(offset < 0 ? bytes : block_ + offset, n, end);
  }
  return Text();
}
