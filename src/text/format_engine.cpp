#include "text/format_engine.h"

#include <algorithm>
#include <cerrno>
#include <cfenv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "platform/locale.h"
#include "text/number_text.h"
#include "text/text_bytes.h"

namespace text {
namespace {

// One conversion as it stands in a format.
struct Conversion {
  bool left = false;
  bool plus = false;
  bool zero = false;
  bool exact = false;         // the width cuts, too
  std::int64_t width = 0;     // the field is at least this wide
  bool hasPrecision = false;  // a '.' stands, so a missing number means 0
  int precision = 0;
  bool isLong = false;
  bool is64 = false;
  char kind = '\0';  // '\0': the format ended inside the conversion
};

// Beyond this no field can be stored; well below it sums of sizes do not overflow.
constexpr std::int64_t kMaxField = INT_MAX - 64;

constexpr int kMaxSignificantDigits = 1100;

constexpr int kPlainSlack = 16;
constexpr int kLongSlack = 32;
constexpr int kFloatSlack = 42;

constexpr int kShortText = 16;
constexpr int kLongestInt = 11;
constexpr int kSimpleRoom = kLongestInt + kPlainSlack;

// Which bytes of a format are more than themselves.
constexpr unsigned kAlwaysSpecial = 1;
constexpr unsigned kSeparator = 2;
constexpr char kSegmentSeparator = '.';

struct Classes {
  constexpr Classes() {
    of[0] = of[static_cast<int>('%')] = of[static_cast<int>('\n')] = kAlwaysSpecial;
    of[static_cast<int>(kSegmentSeparator)] = kSeparator;
  }
  unsigned char of[256] = {};
};
constexpr Classes kClasses;

class Engine {
 public:
  Engine(MP_StreamCore* core, va_list args) : core_(core), errno_(errno) { va_copy(args_, args); }
  Engine(MP_StreamCore* core, va_list args, const std::function<bool()>& ended)
      : Engine(core, args) {
    ended_ = &ended;
  }
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  ~Engine() { va_end(args_); }

  int Run(const char* format);

 private:
  bool PutSimple(char kind);
  const char* PutLiteral(const char* format);
  const char* Parse(const char* format, Conversion* conversion);
  const char* ParseNumber(const char* format, int* number);
  void Convert(const Conversion& conversion);

  std::uint64_t Unsigned(const Conversion& conversion);
  void PutSigned(const Conversion& conversion);
  void PutUnsigned(const Conversion& conversion);
  void PutChar(const Conversion& conversion);
  void PutText(const Conversion& conversion);
  void PutText(const char* text);
  void PutFixed(const Conversion& conversion);
  template <class T>
  void PutByLibrary(const Conversion& conversion, T value);

  void PutInteger(const Conversion& conversion, char sign, const char* digits, int count);
  void PutField(const Conversion& conversion, bool zeroPadded, char sign, std::int64_t zeros,
                const char* body, int bodyLength, int slack);
  void PutBlock(const char* bytes, int n);
  bool Reserve(std::int64_t n);
  void Advance(std::int64_t n);

  // Counts bytes that stand behind the content already.
  void Commit(int n) {
    if (n < 1) return;
    core_->Commit(n);
    total_ += n;
  }

  MP_StreamCore* core_;
  const std::function<bool()>* ended_ = nullptr;  // null: there are no separators
  const int errno_;  // what %m tells, whatever our own calls do to errno
  va_list args_;
  std::int64_t total_ = 0;
  bool failed_ = false;
};

int Engine::Run(const char* format) {
  core_->ClearLastByte();
  while (*format != '\0' && !failed_) {
    if (*format != '%') {
      format = PutLiteral(format);
      continue;
    }
    if (PutSimple(format[1])) {
      format += 2;
      continue;
    }
    Conversion conversion;
    format = Parse(format + 1, &conversion);
    if (conversion.kind == '\0') break;
    Convert(conversion);
  }
  return failed_ ? -1 : static_cast<int>(std::min<std::int64_t>(total_, INT_MAX));
}

// Puts what needs no parsing: most of what formats hold. False if it is something else.
bool Engine::PutSimple(char kind) {
  switch (kind) {
    case '%':
      PutBlock("%", 1);
      return true;
    case 's':
      PutText(va_arg(args_, const char*));
      return true;
    case 'd': {
      if (core_->Room() < kSimpleRoom) return false;
      const int value = va_arg(args_, int);
      const std::uint32_t bits = static_cast<std::uint32_t>(value);
      const std::uint32_t absolute = value < 0 ? 0 - bits : bits;
      // Straight to their place: bytes that were just stored one by one are slow to move.
      char* out = core_->End();
      if (value < 0) *out++ = '-';
      char* const end = out + DecimalLength(absolute);
      DecimalDigits(absolute, end);
      Commit(static_cast<int>(end - core_->End()));
      return true;
    }
    default:
      return false;
  }
}

// A text that is stored as a whole. Short ones are copied while their end is looked for.
void Engine::PutText(const char* text) {
  if (text == nullptr) return;
  const int most = std::min(core_->Room(), kShortText);
  char* out = core_->End();
  int n = 0;
  for (; n < most; ++n) {
    if (text[n] == '\0') {
      Commit(n);
      return;
    }
    out[n] = text[n];
  }
  PutBlock(text, Length(text));
}

// Puts what stands before the next conversion or line feed, or that line feed.
const char* Engine::PutLiteral(const char* format) {
  if (*format == '\n') {
    failed_ = core_->PutByte('\n') < 0;
    ++total_;
    return format + 1;
  }
  if (*format == kSegmentSeparator && ended_ != nullptr) {
    if ((*ended_)()) {
      PutBlock(format, 1);
    } else {
      failed_ = true;
    }
    return format + 1;
  }
  const unsigned special = ended_ != nullptr ? kAlwaysSpecial | kSeparator : kAlwaysSpecial;
  const auto isLiteral = [special](char c) {
    return (kClasses.of[static_cast<unsigned char>(c)] & special) == 0;
  };
  char* out = core_->End();
  const int room = core_->Room();
  int n = 0;
  for (; n < room && isLiteral(format[n]); ++n) out[n] = format[n];
  Commit(n);
  if (!isLiteral(format[n])) return format + n;
  const char* end = format += n;  // the room was too small
  while (isLiteral(*end)) ++end;
  n = static_cast<int>(std::min<std::ptrdiff_t>(end - format, INT_MAX));
  PutBlock(format, n);
  return format + n;
}

const char* Engine::ParseNumber(const char* format, int* number) {
  if (*format == '*') {
    *number = va_arg(args_, int);
    return format + 1;
  }
  std::int64_t value = 0;
  for (; *format >= '0' && *format <= '9'; ++format) {
    value = std::min<std::int64_t>(value * 10 + (*format - '0'), INT_MAX);
  }
  *number = static_cast<int>(value);
  return format;
}

const char* Engine::Parse(const char* format, Conversion* conversion) {
  const auto flag = [&format](char c) {
    const bool stands = *format == c;
    if (stands) ++format;
    return stands;
  };
  conversion->left = flag('-');
  conversion->plus = flag('+');
  conversion->zero = flag('0');

  int width = 0;
  format = ParseNumber(format, &width);
  conversion->width = width;
  conversion->exact = width > 0;
  if (width < 0) {
    conversion->left = true;
    conversion->width = -conversion->width;
  }

  if (flag('.')) {
    format = ParseNumber(format, &conversion->precision);
    conversion->hasPrecision = conversion->precision >= 0;
    conversion->precision = std::max(conversion->precision, 0);
  }

  if (format[0] == 'I' && format[1] == '6' && format[2] == '4') {
    conversion->is64 = true;
    format += 3;
  } else if (flag('l')) {
    conversion->is64 = flag('l');
    conversion->isLong = !conversion->is64;
  }

  conversion->kind = *format;
  return *format == '\0' ? format : format + 1;
}

void Engine::Convert(const Conversion& conversion) {
  switch (conversion.kind) {
    case 'd':
      PutSigned(conversion);
      break;
    case 'u':
    case 'o':
    case 'x':
    case 'X':
      PutUnsigned(conversion);
      break;
    case 'c':
      PutChar(conversion);
      break;
    case 's':
      PutText(conversion);
      break;
    case 'f':
      PutFixed(conversion);
      break;
    case 'e':
    case 'g':
      PutByLibrary(conversion, va_arg(args_, double));
      break;
    case 'p':
      PutByLibrary(conversion, va_arg(args_, void*));
      break;
    case 'm': {
      const char* message = std::strerror(errno_);
      PutBlock(message, Length(message));
      break;
    }
    default:  // no conversion: it prints nothing and takes no argument
      break;
  }
}

// A long keeps its low 32 bits, so that formats mean the same wherever long is wider.
std::uint64_t Engine::Unsigned(const Conversion& conversion) {
  if (conversion.is64) return va_arg(args_, unsigned long long);
  if (conversion.isLong) return static_cast<std::uint32_t>(va_arg(args_, unsigned long));
  return va_arg(args_, unsigned int);
}

void Engine::PutSigned(const Conversion& conversion) {
  std::uint64_t value = Unsigned(conversion);
  if (!conversion.is64) {
    value =
        static_cast<std::uint64_t>(static_cast<std::int32_t>(static_cast<std::uint32_t>(value)));
  }
  const bool negative = (value >> 63) != 0;
  char digits[kMaxIntegerDigits];
  char* const end = digits + kMaxIntegerDigits;
  const char* start = DecimalDigits(negative ? 0 - value : value, end);
  const char sign = negative ? '-' : conversion.plus ? '+' : '\0';
  PutInteger(conversion, sign, start, static_cast<int>(end - start));
}

void Engine::PutUnsigned(const Conversion& conversion) {
  const std::uint64_t value = Unsigned(conversion);
  char digits[kMaxIntegerDigits];
  char* const end = digits + kMaxIntegerDigits;
  const char* start;
  switch (conversion.kind) {
    case 'u':
      start = DecimalDigits(value, end);
      break;
    case 'o':
      start = BitDigits(value, 3, "01234567", end);
      break;
    case 'x':
      start = BitDigits(value, 4, "0123456789abcdef", end);
      break;
    default:
      start = BitDigits(value, 4, "0123456789ABCDEF", end);
      break;
  }
  PutInteger(conversion, '\0', start, static_cast<int>(end - start));
}

void Engine::PutInteger(const Conversion& conversion, char sign, const char* digits, int count) {
  std::int64_t zeros = 0;
  if (conversion.hasPrecision) {
    if (conversion.precision == 0 && count == 1 && *digits == '0') count = 0;
    zeros = std::max(0, conversion.precision - count);
  }
  PutField(conversion, conversion.zero && !conversion.hasPrecision, sign, zeros, digits, count,
           conversion.is64 ? kLongSlack : kPlainSlack);
}

void Engine::PutChar(const Conversion& conversion) {
  const char c = static_cast<char>(conversion.is64 ? va_arg(args_, long long) : va_arg(args_, int));
  const int slack = conversion.is64 ? kLongSlack : kPlainSlack;
  // A zero byte counts inside an exact field only; otherwise the output ends at it.
  if (c != '\0' || conversion.exact) {
    PutField(conversion, false, '\0', 0, &c, 1, slack);
  } else if (!conversion.left) {
    PutField(conversion, false, '\0', 0, "", 0, slack);
  }
}

void Engine::PutText(const Conversion& conversion) {
  const char* text = va_arg(args_, const char*);
  if (text == nullptr) return;
  int length;
  if (conversion.precision > 0) {
    length = LengthWithin(text, conversion.precision);
  } else {
    // Without padding a precision of 0 counts for nothing; with it, it means no bytes.
    length = Length(text);
    if (conversion.width == 0) {
      PutBlock(text, length);
      return;
    }
    if (conversion.exact && conversion.width <= length) {
      PutBlock(text, static_cast<int>(conversion.width));
      return;
    }
    if (conversion.hasPrecision) length = 0;
  }
  PutField(conversion, false, '\0', 0, text, length, kPlainSlack);
}

void Engine::PutFixed(const Conversion& conversion) {
  const double value = va_arg(args_, double);
  char digits[kMaxFixedDigits];
  const bool plain =
      std::fegetround() == FE_TONEAREST && std::strcmp(platform::decimal_point(), ".") == 0;
  const int precision = conversion.hasPrecision ? conversion.precision : 6;
  const int count = plain ? FixedDigits(std::fabs(value), precision, digits) : 0;
  if (count == 0) {
    PutByLibrary(conversion, value);
    return;
  }
  const char sign = std::signbit(value) ? '-' : conversion.plus ? '+' : '\0';
  PutField(conversion, conversion.zero, sign, 0, digits, count, kFloatSlack);
}

// Leaves a conversion to the runtime library, with its width cut to exactness afterwards.
template <class T>
void Engine::PutByLibrary(const Conversion& conversion, T value) {
  char format[16];
  char* end = format;
  *end++ = '%';
  if (conversion.left) *end++ = '-';
  if (conversion.plus) *end++ = '+';
  if (conversion.zero) *end++ = '0';
  std::memcpy(end, "*.*", 3);
  end += 3;
  *end++ = conversion.kind;
  *end = '\0';

  const std::int64_t width = std::min(conversion.width, kMaxField);
  int precision = conversion.hasPrecision ? conversion.precision : -1;
  // No double has more significant digits, and %g prints no zeros behind the last.
  if (conversion.kind == 'g') precision = std::min(precision, kMaxSignificantDigits);
  std::int64_t room = std::max<std::int64_t>(width, precision) + kFloatSlack;
  for (;;) {
    if (!Reserve(room)) return;
    const int written = std::snprintf(core_->End(), static_cast<std::size_t>(room) + 1, format,
                                      static_cast<int>(width), precision, value);
    if (written < 0) {
      failed_ = true;
      return;
    }
    if (written <= room) {
      Advance(conversion.exact ? width : written);
      return;
    }
    room = std::int64_t{written} + kFloatSlack;
  }
}

// Puts sign, zeros and body into the field: padded up to the width, with zeros behind the
// sign if asked for, and cut to it if it is exact.
void Engine::PutField(const Conversion& conversion, bool zeroPadded, char sign, std::int64_t zeros,
                      const char* body, int bodyLength, int slack) {
  const std::int64_t length = (sign != '\0' ? 1 : 0) + zeros + bodyLength;
  const std::int64_t field = std::max(length, conversion.width);
  if (!Reserve(field + slack)) return;
  const std::int64_t padding = field - length;
  char* out = core_->End();
  if (padding > 0 && !conversion.left) {
    if (zeroPadded) {
      zeros += padding;
    } else {
      out = std::fill_n(out, padding, ' ');
    }
  }
  if (sign != '\0') *out++ = sign;
  if (zeros > 0) out = std::fill_n(out, zeros, '0');
  std::memcpy(out, body, static_cast<std::size_t>(bodyLength));
  if (padding > 0 && conversion.left) std::fill_n(out + bodyLength, padding, ' ');
  Advance(conversion.exact ? conversion.width : field);
}

void Engine::PutBlock(const char* bytes, int n) {
  if (!core_->TryWrite(bytes, n) && core_->WriteBlock(bytes, n) < n) {
    failed_ = true;
    return;
  }
  total_ += n;
}

bool Engine::Reserve(std::int64_t n) {
  if (n <= kMaxField && core_->Reserve(static_cast<int>(n)) > 0) return true;
  failed_ = true;
  return false;
}

void Engine::Advance(std::int64_t n) {
  if (n > 0) core_->Advance(static_cast<int>(n));
  total_ += n;
}

}  // namespace

int Format(MP_StreamCore* core, const char* format, va_list args) {
  return format != nullptr ? Engine(core, args).Run(format) : 0;
}

int FormatSegments(MP_StreamCore* core, const char* format, va_list args,
                   const std::function<bool()>& ended) {
  return format != nullptr ? Engine(core, args, ended).Run(format) : 0;
}

}  // namespace text
