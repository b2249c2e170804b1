#include "text/date_format.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <ctime>

#include "platform/calendar.h"
#include "text/format_engine.h"

namespace text {
namespace {

enum class Field { kNone, kYear, kShortYear, kMonth, kDay, kHour, kMinute, kQuarter, kSecond };

struct Directive {
  char lower[5];  // its letters; they stand in upper case, too
  Field field;
  long period;  // seconds; 0 leaves the period as it is
};

// "yyyy" stands before "yy", which it begins with.
constexpr Directive kDirectives[] = {
    {"yyyy", Field::kYear, 0},    {"yy", Field::kShortYear, 0}, {"mm", Field::kMonth, 2592000},
    {"dd", Field::kDay, 86400},   {"hh", Field::kHour, 3600},   {"mi", Field::kMinute, 60},
    {"kk", Field::kQuarter, 900}, {"ss", Field::kSecond, 1},
};

constexpr Directive kLiteral = {"", Field::kNone, 0};

constexpr long kYearPeriod = 31536000;
constexpr long kSmallestDate = 14400;  // stamps below it are spans

// Whether `format` begins with the letters, all of them in lower or all in upper case.
bool BeginsWith(const char* format, const char* lower) {
  for (const int shift : {0, 'A' - 'a'}) {
    int i = 0;
    while (lower[i] != '\0' && format[i] == lower[i] + shift) ++i;
    if (lower[i] == '\0') return true;
  }
  return false;
}

// What stands at the start of `format`, and its length, 1 for a byte that is no directive.
const Directive& Next(const char* format, int* length) {
  for (const Directive& directive : kDirectives) {
    if (!BeginsWith(format, directive.lower)) continue;
    *length = static_cast<int>(std::strlen(directive.lower));
    return directive;
  }
  *length = 1;
  return kLiteral;
}

// A letter that begins directives and does not begin one here is dropped.
bool IsDropped(char c) { return c != '\0' && std::strchr("dhkmsyDHKMSY", c) != nullptr; }

void AppendNumber(MP_StreamCore* core, const char* format, ...) {
  va_list args;
  va_start(args, format);
  Format(core, format, args);
  va_end(args);
}

// The fields of a stamp as they are printed.
struct Date {
  long long year = 1900;
  int month = 1;
  long long day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

Date Split(long stamp) {
  Date date;
  if (stamp < kSmallestDate) {
    const long long span = static_cast<long long>(0 - static_cast<unsigned long long>(stamp));
    date.day = span / 86400;
    date.hour = static_cast<int>(span % 86400 / 3600);
    date.minute = static_cast<int>(span % 3600 / 60);
    date.second = static_cast<int>(span % 60);
    return date;
  }
  std::tm fields{};
  platform::local_time(stamp, &fields);
  date.year = 1900LL + fields.tm_year;
  date.month = fields.tm_mon + 1;
  date.day = fields.tm_mday;
  date.hour = fields.tm_hour;
  date.minute = fields.tm_min;
  date.second = fields.tm_sec;
  return date;
}

void AppendField(MP_StreamCore* core, Field field, const Date& date) {
  switch (field) {
    case Field::kNone:
      break;
    case Field::kYear:
      AppendNumber(core, "%04lld", date.year);
      break;
    case Field::kShortYear:
      AppendNumber(core, "%02d", static_cast<int>(date.year % 100));
      break;
    case Field::kMonth:
      AppendNumber(core, "%02d", date.month);
      break;
    case Field::kDay:
      AppendNumber(core, "%02lld", date.day);
      break;
    case Field::kHour:
      AppendNumber(core, "%02d", date.hour);
      break;
    case Field::kMinute:
      AppendNumber(core, "%02d", date.minute);
      break;
    case Field::kQuarter:
      AppendNumber(core, "%02d", date.minute / 15 + 1);
      break;
    case Field::kSecond:
      AppendNumber(core, "%02d", date.second);
      break;
  }
}

// The digits are not checked: any byte counts as its distance from '0'.
int ReadNumber(const char* text, int length) {
  int value = 0;
  for (int i = 0; i < length; ++i) {
    value = value * 10 + static_cast<signed char>(text[i]) - '0';
  }
  return value;
}

void StoreField(std::tm* fields, Field field, int value) {
  switch (field) {
    case Field::kNone:
      break;
    case Field::kYear:
      fields->tm_year = value - 1900;
      break;
    case Field::kShortYear:
      fields->tm_year = value < 70 ? value + 100 : value;
      break;
    case Field::kMonth:
      fields->tm_mon = value - 1;
      break;
    case Field::kDay:
      fields->tm_mday = value;
      break;
    case Field::kHour:
      fields->tm_hour = value;
      break;
    case Field::kMinute:
      fields->tm_min = value;
      break;
    case Field::kQuarter:
      fields->tm_min = (std::max(value, 1) - 1) * 15;
      break;
    case Field::kSecond:
      fields->tm_sec = value;
      break;
  }
}

std::tm ParseFields(const char* date, const char* format) {
  std::tm fields{};
  while (*format != '\0' && *date != '\0') {
    int length;
    const Directive& directive = Next(format, &length);
    const bool isYear = directive.field == Field::kYear || directive.field == Field::kShortYear;
    if (std::memchr(date, '\0', static_cast<std::size_t>(length)) != nullptr) {
      // A year that the text ends in counts as read, as 0.
      if (isYear) StoreField(&fields, directive.field, 0);
      break;
    }
    StoreField(&fields, directive.field, ReadNumber(date, length));
    format += length;
    date += length;
  }
  return fields;
}

}  // namespace

void AppendDate(MP_StreamCore* core, long stamp, const char* format) {
  if (format == nullptr) return;
  const Date date = Split(stamp);
  while (*format != '\0') {
    int length;
    const Directive& directive = Next(format, &length);
    if (directive.field != Field::kNone) {
      AppendField(core, directive.field, date);
    } else if (!IsDropped(*format)) {
      core->PutByte(*format);
    }
    format += length;
  }
}

long ParseDate(const char* date, const char* format) {
  if (format == nullptr) return 0;
  const std::tm fields = ParseFields(date, format);
  std::tm normalised = fields;
  const std::time_t stamp = std::mktime(&normalised);
  if (stamp >= 0) return static_cast<long>(stamp);
  const long hours = fields.tm_mday * 24L + fields.tm_hour;
  return -((hours * 60 + fields.tm_min) * 60 + fields.tm_sec);
}

long DatePeriod(const char* format) {
  long period = kYearPeriod;
  while (format != nullptr && *format != '\0') {
    int length;
    const Directive& directive = Next(format, &length);
    if (directive.period != 0) period = directive.period;
    format += length;
  }
  return period;
}

}  // namespace text
