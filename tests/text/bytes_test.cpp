// Byte order and hashes.

#include "kalvobase/bytes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

template <class T>
void ExpectBytes(T value, const std::string& expected) {
  char buffer[8];
  ASSERT_EQ(NB_ToBuf(buffer, value), expected.size());
  EXPECT_EQ(std::string(buffer, expected.size()), expected);
  T back = 0;
  EXPECT_EQ(NB_ToValue(buffer, back), expected.size());
  EXPECT_EQ(back, value);
}

TEST(Bytes, NetworkOrder) {
  ExpectBytes(static_cast<short>(0x1234), "\x12\x34");
  ExpectBytes(static_cast<unsigned short>(0xFEDC), "\xFE\xDC");
  ExpectBytes(-2, "\xFF\xFF\xFF\xFE");
  ExpectBytes(0x12345678u, "\x12\x34\x56\x78");
  ExpectBytes(-2L, "\xFF\xFF\xFF\xFE");
  ExpectBytes(0xFFFFFFFEul, "\xFF\xFF\xFF\xFE");
  ExpectBytes(1.0f, std::string("\x3F\x80\0\0", 4));
  ExpectBytes(1.0, std::string("\x3F\xF0\0\0\0\0\0\0", 8));
  char three[3] = {'x', 'y', 'z'};
  stNB_Put(three, "ab", 0);
  EXPECT_EQ(three[0], 'x');
  stNB_Put(three, "abc", 3);
  EXPECT_EQ(std::string(three, 3), "cba");
}

TEST(Bytes, Hashes) {
  EXPECT_EQ(Kalvo_HashKey("a"), 97u);
  EXPECT_EQ(Kalvo_HashKey("ab"), 3299u);
  EXPECT_EQ(Kalvo_HashKey(""), 0u);
  EXPECT_EQ(Kalvo_HashKey(static_cast<const char*>(nullptr)), 0u);
  EXPECT_EQ(Kalvo_HashKeyNocase("AB"), 3299u);
  EXPECT_EQ(Kalvo_HashKeyNocase(nullptr), 0u);
  EXPECT_EQ(Kalvo_HashKey("\xB0"), 0xFFFFFFFFu - 79);
  EXPECT_EQ(Kalvo_HashKeyNocase("\xC0"), 0xFFFFFFFFu - 63);
  // It wraps at 32 bits.
  EXPECT_EQ(Kalvo_HashKey("abcdefgh"), 3942012324u);
  EXPECT_EQ(Kalvo_HashKey(-16), 0xFFFFFFFFu);
  EXPECT_EQ(Kalvo_HashKey(static_cast<unsigned int>(-16)), 0x0FFFFFFFu);
  EXPECT_EQ(Kalvo_HashKey(-16L), 0xFFFFFFFFu);
  EXPECT_EQ(Kalvo_HashKey(static_cast<unsigned long>(0xFFFFFFF0)), 0x0FFFFFFFu);
  EXPECT_EQ(Kalvo_HashKey(static_cast<short>(-16)), 0xFFFFFFFFu);
  EXPECT_EQ(Kalvo_HashKey(static_cast<unsigned short>(0xFFF0)), 0xFFFu);
}

}  // namespace
