// Numbers as digits, without the runtime library's printf and with the same results.

#ifndef KALVOBASE_SRC_TEXT_NUMBER_TEXT_H_
#define KALVOBASE_SRC_TEXT_NUMBER_TEXT_H_

#include <cstdint>

namespace text {

// Room for the digits of any 64-bit number in base 8, 10 or 16.
constexpr int kMaxIntegerDigits = 22;

// Writes the digits of `value` so that they end before `end`, and gives their start.
char* DecimalDigits(std::uint64_t value, char* end);
// How many that are.
inline int DecimalLength(std::uint32_t value) {
  for (int n = 1;; n += 4) {
    if (value < 10) return n;
    if (value < 100) return n + 1;
    if (value < 1000) return n + 2;
    if (value < 10000) return n + 3;
    value /= 10000;
  }
}
// `shift` is 3 for octal and 4 for hexadecimal digits, taken from `alphabet`.
char* BitDigits(std::uint64_t value, int shift, const char* alphabet, char* end);

// The precision up to which FixedDigits works, and the room that it needs.
constexpr int kMaxFixedPrecision = 30;
constexpr int kMaxFixedDigits = kMaxIntegerDigits + 1 + kMaxFixedPrecision;

// Writes `value`, which must not be negative, with `precision` fractional digits, a '.' in
// front of them if there are any, correctly rounded, a tie to the even digit. Returns the
// number of bytes, or 0 if the value is one for the runtime library: not finite, not below
// 2^63, or with bits below 2^-60.
int FixedDigits(double value, int precision, char* out);

// Reads binary or hexadecimal digits, 1 or 4 bits each, up to the first other byte. A leading
// '-' counts, and an 'x' among hexadecimal digits starts the number anew.
std::int32_t ParseDigits(const char* text, int bitsPerDigit);

// The byte that a backslash and `c` stand for; a blank if they stand for none.
char Unescape(char c);

}  // namespace text

#endif  // KALVOBASE_SRC_TEXT_NUMBER_TEXT_H_
