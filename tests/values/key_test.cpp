#include <gtest/gtest.h>
#include <kalvobase/kalvobase.h>

#include <string>

namespace {

TEST(Key, TextsAndNumbers) {
  Kalvo_Key key;
  EXPECT_EQ(key.GetType(), Kalvo_KEY_NONE);
  EXPECT_EQ(key.GetSKey(), nullptr);
  unsigned long number = 5;
  EXPECT_EQ(key.GetUKey(number), nullptr);
  EXPECT_EQ(number, 5u);
  EXPECT_EQ(key.Hash(), 0u);

  key.Set("abc", -1);
  EXPECT_STREQ(key.GetSKey(), "abc");
  key.Set("abc", 2);
  EXPECT_STREQ(key.GetSKey(), "ab");
  EXPECT_EQ(key.Hash(), Kalvo_HashKey("ab"));
  EXPECT_EQ(key.GetUKey(), 0u);
  key.Set(static_cast<const char*>(nullptr), 5);
  EXPECT_TRUE(key == "ab");

  key.Set(0x100000007ul, "seven");
  EXPECT_EQ(key.GetType(), Kalvo_KEY_NUMBER);
  EXPECT_EQ(key.GetUKey(), 7u);
  EXPECT_STREQ(key.GetUKey(number), "seven");
  EXPECT_EQ(number, 7u);
  EXPECT_EQ(key.Hash(), 0u);
  EXPECT_FALSE(key == "seven");
  EXPECT_TRUE(key != "seven");
  key = "text";
  EXPECT_EQ(key.GetUKey(), 7u);  // left from the number
  key = 8ul;
  EXPECT_STREQ(key.GetSKey(), "");

  const std::string longText(70000, 'x');
  key.Set(longText.c_str(), 0);
  EXPECT_EQ(std::string(key.GetSKey()).size(), 65535u);
  key.Set(1ul, longText.c_str());
  EXPECT_EQ(std::string(key.GetSKey()).size(), 65535u);
  key.SetCaseFlag(0);
  key.Clear();
  key = "A";
  EXPECT_FALSE(key == "a");  // Clear brought the case flag back
}

TEST(Key, ComparesByTheLaxerOfTwoCaseFlags) {
  Kalvo_Key lax;
  lax = "ABC";
  lax.SetCaseFlag(0);
  Kalvo_Key strict;
  strict = "abc";
  EXPECT_TRUE(lax == strict);
  EXPECT_FALSE(strict != lax);
  EXPECT_TRUE(lax == "aBc");
  EXPECT_FALSE(lax == static_cast<const char*>(nullptr));
  EXPECT_EQ(lax.Hash(), Kalvo_HashKeyNocase("abc"));
  lax.SetCaseFlag(-7);
  EXPECT_FALSE(lax == strict);
  EXPECT_NE(lax.Hash(), strict.Hash());

  Kalvo_Key empty, otherEmpty, number, labelled;
  number = 7ul;
  labelled.Set(7ul, "seven");
  EXPECT_TRUE(empty == otherEmpty);
  EXPECT_TRUE(number == labelled);
  EXPECT_FALSE(number == strict);
}

TEST(Key, CopiesEndAtAZeroByte) {
  const char form[] = {2, 0, 0, 3, 'a', 0, 'b'};
  Kalvo_Key key;
  ASSERT_EQ(key.Import(form, sizeof(form)), 7u);
  Kalvo_Key copy(key);
  EXPECT_NE(copy.Hash(), key.Hash());
  EXPECT_EQ(Kalvo_HashKey(key), copy.Hash());
  EXPECT_EQ(copy.Hash(), Kalvo_HashKey("a"));
  EXPECT_TRUE(copy == key);  // without case texts end at the zero byte
  key.SetCaseFlag(1);
  copy.SetCaseFlag(1);
  EXPECT_FALSE(copy == key);
  Kalvo_String out;
  key.Dump(&out);
  EXPECT_EQ(std::string(out.c_str(), out.length()), std::string("\2\1\0\3a\0b", 7));
}

}  // namespace
