// Searching and bracket matching.

#include <gtest/gtest.h>

#include <string>

#include "kalvobase/text.h"

namespace {

int Find(const char* text, int start, const char* pattern, int n = 0) {
  Kalvo_String s(text);
  int position = 77;
  const char* found = s.Find(start, pattern, position, n);
  EXPECT_EQ(found, position < 0 ? nullptr : s.c_str() + position);
  return position;
}

int FindLast(const char* text, const char* pattern, int n = 0) {
  Kalvo_String s(text);
  int position = 77;
  const char* found = s.FindLast(pattern, position, n);
  EXPECT_EQ(found, position < 0 ? nullptr : s.c_str() + position);
  return position;
}

TEST(Search, OnePassWithNoStepBack) {
  EXPECT_EQ(Find("abc", 0, "b"), 1);
  EXPECT_EQ(Find("abc", 3, "b"), -1);
  EXPECT_EQ(Find("abc", -1, "a"), 0);
  EXPECT_EQ(Find("xab", 0, "ab"), 1);
  EXPECT_EQ(Find("aab", 0, "ab"), -1);
  EXPECT_EQ(Find("aaab", 0, "aab"), -1);
  EXPECT_EQ(Find("aaab", 0, "ab"), 2);
  EXPECT_EQ(Find("abc", 0, nullptr), -1);
  EXPECT_EQ(Find("abc", 0, ""), -1);
  EXPECT_EQ(Find("abc", 0, "bcd", 2), 1);
  EXPECT_EQ(FindLast("aba", "a"), 2);
  EXPECT_EQ(FindLast("abab", "ab"), 2);
  EXPECT_EQ(FindLast("abb", "ab"), -1);
  EXPECT_EQ(FindLast("", "a"), -1);
  EXPECT_EQ(FindLast("abc", ""), -1);

  Kalvo_String zeros;
  zeros.memcpy("a\0bc", 4);
  int position;
  EXPECT_STREQ(zeros.Find(0, "bc", position, 0), "bc");
  EXPECT_EQ(position, 2);
  zeros.Find(0, "\0b", position, 2);
  EXPECT_EQ(position, 1);

  EXPECT_EQ(Kalvo_String("").FindLastChar('/'), -1);
  EXPECT_EQ(Kalvo_String("a/b/c").FindLastChar('/'), 3);
  EXPECT_EQ(Kalvo_String("abc").FindLastChar('/'), -1);
}

TEST(Search, Brackets) {
  struct {
    const char* text;
    int start;
    const char* open;
    const char* close;
    int openAt;
    int closeAt;
    bool found;
  } const rows[] = {
      {"(a(b)c(d)e)", 0, "(", ")", 0, 8, true},
      {"(a)", 0, "(", ")", 0, 2, true},
      {"x(a(b)c)", 2, "(", ")", 3, 5, true},
      {"((a)", 0, "(", ")", 0, -1, false},
      {"(a", 0, "(", ")", 0, -1, false},
      {"a)", 0, "(", ")", -1, -1, false},
      {"<b><b></b></b>", 0, "<b>", "</b>", 0, 10, true},
      {"|a|", 0, "|", "|", 0, 0, true},
      {"(a)", 9, "(", ")", -1, -1, false},
      {"(a)", 0, nullptr, ")", -1, -1, false},
      {"(a)", 0, "(", nullptr, 0, -1, false},
  };
  for (const auto& row : rows) {
    Kalvo_String s(row.text);
    int openAt = 77;
    int closeAt = 77;
    const char* result = s.MatchBrack(row.start, row.open, row.close, openAt, closeAt);
    EXPECT_EQ(result, row.found ? s.c_str() + row.openAt : nullptr) << row.text;
    EXPECT_EQ(openAt, row.openAt) << row.text;
    EXPECT_EQ(closeAt, row.closeAt) << row.text;
  }
}

}  // namespace
