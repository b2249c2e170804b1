// The date language.

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <ctime>
#include <string>

#include "kalvobase/text.h"

namespace {

class Date : public testing::Test {
 protected:
  void SetUp() override { SetZone("UTC"); }
  void TearDown() override { SetZone("UTC"); }

  static void SetZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }

  static std::string Print(long stamp, const char* format) {
    Kalvo_String s("old");
    return s.FormatDate(stamp, format)->c_str();
  }

  static long Read(const char* text, const char* format) {
    return Kalvo_String(text).ToTime(format);
  }
};

constexpr long kStamp = 1772586245;  // 2026-03-04 01:04:05 UTC

TEST_F(Date, Prints) {
  EXPECT_EQ(Print(kStamp, "yyyy-mm-dd hh:mi:ss"), "2026-03-04 01:04:05");
  EXPECT_EQ(Print(kStamp, "YYMMDD-HHMISS kk"), "260304-010405 01");
  EXPECT_EQ(Print(kStamp + 45 * 60, "kk"), "04");
  EXPECT_EQ(Print(kStamp, "dd.mm"), "04.03");
  // Letters that start no directive go, other bytes stay.
  EXPECT_EQ(Print(kStamp, "d"), "");
  EXPECT_EQ(Print(kStamp, "dD|mI|Mi|yyy|yyyyyy|x"), "|I|i|26|202626|x");
  EXPECT_EQ(Print(kStamp, ""), "");
  EXPECT_EQ(Print(kStamp, nullptr), "");
}

TEST_F(Date, PrintsSpans) {
  EXPECT_EQ(Print(-3661, "hh:mi:ss"), "01:01:01");
  EXPECT_EQ(Print(-90000, "dd hh"), "01 01");
  EXPECT_EQ(Print(-123 * 86400L, "dd"), "12");  // widths are exact
  EXPECT_EQ(Print(-1, "mm yyyy yy"), "01 1900 00");
  EXPECT_EQ(Print(3661, "hh mi ss"), "-1 -1 -1");
  EXPECT_EQ(Print(14399, "hh"), "-3");
  EXPECT_EQ(Print(14400, "hh"), "04");
  Print(LONG_MIN, "dd hh:mi:ss kk");
  Print(LONG_MAX, "yyyy yy mm dd");
}

TEST_F(Date, Reads) {
  EXPECT_EQ(Read("2026-03-04 01:04:05", "yyyy-mm-dd hh:mi:ss"), kStamp);
  EXPECT_EQ(Read("26x03y04 01z04 05", "YY-MM-DD HH:MI:SS"), kStamp);  // separators only count
  EXPECT_EQ(Read("700101 04", "yymmdd hh"), 4 * 3600);
  EXPECT_EQ(Read("690101", "yymmdd"), 3124224000);
  EXPECT_EQ(Read("01:01:01", "hh:mi:ss"), -3661);
  EXPECT_EQ(Read("19700101 kk", "yyyymmdd"), 0);
  EXPECT_EQ(Read("1970010102", "yyyymmddkk"), 900);
  EXPECT_EQ(Read("1970010100", "yyyymmddkk"), 0);
  EXPECT_EQ(Read("", "yyyy"), 0);
  EXPECT_EQ(Read("2026", ""), 0);
  EXPECT_EQ(Read("2026", nullptr), 0);
  // A day that is missing is the last of the month before.
  EXPECT_EQ(Print(Read("2026-03", "yyyy-mm"), "yyyy-mm-dd"), "2026-02-28");
  // What the text ends in is not stored, but for the year.
  EXPECT_EQ(Read("05 1", "ss mi"), -5);
  EXPECT_EQ(Read("05 19", "ss yyyy"), -5);
  EXPECT_EQ(Print(Read("05 1", "ss yy"), "yyyy-mm-dd ss"), "1999-12-31 05");
  // Bytes that are no digits count all the same.
  EXPECT_EQ(Read("a0", "ss"), -490);
  EXPECT_EQ(Read("\xB0\x30", "ss"), 1280);
#if LONG_MAX > 2147483647L
  EXPECT_EQ(Print(Read("20990101", "yyyymmdd"), "yyyy-mm-dd"), "2099-01-01");
#endif
}

TEST_F(Date, FollowsTheZoneInForce) {
  SetZone("UTC-05:30");
  EXPECT_EQ(Print(kStamp, "hh:mi"), "06:34");
  EXPECT_EQ(Read("2026-03-04 06:34:05", "yyyy-mm-dd hh:mi:ss"), kStamp);
  setenv("TZ", "UTC+1", 1);  // with no tzset of the host's
  EXPECT_EQ(Print(kStamp, "hh:mi"), "00:04");
}

TEST_F(Date, Periods) {
  struct {
    const char* format;
    long seconds;
  } const rows[] = {{"yyyy", 31536000}, {"", 31536000},  {"kk", 900},           {"mm", 2592000},
                    {"hh:mi", 60},      {"mi:hh", 3600}, {"yyyy-mm-dd", 86400}, {"ddyy", 86400},
                    {"x SS", 1},        {"d", 31536000}};
  for (const auto& row : rows) {
    EXPECT_EQ(Kalvo_String::GetTimePeriod(row.format), row.seconds) << row.format;
  }
  EXPECT_EQ(Kalvo_String::GetTimePeriod(nullptr), 31536000);
}

}  // namespace
