#include "text/number_text.h"

#include <algorithm>
#include <cstring>

#include "text/text_bytes.h"

namespace text {
namespace {

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839404142434445"
    "46474849505152535455565758596061626364656667686970717273747576777879808182838485868788899091"
    "9293949596979899";

// Adds 1 to the last digit of a decimal text; true if a carry is left.
bool RoundUp(char* begin, char* end) {
  while (end != begin) {
    char& digit = *--end;
    if (digit == '.') continue;
    if (digit != '9') {
      ++digit;
      return false;
    }
    digit = '0';
  }
  return true;
}

}  // namespace

char* DecimalDigits(std::uint64_t value, char* end) {
  while (value >= 100) {
    end -= 2;
    std::memcpy(end, kDigitPairs + value % 100 * 2, 2);
    value /= 100;
  }
  if (value >= 10) {
    end -= 2;
    std::memcpy(end, kDigitPairs + value * 2, 2);
  } else {
    *--end = static_cast<char>('0' + value);
  }
  return end;
}

char* BitDigits(std::uint64_t value, int shift, const char* alphabet, char* end) {
  const std::uint64_t mask = (std::uint64_t{1} << shift) - 1;
  do {
    *--end = alphabet[value & mask];
    value >>= shift;
  } while (value != 0);
  return end;
}

// value = whole + fraction / 2^bits holds exactly, and so does every step below: ten times
// a fraction of at most 60 bits fits 64 bits.
int FixedDigits(double value, int precision, char* out) {
  constexpr int kMaxBits = 60;
  constexpr std::uint64_t kOne = std::uint64_t{1} << kMaxBits;
  if (!(value < 9223372036854775808.0) || precision > kMaxFixedPrecision) return 0;
  const std::uint64_t whole = static_cast<std::uint64_t>(value);
  const double rest = value - static_cast<double>(whole);
  const double scaled = rest * static_cast<double>(kOne);
  std::uint64_t fraction = static_cast<std::uint64_t>(scaled);
  if (static_cast<double>(fraction) != scaled) return 0;

  char digits[kMaxIntegerDigits];
  char* const digitsEnd = digits + kMaxIntegerDigits;
  const char* start = DecimalDigits(whole, digitsEnd);
  // One byte stays free in front, for the carry of 9.99.
  char* const begin = out + 1;
  char* end = std::copy(start, static_cast<const char*>(digitsEnd), begin);
  if (precision > 0) *end++ = '.';
  for (int i = 0; i < precision; ++i) {
    fraction *= 10;
    *end++ = static_cast<char>('0' + (fraction >> kMaxBits));
    fraction &= kOne - 1;
  }
  const bool lastIsOdd = ((end[-1] - '0') & 1) != 0;
  int length = static_cast<int>(end - begin);
  if ((fraction > kOne / 2 || (fraction == kOne / 2 && lastIsOdd)) && RoundUp(begin, end)) {
    *out = '1';
    return length + 1;
  }
  std::memmove(out, begin, static_cast<std::size_t>(length));
  return length;
}

std::int32_t ParseDigits(const char* c, int bitsPerDigit) {
  const bool negative = *c == '-';
  if (negative) ++c;
  std::uint32_t value = 0;
  for (;; ++c) {
    const int lower = LowerAscii(static_cast<unsigned char>(*c));
    int digit;
    if (lower >= '0' && lower <= '9') {
      digit = lower - '0';
    } else if (lower >= 'a' && lower <= 'f') {
      digit = lower - 'a' + 10;
    } else if (lower == 'x' && bitsPerDigit == 4) {
      value = 0;
      continue;
    } else {
      break;
    }
    if (digit >= 1 << bitsPerDigit) break;
    value = (value << bitsPerDigit) + static_cast<std::uint32_t>(digit);
  }
  return static_cast<std::int32_t>(negative ? 0 - value : value);
}

char Unescape(char c) {
  switch (c) {
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case '\\':
      return '\\';
    case '0':
      return '\0';
    default:
      return ' ';
  }
}

}  // namespace text
