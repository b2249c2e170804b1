// The format engine: its own rules by table, everything it shares with the C library by
// comparison.

#include <gtest/gtest.h>

#include <cerrno>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "kalvobase/text.h"
#include "text/format_engine.h"
#include "text/mp_string.h"
#include "text/number_text.h"

namespace {

std::string Content(const Kalvo_String& s) { return std::string(s.c_str(), s.length()); }

std::string Format(const char* format, ...) {
  va_list args;
  va_start(args, format);
  Kalvo_String s;
  s.vsprintf(format, args);
  va_end(args);
  return Content(s);
}

template <class... T>
std::string Printf(const std::string& format, T... values) {
  const int n = std::snprintf(nullptr, 0, format.c_str(), values...);
  std::string out(static_cast<std::size_t>(n) + 1, '\0');
  std::snprintf(&out[0], out.size(), format.c_str(), values...);
  out.resize(static_cast<std::size_t>(n));
  return out;
}

TEST(Format, OwnRules) {
  EXPECT_EQ(Format("%d%%", 5), "5%");
  EXPECT_EQ(Format("%s", static_cast<const char*>(nullptr)), "");
  EXPECT_EQ(Format("[%5s]", static_cast<const char*>(nullptr)), "[]");
  // A width cuts as well as it pads.
  EXPECT_EQ(Format("%2d|%3d|%03d|%3f", 12345, -12345, 12345, 3.14159), "12|-12|123|3.1");
  EXPECT_EQ(Format("%1s|%3s|%3.5s|%-3.5s", "ab", "abcdef", "abcdef", "abcdef"), "a|abc|abc|abc");
  EXPECT_EQ(Format("%5s|%-5s|%6.2f|%03d", "ab", "ab", 3.14159, 7), "   ab|ab   |  3.14|007");
  EXPECT_EQ(Format("%*d|%-*d|%*d|%.*s", 3, 7, 3, 7, 2, 12345, 2, "abcd"), "  7|7  |12|ab");
  // A negative width from an argument justifies to the left and cuts nothing.
  EXPECT_EQ(Format("%*d|%*d|%*s", -4, 12, -2, 12345, -2, "abc"), "12  |12345|abc");
  // No precision and a precision of 0 are the same for a text.
  EXPECT_EQ(Format("%.0s|%.s|%.1s|%.*s|%.*s", "ab", "ab", "ab", 0, "ab", -3, "ab"),
            "ab|ab|a|ab|ab");
  EXPECT_EQ(Format("%5.0s|%1.0s|%-3.s|", "ab", "ab", "ab"), "     |a|   |");
  EXPECT_EQ(Format("%.0d|%.d|%.0f|%.f", 0, 0, 2.5, 3.5), "||2|4");
  // Widths of arguments.
  EXPECT_EQ(Format("%lld %I64d %llx", LLONG_MIN, 5LL, 0x123456789ALL),
            "-9223372036854775808 5 123456789a");
  EXPECT_EQ(Format("%ls|%lc", "narrow", 'c'), "narrow|c");
  EXPECT_EQ(Format("%ld %lu %lx", -1L, static_cast<unsigned long>(-1L), 255L), "-1 4294967295 ff");
#if LONG_MAX > 2147483647L
  EXPECT_EQ(Format("%ld %lu", 0x100000005L, 0xFFFFFFFF00000007UL), "5 7");
#endif
  // What is no conversion prints nothing and takes no argument.
  EXPECT_EQ(Format("%hd|%i|%#x|% d|%+-5d|%E|%n|%d", 8), "d||x|d|5d|||8");
  EXPECT_EQ(Format("%5%|%-%|%q%d", 8), "||8");
  EXPECT_EQ(Format("abc%"), "abc");
  EXPECT_EQ(Format("abc%-05."), "abc");
  // Zero bytes count inside an exact field only.
  EXPECT_EQ(Format("a%cb", 0), "ab");
  EXPECT_EQ(Format("%2c|%-2c|", 0, 0), std::string(" \0|\0 |", 6));
  EXPECT_EQ(Format("a%*cb", -3, 0), "ab");
  errno = ENOENT;
  EXPECT_EQ(Format("%.2s: %m", "abc"), std::string("ab: ") + std::strerror(ENOENT));
}

TEST(Format, NothingBehindTheCountIsRead) {
  // The array has no terminator; the address sanitizer guards what is behind it.
  const std::string block = "abcd";
  char* unterminated = new char[4];
  std::memcpy(unterminated, block.data(), 4);
  EXPECT_EQ(Format("%.*s|%.4s|%-6.3s|", 4, unterminated, unterminated, unterminated),
            "abcd|abcd|abc   |");
  delete[] unterminated;
}

// Every flag, width, precision and conversion in every order that the engine knows, against
// the C library's output cut to the width.
TEST(Format, AgreesWithTheCLibrary) {
  std::mt19937_64 random(1);
  const auto below = [&random](int n) { return static_cast<int>(random() % std::uint64_t(n)); };
  const double doubles[] = {
      0.0,     -0.0,       0.5,          1.5,      2.5,      0.125,
      0.375,   1e-9,       123456.,      1e15,     1e22,     1e300,
      DBL_MAX, DBL_MIN,    9.995,        99.995,   0.0625,   4503599627370497.5,
      9.2e18,  -1234.5678, std::nan(""), HUGE_VAL, -HUGE_VAL};
  for (int round = 0; round < 200000; ++round) {
    std::string flags = "%";
    if (below(3) == 0) flags += '-';
    if (below(3) == 0) flags += '+';
    if (below(3) == 0) flags += '0';
    const int width = below(2) * below(24);
    if (width > 0) flags += std::to_string(width);
    const int precision = below(2) == 0 ? -1 : below(22);
    if (precision >= 0) flags += '.' + std::to_string(precision);

    std::string expected;
    std::string got;
    std::string format;
    const char kind = "duoxXcsefg"[below(10)];
    const std::uint64_t bits = random() >> below(64);
    switch (kind) {
      case 'e':
      case 'f':
      case 'g': {
        double value = doubles[below(sizeof(doubles) / sizeof(*doubles))];
        if (below(2) == 0) value = static_cast<double>(static_cast<std::int64_t>(bits)) / 1000;
        format = flags + kind;
        expected = Printf(format, value);
        got = Format(format.c_str(), value);
        break;
      }
      case 's': {
        if (precision == 0) continue;  // an own rule
        const std::string text(static_cast<std::size_t>(below(30)), 't');
        format = flags + kind;
        expected = Printf(format, text.c_str());
        got = Format(format.c_str(), text.c_str());
        break;
      }
      case 'c':
        format = flags + kind;
        expected = Printf(format, 'a' + below(26));
        got = Format(format.c_str(), static_cast<int>(expected[expected.find_first_not_of(' ')]));
        break;
      default:
        if (below(2) == 0) {
          format = flags + "ll" + kind;
          expected = Printf(format, static_cast<unsigned long long>(bits));
          got = Format(format.c_str(), static_cast<unsigned long long>(bits));
        } else {
          format = flags + kind;
          expected = Printf(format, static_cast<unsigned int>(bits));
          got = Format(format.c_str(), static_cast<unsigned int>(bits));
        }
    }
    if (width > 0) expected.resize(std::min(expected.size(), static_cast<std::size_t>(width)));
    ASSERT_EQ(got, expected) << format;
  }
}

// The digits that are made without the C library, above all ties and carries.
TEST(Format, FixedDigitsAreExact) {
  std::mt19937_64 random(2);
  char digits[text::kMaxFixedDigits];
  int own = 0;
  for (int round = 0; round < 300000; ++round) {
    const int precision = static_cast<int>(random() % 31);
    const std::uint64_t bits = random() >> (random() % 64);
    const double value =
        std::ldexp(static_cast<double>(bits >> (random() % 12)), -static_cast<int>(random() % 70));
    const int n = text::FixedDigits(value, precision, digits);
    if (n == 0) continue;
    ++own;
    ASSERT_EQ(std::string(digits, static_cast<std::size_t>(n)), Printf("%.*f", precision, value));
  }
  EXPECT_GT(own, 100000);
}

TEST(Format, FollowsTheLocalesDecimalPoint) {
  const char* comma = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
  if (comma == nullptr) GTEST_SKIP() << "no locale with a decimal comma on this machine";
  const std::string got = Format("%.2f", 1.5);
  std::setlocale(LC_NUMERIC, "C");
  EXPECT_EQ(got, "1,50");
}

TEST(Format, HugeFieldsAreStoredOrRefused) {
  EXPECT_EQ(Format("%f", 1e308).size(), Printf("%f", 1e308).size());
  EXPECT_EQ(Format("%70000d", 1), std::string(69999, ' ') + "1");
  EXPECT_EQ(Format("%.70000d", 1), std::string(69999, '0') + "1");
  EXPECT_EQ(Format("%.400e", 1e308), Printf("%.400e", 1e308));
  const std::string longText(100000, 'x');
  EXPECT_EQ(Format("%100001s", longText.c_str()), ' ' + longText);
  // Fields that no string can hold: what stands before them stays.
  for (const char* format : {"ab%99999999999d", "ab%2147483647d", "ab%.2147483647d",
                             "ab%.2147483647f", "ab%99999999999s", "ab%2147483647c"}) {
    Kalvo_String s;
    if (std::strchr(format, 'f') != nullptr) {
      s.sprintf(format, 1.0);
    } else if (std::strchr(format, 's') != nullptr) {
      s.sprintf(format, "x");
    } else {
      s.sprintf(format, 1);
    }
    EXPECT_EQ(Content(s), "ab") << format;
  }
  EXPECT_EQ(Format("ab%*d", INT_MIN, 1), "ab");
}

int Append(MP_String* s, const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int result = text::Format(s, format, args);
  va_end(args);
  return result;
}

TEST(Format, CountsWhatItAppends) {
  MP_String s;
  EXPECT_EQ(Append(&s, "%d\n%5s", 12, "x"), 8);
  EXPECT_EQ(s.GetLastByte(), 'x');
  EXPECT_EQ(Append(&s, ""), 0);
  EXPECT_EQ(s.GetLastByte(), 0);
  EXPECT_EQ(Append(&s, "%2147483647d", 1), -1);
}

TEST(Format, ReplacesAppendsInserts) {
  Kalvo_String s("keep");
  s.SetQuote('"');
  s.sprintf_append("-%d", 1);
  EXPECT_EQ(s.GetQuote(), '"');
  s.insert(0, "%02d-", 7);
  s.insert(-1, "<");
  s.insert(999, ">");
  EXPECT_EQ(Content(s), "<07-keep-1>");
  s.sprintf("%s", "new");
  EXPECT_EQ(s.GetQuote(), 0);
  EXPECT_EQ(Content(s), "new");
  s.sprintf(nullptr);
  EXPECT_EQ(s.length(), 0u);
}

// Arguments and formats that lie in the string itself.
TEST(Format, OwnBytesAsArguments) {
  Kalvo_String s("0123456789");
  s.sprintf_append("%s|%400s|%s", s.c_str(), s.c_str() + 5, s.c_str() + 8);
  EXPECT_EQ(Content(s).substr(0, 21), "01234567890123456789|");
  s = "0123456789";
  s.SetQuote('"');
  s.sprintf("\n<%s>%s", s.c_str(), s.right(1));
  EXPECT_EQ(Content(s), "\n<0123456789>9");
  EXPECT_EQ(s.GetQuote(), 0);
  // Wherever the ends of the blocks lie.
  for (int old = 0; old < 700; ++old) {
    const std::string text(static_cast<std::size_t>(old), 'o');
    s = Kalvo_String('o', old);
    s.sprintf("<%s|%s", s.c_str(), s.c_str());
    ASSERT_EQ(Content(s), "<" + text + "|" + text);
    s = Kalvo_String('o', old);
    s.sprintf_append("\n%s", s.c_str());
    ASSERT_EQ(Content(s), text + "\n" + text);
  }
  s = "0123456789";
  for (int i = 0; i < 8; ++i) {
    s.sprintf("%s%s%s%s%s%s", s.right(5), s.right(5), s.right(5), s.right(5), s.right(5),
              s.right(5));
  }
  s = "%d-%d,";
  s.sprintf_append(s.c_str(), 1, 2);
  EXPECT_EQ(Content(s), "%d-%d,1-2,");
  s = "=%d";
  s.sprintf(s.c_str(), 42);
  EXPECT_EQ(Content(s), "=42");
  s = "yyyy.";
  s.Append_FormatDate(-1, s.c_str());
  EXPECT_EQ(Content(s), "yyyy.1900.");
}

}  // namespace
