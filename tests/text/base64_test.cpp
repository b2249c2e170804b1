// Base64, both ways.

#include <gtest/gtest.h>

#include <string>

#include "kalvobase/text.h"

namespace {

std::string Encode(const std::string& bytes) {
  Kalvo_String s;
  s.Base64Encode(bytes.data(), static_cast<int>(bytes.size()));
  return std::string(s.c_str(), s.length());
}

std::string Decode(const std::string& text) {
  Kalvo_String s;
  s.Base64Decode(text.data(), static_cast<int>(text.size()));
  return std::string(s.c_str(), s.length());
}

TEST(Base64, Lines) {
  EXPECT_EQ(Encode(""), "");
  EXPECT_EQ(Encode("A"), "QQ==");
  EXPECT_EQ(Encode("AB"), "QUI=");
  EXPECT_EQ(Encode("ABC"), "QUJD");
  const std::string line = Encode(std::string(60, 'x'));
  EXPECT_EQ(line.size(), 81u);
  EXPECT_EQ(line.back(), '\n');
  EXPECT_EQ(Encode(std::string(61, 'x')), line + "eA==");
  EXPECT_EQ(Encode(std::string(120, 'x')), line + line);
  EXPECT_EQ(Encode(std::string(59, 'x')).size(), 80u);
}

TEST(Base64, BothWays) {
  std::string bytes;
  for (int i = 0; i < 700; ++i) {
    EXPECT_EQ(Decode(Encode(bytes)), bytes);
    bytes.push_back(static_cast<char>(i * 37));
  }
}

TEST(Base64, BrokenInput) {
  struct {
    std::string text;
    std::string bytes;
  } const rows[] = {
      {"QQ==QUJD", "AABC"},  // joined texts
      {"QU\nJD", ""},        // a line end drops the group that it cuts
      {"QU\r\nQUJD", "ABC"},
      {"QUJD*QUJD", "ABC"},  // any other byte ends it
      {"QUJDQ*QUJD", "ABC"},
      {"QUJDQU", "ABC"},  // an unfinished group is dropped
      {std::string("QUJD\0QUJD", 9), "ABC"},
      {"QQ=Q", "A"},  // padding in odd places, by its arithmetic
      {"====", "\x8E"},
      {"=QQQ", std::string("\x8D\x04\x10", 3)},
      {"QUJ=QUJD", "ABABC"},
      {"\xFFQUJD", ""},
  };
  for (const auto& row : rows) EXPECT_EQ(Decode(row.text), row.bytes) << row.text;

  Kalvo_String s("x");
  s.SetQuote('"');
  EXPECT_STREQ(s.Base64Decode("QUJD"), "xABC");
  EXPECT_STREQ(s.Base64Decode(nullptr), "xABC");
  EXPECT_STREQ(s.Base64Encode("ABC", -1), "xABC");
  EXPECT_EQ(s.GetQuote(), '"');
}

}  // namespace
