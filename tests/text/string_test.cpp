// Storage and editing of strings.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kalvobase/text.h"
#include "text/mp_string.h"

namespace {

std::string Content(const Kalvo_String& s) { return std::string(s.c_str(), s.length()); }

int Capacity(MP_String* s) { return s->Length() + s->Free(); }

TEST(String, Making) {
  const Kalvo_String empty;
  EXPECT_EQ(empty.length(), 0u);
  EXPECT_STREQ(empty.c_str(), "");
  EXPECT_EQ(empty.GetAt(0), 0);
  EXPECT_EQ(empty.GetQuote(), 0);
  EXPECT_EQ(Content(Kalvo_String(static_cast<const char*>(nullptr))), "");
  EXPECT_EQ(Content(Kalvo_String("abcdef", 3)), "abc");
  EXPECT_EQ(Content(Kalvo_String("abc", -1)), "abc");
  EXPECT_EQ(Content(Kalvo_String('x', 3)), "xxx");
  EXPECT_EQ(Content(Kalvo_String('x', -3)), "");

  Kalvo_String zeros;
  zeros.memcpy("a\0b", 3);
  zeros.SetQuote('"');
  Kalvo_String copy(zeros);
  EXPECT_EQ(copy.length(), 3u);
  EXPECT_EQ(copy.GetQuote(), 0);
  EXPECT_EQ(zeros == "a", 0);
  EXPECT_EQ(zeros.Compare("a"), 0);
  EXPECT_EQ(zeros == copy, 1);
  copy = "x";
  copy = zeros;
  EXPECT_EQ(Content(copy), std::string("a\0b", 3));
}

TEST(String, CapacityGrowsInItsSteps) {
  MP_String filled;
  filled.AppendRun('a', 300);
  EXPECT_EQ(Capacity(&filled), 512);
  MP_String full;
  full.AssignText(std::string(256, 'a').c_str());
  EXPECT_EQ(Capacity(&full), 512);  // the terminator had no room
  MP_String appended;
  appended.AppendText(std::string(1000, 'a').c_str());
  EXPECT_EQ(Capacity(&appended), 1024);
  MP_String reserved(std::string(1000, 'a').c_str());
  EXPECT_EQ(Capacity(&reserved), 1256);
  MP_String bytes;
  for (int i = 0; i < 256; ++i) bytes.PutByte('a');
  EXPECT_EQ(Capacity(&bytes), 256);
  bytes.Text();
  EXPECT_EQ(Capacity(&bytes), 512);
  bytes.Clear();
  EXPECT_EQ(Capacity(&bytes), 512);
}

// Two strings that grow in turns stand in each other's way. Each of them may move now and
// then, not with every step of its capacity.
TEST(String, GrowthMovesTheBlockSeldom) {
  MP_String strings[2];
  const char* blocks[2] = {};
  int moves = 0;
  for (int i = 0; i < 8 << 20; ++i) {
    MP_String& s = strings[i % 2];
    s.PutByte('x');
    if (s.Content() != blocks[i % 2]) ++moves;
    blocks[i % 2] = s.Content();
  }
  EXPECT_LT(moves, 100);
}

TEST(String, CountedForms) {
  Kalvo_String s;
  EXPECT_EQ(Content(*s.strncpy("abc", -1)), "abc");
  EXPECT_EQ(Content(*s.strncat("abc", -1)), "abc");
  EXPECT_EQ(Content(*s.strncpy("abc", 10)), "abc");
  EXPECT_EQ(Content(*s.memcpy("abc", 0)), "");
  EXPECT_EQ(Content(*s.strncat("a\0b", 3)->memcat("a\0b", 3)), std::string("aa\0b", 4));
  EXPECT_EQ(Content(*s.memcat(nullptr, 5)->strcat(nullptr)->strncat(nullptr, 5)->addch('x', -1)),
            std::string("aa\0b", 4));
  EXPECT_EQ(Content(*s.strcpy(nullptr)), "");
  // Nothing behind the count is read; the address sanitizer guards it.
  const std::vector<char> unterminated = {'a', 'b', 'c'};
  EXPECT_EQ(Content(*s.strncpy(unterminated.data(), 3)->strncat(unterminated.data(), 3)), "abcabc");
}

TEST(String, ReadingAtTheEdges) {
  const Kalvo_String s("abc");
  EXPECT_EQ(s[-1], 0);
  EXPECT_EQ(s[3], 0);
  EXPECT_EQ(s[2L], 'c');
  EXPECT_EQ(s[s.length() - 1], 'c');
  EXPECT_EQ(s[1u], 'b');
  EXPECT_EQ(s[0xFFFFFFFFUL], 0);
  EXPECT_STREQ(s.right(0), "");
  EXPECT_STREQ(s.right(-1), "");
  EXPECT_STREQ(s.right(2), "bc");
  EXPECT_STREQ(s.right(999), "abc");
  EXPECT_EQ(s.Compare("abd"), -1);
  EXPECT_EQ(s.Compare("ab"), 1);
  EXPECT_EQ(Kalvo_String("\xB0").Compare("a"), 1);
  EXPECT_EQ(s.CompareNoCase("ABC"), 0);
  EXPECT_LT(s.CompareNoCase("ABD"), 0);
  EXPECT_GT(s.CompareNoCase("A"), 0);
  const char* null = nullptr;
  EXPECT_EQ(s == null, 0);
  EXPECT_NE(s != null, 0);
  EXPECT_EQ(s == "abc", 1);
  EXPECT_EQ(s != "abc", 0);
  EXPECT_NE(s != "abcd", 0);
}

struct Edit {
  const char* before;
  Kalvo_String* (*edit)(Kalvo_String&);
  std::string after;
};

TEST(String, Edits) {
  using S = Kalvo_String;
  const Edit edits[] = {
      {"abc", [](S& s) { return s.truncate(3); }, "abc"},
      {"abc", [](S& s) { return s.truncate(-1); }, "abc"},
      {"abc", [](S& s) { return s.truncate(1); }, "a"},
      {"abc", [](S& s) { return s.truncate_right(-1); }, "abc"},
      {"abc", [](S& s) { return s.truncate_right(999); }, ""},
      {"abc", [](S& s) { return s.truncate_right(1); }, "ab"},
      {"abc", [](S& s) { return s.resize(5, '.'), &s; }, "abc.."},
      {"abc", [](S& s) { return s.resize(-1, '.'), &s; }, "abc"},
      {"abc", [](S& s) { return s.Delete(1, 1); }, "ac"},
      {"abc", [](S& s) { return s.Delete(-5, 1); }, "bc"},
      {"abc", [](S& s) { return s.Delete(1, INT_MAX); }, "a"},
      {"abc", [](S& s) { return s.Delete(3, 1); }, "abc"},
      {"abc", [](S& s) { return s.insert_char(-5, 'x', 1); }, "xabc"},
      {"abc", [](S& s) { return s.insert_char(99, 'x', 2); }, "abcxx"},
      {"abc", [](S& s) { return s.insert_char(1, 'x', 0); }, "abc"},
      {"abc", [](S& s) { return s.insert_string(1, "xyz", 2); }, "axybc"},
      {"abc", [](S& s) { return s.insert_string(3, "x\0y", 3); }, std::string("abcx\0y", 6)},
      {"abc", [](S& s) { return s.insert_string(1, nullptr, 2); }, "abc"},
      {"banana", [](S& s) { return s.replace('a', 'o'); }, "bonono"},
      {"ab", [](S& s) { return s.replace(2, 'x'); }, "abx"},
      {"ab", [](S& s) { return s.replace(99, 'x'); }, "abx"},
      {"ab", [](S& s) { return s.replace(-1, 'x'); }, "ab"},
      {"abc", [](S& s) { return s.replace(1, "xyz", -1); }, "axy"},
      {"abc", [](S& s) { return s.replace(-1, "xyz", -1); }, "yzc"},
      {"abc", [](S& s) { return s.replace(3, "xyz", -1); }, "abc"},
      {" \t a\r\t ", [](S& s) { return s.Trim(), &s; }, "a\r"},
      {"\t \t", [](S& s) { return s.TrimLeft(), &s; }, ""},
      {" a ", [](S& s) { return s.TrimRight(), &s; }, " a"},
      {"abc", [](S& s) { return s.MakeReverse(), &s; }, "cba"},
      {"aB1\xB0", [](S& s) { return s.MakeUpper(); }, "AB1\xB0"},
      {"aB1\xB0", [](S& s) { return s.MakeLower(); }, "ab1\xB0"},
      {"ab", [](S& s) { return s.Align('M', '.', 7); }, "..ab..."},
      {"ab", [](S& s) { return s.Align('R', '.', 1); }, "b"},
      {"ab", [](S& s) { return s.Align('R', '.', 4); }, "..ab"},
      {"ab", [](S& s) { return s.Align('L', '.', 1); }, "a"},
      {"ab", [](S& s) { return s.Align('L', '.', 4); }, "ab.."},
      {"ab", [](S& s) { return s.Align('M', '.', 1); }, "a"},
      {"ab", [](S& s) { return s.Align('R', '.', INT_MIN); }, ""},
      {"ab", [](S& s) { return s.Align('L', '.', -1); }, "ab"},
      {"ab", [](S& s) { return s.Align('x', '.', 9); }, "ab"},
  };
  int row = 0;
  for (const Edit& edit : edits) {
    Kalvo_String s(edit.before);
    EXPECT_EQ(edit.edit(s), &s);
    EXPECT_EQ(Content(s), edit.after) << "row " << row;
    ++row;
  }
}

TEST(String, ReplacingTexts) {
  Kalvo_String s("abcabc");
  EXPECT_EQ(s.replace(0, "c", "xyz"), 5);
  EXPECT_EQ(Content(s), "abxyzabc");
  EXPECT_EQ(s.replace(8, "a", "b"), -1);
  EXPECT_EQ(s.replace(0, "q", "b"), -1);
  EXPECT_EQ(s.replace(0, "", "b"), -1);
  EXPECT_EQ(s.replace(-3, "b", static_cast<const char*>(nullptr)), 1);
  EXPECT_EQ(Content(s), "axyzabc");
  s = "aa";
  EXPECT_EQ(s.replace_all(0, "a", "aa"), 2);
  EXPECT_EQ(Content(s), "aaaa");
  EXPECT_EQ(s.replace_all(1, "aa", ""), 1);
  EXPECT_EQ(s.replace_all(0, "", "x"), 0);
  s.memcpy("a.b\0c.d", 7);
  EXPECT_EQ(s.replace_all(0, ".", "--"), 1);  // the search ends at the zero byte
  EXPECT_EQ(Content(s), std::string("a--b\0c.d", 8));
  s = std::string(200000, 'x').c_str();
  s.SetQuote('\'');
  EXPECT_EQ(s.replace_all(0, "x", "yz"), 200000);
  EXPECT_EQ(s.length(), 400000u);
  EXPECT_EQ(s.GetQuote(), '\'');
}

// Arguments that point into the string itself, also while it grows.
TEST(String, OwnBytesAsArguments) {
  Kalvo_String s("abcdef");
  EXPECT_EQ(Content(*s.strcpy(s.c_str() + 2)), "cdef");
  EXPECT_EQ(Content(*s.strncpy(s.c_str() + 1, 2)), "de");
  EXPECT_EQ(Content(*s.memcpy(s.c_str(), 2)), "de");
  EXPECT_EQ(Content(*s.memcpy(s.c_str(), 3)), std::string("de\0", 3));
  s = Kalvo_String('x', 62);
  EXPECT_EQ(Content(*s.memcat(s.c_str(), 63)), std::string(124, 'x').append(1, '\0'));
  s = "de";
  for (int i = 0; i < 12; ++i) s.strcat(s.c_str());
  EXPECT_EQ(s.length(), 8192u);
  s = "abc";
  for (int i = 0; i < 10; ++i) s.insert_string(1, s.c_str(), -1);
  EXPECT_EQ(s.length(), 3072u);
  s = "abcabc";
  EXPECT_EQ(s.replace_all(0, s.right(1), s.c_str()), 2);
  EXPECT_EQ(Content(s), "ababcabcababcabc");
  s = "abc";
  s.replace(1, s.c_str(), -1);
  EXPECT_EQ(Content(s), "aab");
  EXPECT_EQ(s.Write(s.c_str(), 3), 3);
  EXPECT_STREQ(Kalvo_String("QUJD").Base64Decode("QUJD"), "QUJDABC");
  s = "QUJD";
  EXPECT_STREQ(s.Base64Decode(s.c_str()), "QUJDABC");
  s = std::string(1000, 'x').c_str();
  s.Base64Encode(s.c_str(), 1000);
  EXPECT_EQ(s.length(), 1000u + 1336 + 16);
}

TEST(String, BinaryWrites) {
  Kalvo_String s;
  EXPECT_EQ(s.Write('a') + s.Write(static_cast<unsigned char>(255)), 2);
  EXPECT_EQ(s.Write(static_cast<short>(0x1234)), 2);
  EXPECT_EQ(s.Write(0x0A0B0C0D), 4);
  EXPECT_EQ(s.Write(-2L), 4);
  EXPECT_EQ(s.Write(1.0f), 4);
  EXPECT_EQ(s.Write(1.0), 8);
  EXPECT_EQ(s.Write(1.0L), 8);
  EXPECT_EQ(s.Write("xyz", -1), 3);
  EXPECT_EQ(s.Write(static_cast<const char*>(nullptr), 3), 0);
  s.SetOrderFlag(0);
  EXPECT_EQ(s.Write(static_cast<unsigned short>(0x1234)), 2);
  s = *s.addch('!', 1);
  const char expected[] =
      "a\xFF\x12\x34\x0A\x0B\x0C\x0D\xFF\xFF\xFF\xFE\x3F\x80\0\0"
      "\x3F\xF0\0\0\0\0\0\0\x3F\xF0\0\0\0\0\0\0xyz\x34\x12!";
  EXPECT_EQ(Content(s), std::string(expected, sizeof(expected) - 1));
}

// Random edits against the same edits on a std::string.
TEST(String, AgreesWithASimpleModel) {
  std::mt19937 random(3);
  Kalvo_String s;
  std::string model;
  const auto range = [&random](int low, int high) {
    return low + static_cast<int>(random() % static_cast<unsigned>(high - low));
  };
  for (int step = 0; step < 100000; ++step) {
    const int position = range(-2, static_cast<int>(model.size()) + 3);
    const std::size_t inside =
        static_cast<std::size_t>(std::clamp(position, 0, static_cast<int>(model.size())));
    const int n = range(-1, 90);
    const std::size_t count = static_cast<std::size_t>(std::max(n, 0));
    const char c = static_cast<char>(range(0, 256));
    const std::string bytes(count, c);
    switch (range(0, 8)) {
      case 0:
        s.addch(c, n);
        model += bytes;
        break;
      case 1:
        s.memcat(bytes.data(), n);
        model += bytes;
        break;
      case 2:
        s.insert_char(position, c, n);
        model.insert(inside, bytes);
        break;
      case 3:
        if (n < 1) break;
        s.insert_string(position, bytes.data(), n);
        model.insert(inside, bytes);
        break;
      case 4:
        s.Delete(position, n);
        if (inside < model.size()) model.erase(inside, count);
        break;
      case 5:
        s.addch(c, 1);
        model += c;
        break;
      case 6:
        if (model.size() < 2000) break;
        s.truncate(n);
        if (n >= 0) model.resize(std::min(model.size(), count));
        break;
      default:
        s.SetAt(position, c);
        if (position >= 0 && inside < model.size()) model[inside] = c;
    }
    ASSERT_EQ(s.length(), model.size());
    if (step % 16 == 0) {
      ASSERT_EQ(Content(s), model);
    }
  }
}

// Beyond what a string can hold, nothing is lost and nothing overflows.
TEST(String, RefusesWhatDoesNotFit) {
  Kalvo_String s("abc");
  s.insert_char(1, 'x', INT_MAX);
  s.insert_string(1, "x", 0);
  EXPECT_EQ(Content(s), "abc");
}

// Takes some 3 GiB of memory for a moment.
TEST(String, HoldsAsMuchAsItSays) {
#if defined(KALVOBASE_SANITIZED)
  GTEST_SKIP() << "too large under the sanitizers";
#endif
  if (sysconf(_SC_AVPHYS_PAGES) * (sysconf(_SC_PAGESIZE) / 1024) < 6L << 20) {
    GTEST_SKIP() << "not enough memory on this machine";
  }
  constexpr int kMost = INT_MAX - 1;
  Kalvo_String s;
  s.resize(kMost, 'x');
  EXPECT_EQ(s.length(), static_cast<unsigned long>(kMost));
  EXPECT_EQ(s.Write('c'), -1);
  EXPECT_EQ(s.Write(5), -1);
  EXPECT_EQ(s.Write("c", 1), -1);
  s.addch('c', 1);
  s.insert_char(0, 'c', 1);
  s.insert_string(0, "c", 1);
  EXPECT_EQ(s.length(), static_cast<unsigned long>(kMost));
  EXPECT_EQ(s[kMost - 1], 'x');
  EXPECT_EQ(s.c_str()[kMost], 0);
}

TEST(String, ConvertsNumbers) {
  Kalvo_String s("  -ff\t");
  EXPECT_EQ(s.ToInt(16), -255);
  EXPECT_EQ(Content(s), "-ff");
  struct {
    const char* text;
    int base;
    long value;
  } const rows[] = {{"", 16, 0},
                    {"0x1F", 16, 31},
                    {"12x34", 16, 0x34},
                    {"1g", 16, 1},
                    {"101", 2, 5},
                    {"-11", 2, -3},
                    {"102", 2, 2},
                    {"12ab", 10, 12},
                    {"-12", 7, -12},
                    {"ff", 10, 0},
                    {"FFFFFFFF", 16, -1},
                    {"1FFFFFFFF", 16, -1},
                    {"-80000000", 16, INT_MIN},
                    {"4294967295", 10, -1}};
  for (const auto& row : rows) {
    EXPECT_EQ(Kalvo_String(row.text).ToInt(row.base), row.value) << row.text;
  }
  EXPECT_EQ(Kalvo_String(" 2.5x").ToFloat(), 2.5);
  struct {
    const char* text;
    int value;
  } const chars[] = {{"\\n", 10}, {"\\r", 13}, {"\\t", 9}, {"\\\\", 92}, {"\\0", 0},
                     {"\\q", 32}, {"\\", 32},  {"0", 48},  {"0x41", 65}, {"0X1ff", -1},
                     {"012", 48}, {"65", 65},  {"A", 0},   {"", 0},      {"321", 65}};
  for (const auto& row : chars) {
    EXPECT_EQ(static_cast<signed char>(Kalvo_String(row.text).ToChar()), row.value) << row.text;
  }
}

}  // namespace
