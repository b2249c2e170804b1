#include <gtest/gtest.h>
#include <kalvobase/kalvobase.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

std::string Text(Kalvo_Value& value) {
  Kalvo_String out("x");
  value.Format(&out, 0);
  return std::string(out.c_str(), out.length());
}

std::string Bytes(Kalvo_Value& value) {
  unsigned long n = 0;
  const char* bytes = value.GetByteArray(&n);
  return bytes != nullptr ? std::string(bytes, n) : std::string();
}

std::string Joined(Kalvo_StringArray* array) {
  std::string all;
  for (int i = 0; array != nullptr && i < array->GetSize(); ++i) {
    all += std::string(array->GetAt(i)->c_str()) + ";";
  }
  return all;
}

// What each kind stores and gives, for -2 in every width.
TEST(Value, NumbersAreWidenedWithTheirSign) {
  struct Case {
    int kind, width, asChar, asShort, asInt;
    double asDouble;
    const char* text;
    Kalvo_Value value;
  };
  Case cases[] = {{0, 1, -2, -2, -2, -2, "\xFE", {}},
                  {1, 1, -2, -2, -2, -2, "\xFE", {}},
                  {2, 2, -2, -2, -2, -2, "-2", {}},
                  {3, 2, -2, -2, -2, -2, "65534", {}},
                  {4, 4, -2, -2, -2, -2, "-2", {}},
                  {5, 4, -2, -2, -2, -2, "4294967294", {}},
                  {6, 4, -2, -2, -2, -2, "-2", {}},
                  {7, 4, -2, -2, -2, -2, "4294967294", {}},
                  {8, 4, 0, 0, 0x3FC00000, 1.5, "1.500000", {}},
                  {9, 8, 0, 0, 0, 1.5, "1.500000", {}}};
  cases[0].value.Set(static_cast<char>(-2));
  cases[1].value.Set(static_cast<unsigned char>(0xFE));
  cases[2].value.Set(static_cast<short>(-2));
  cases[3].value.Set(static_cast<unsigned short>(0xFFFE));
  cases[4].value.Set(-2);
  cases[5].value.Set(0xFFFFFFFEu);
  cases[6].value.Set(-2L);
  cases[7].value.Set(0xFFFFFFFEul);
  cases[8].value.Set(1.5f);
  cases[9].value.Set(1.5);
  for (Case& c : cases) {
    SCOPED_TRACE(c.kind);
    EXPECT_EQ(c.value.GetValueType(), c.kind);
    EXPECT_EQ(c.value.GetString()->length(), static_cast<unsigned long>(c.width));
    EXPECT_EQ(c.value.GetChar(), static_cast<char>(c.asChar));
    EXPECT_EQ(c.value.GetUChar(), static_cast<unsigned char>(c.asChar));
    EXPECT_EQ(c.value.GetShort(), c.asShort);
    EXPECT_EQ(c.value.GetUShort(), static_cast<unsigned short>(c.asShort));
    EXPECT_EQ(c.value.GetInt(), c.asInt);
    EXPECT_EQ(c.value.GetUInt(), static_cast<unsigned>(c.asInt));
    EXPECT_EQ(c.value.GetLong(), c.asInt);
    EXPECT_EQ(c.value.GetULong(), static_cast<std::uint32_t>(c.asInt));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(c.value.GetPtr()),
              static_cast<std::uint32_t>(c.asInt));
    EXPECT_EQ(c.value.GetFloat(), static_cast<float>(c.asDouble));
    EXPECT_EQ(c.value.GetDouble(), c.asDouble);
    EXPECT_EQ(Text(c.value), c.text);
    Kalvo_Value copy(c.value);
    EXPECT_EQ(copy.GetValueType(), c.kind);
    EXPECT_EQ(Bytes(copy), Bytes(c.value));
  }
}

TEST(Value, WhatIsEmptyReadsAsNothing) {
  const int withContent[] = {0, 4, 9, 12, 13, 15, 22};
  Kalvo_Value value;
  for (int kind = -2; kind < 30; ++kind) {
    SCOPED_TRACE(kind);
    value.Set("left over", -1);
    value.Init(static_cast<Kalvo_VALUE_TYPE>(kind));
    const bool made =
        (kind >= 0 && kind <= 9) || (kind >= 12 && kind <= 22) || kind == 24 || kind == 25;
    EXPECT_EQ(value.GetValueType(), made ? kind : -1);
    EXPECT_EQ(value.GetInt(), 0);
    EXPECT_EQ(value.GetDouble(), 0);
    EXPECT_EQ(value.GetPtr(), nullptr);
    unsigned long n = 77;
    EXPECT_EQ(value.GetByteArray(&n), nullptr);
    EXPECT_EQ(n, 77u);
    EXPECT_EQ(value.GetString() != nullptr, made && kind < 24);
    EXPECT_EQ(value.GetStringArray() != nullptr, kind == 24);
    EXPECT_EQ(value.GetValueTable() != nullptr, kind == 25);
    EXPECT_EQ(value.GetRef(), nullptr);
  }
  for (int kind : withContent) {  // a payload that is too short counts as filled with zeros
    value.Init(static_cast<Kalvo_VALUE_TYPE>(kind));
    value.GetString()->strcpy("\x01");
    EXPECT_EQ(value.GetInt(), kind <= 9 ? 1 : 0);
  }
}

TEST(Value, SetKeepsThePayloadsString) {
  Kalvo_Value value;
  value.Set(1);
  Kalvo_String* payload = value.GetString();
  value.Set(std::string(1000, 'x').c_str(), -1);
  value.Set(*payload);  // its own text
  EXPECT_EQ(payload->length(), 1000u);
  value.Set(payload->c_str() + 990, 5);
  EXPECT_EQ(*payload, Kalvo_String("xxxxx"));
  value.Set(payload->c_str(), -1);
  value.Set(payload->c_str() + 2, 1000);  // more than there is
  EXPECT_EQ(payload->Compare("xxx"), 0);
  EXPECT_EQ(value.GetString(), payload);
  EXPECT_EQ(value.GetValueType(), Kalvo_VT_STRING);
  value.Set(static_cast<const char*>(nullptr), 3);
  EXPECT_EQ(value.GetString(), payload);
  EXPECT_EQ(payload->length(), 0u);

  value.Set("a\0b", 3);
  EXPECT_EQ(Text(value), std::string("a\0b", 3));
  value.Set(reinterpret_cast<const unsigned char*>("ab"), -1);
  EXPECT_EQ(value.GetValueType(), Kalvo_VT_UCHAR_ARRAY);
  const long longs[] = {-1, 0x100000002l};
  value.Set(longs, 2);
  unsigned long n = 0;
  const Kalvo_Long* stored = value.GetLongArray(&n);
  ASSERT_EQ(n, 2u);
  EXPECT_EQ(stored[0], -1);
  EXPECT_EQ(stored[1], 2);
  EXPECT_EQ(value.GetDoubleArray(&n) != nullptr && n == 1, true);
  const double doubles[] = {1, 2, 3};
  value.Set(doubles, 3);
  EXPECT_EQ(value.GetDoubleArray(&n)[2], 3);
  value.Set(doubles, INT_MIN);
  EXPECT_EQ(value.GetDoubleArray(nullptr), nullptr);
  EXPECT_EQ(value.GetValueType(), Kalvo_VT_DOUBLE_ARRAY);
  int target = 0;
  value.SetPtr(&target);
  Kalvo_Value copy;
  copy = value;
  EXPECT_EQ(copy.GetPtr(), &target);
  EXPECT_EQ(copy.GetValueType(), Kalvo_VT_PTR);
}

// Which number goes behind which kind: a bit for each kind from 0 to 9.
TEST(Value, AppendTakesNumbersOfOneWidth) {
  const struct {
    void (*append)(Kalvo_Value&);
    unsigned kinds;
    int alone;
  } cases[] = {
      {[](Kalvo_Value& v) { v.Append(static_cast<short>(1)); }, 0x00C, 2},
      {[](Kalvo_Value& v) { v.Append(static_cast<unsigned short>(1)); }, 0x00C, 3},
      {[](Kalvo_Value& v) { v.Append(1); }, 0x0B0, 4},
      {[](Kalvo_Value& v) { v.Append(1u); }, 0x0B0, 5},
      {[](Kalvo_Value& v) { v.Append(1l); }, 0x0F0, 6},
      {[](Kalvo_Value& v) { v.Append(1ul); }, 0x0F0, 7},
      {[](Kalvo_Value& v) { v.Append(1.0f); }, 0x100, 8},
      {[](Kalvo_Value& v) { v.Append(1.0); }, 0x200, 9},
  };
  for (const auto& c : cases) {
    Kalvo_Value value;
    c.append(value);
    EXPECT_EQ(value.GetValueType(), c.alone);
    const std::size_t width = Bytes(value).size();
    for (int kind = 0; kind <= 22; ++kind) {
      SCOPED_TRACE(c.alone * 100 + kind);
      value.Init(static_cast<Kalvo_VALUE_TYPE>(kind));
      c.append(value);
      const bool empty = kind == 10 || kind == 11;
      const bool taken = empty || (kind <= 9 && (c.kinds >> kind & 1) != 0);
      EXPECT_EQ(Bytes(value).size(), taken ? width : 0);
      EXPECT_EQ(value.GetValueType(), empty ? c.alone : kind);
    }
  }
  Kalvo_Value value;
  value.Set(5);
  value.Append(6);
  unsigned long n = 0;
  EXPECT_EQ(value.GetIntArray(&n)[1], 6);
  EXPECT_EQ(value.GetInt(), 5);
}

TEST(Value, AppendTakesTexts) {
  Kalvo_Value value;
  value.Append("ab", 1);
  value.Append(reinterpret_cast<const unsigned char*>("c"), -1);
  EXPECT_EQ(Text(value), "ac");
  EXPECT_EQ(value.GetValueType(), Kalvo_VT_STRING);
  value.Append(*value.GetString());
  EXPECT_EQ(Text(value), "acac");

  Kalvo_StringArray words;
  words.Add("w", -1);
  value.Append(words);
  EXPECT_EQ(value.GetValueType(), Kalvo_VT_STRING_ARRAY);
  value.Append(Kalvo_String("s"));
  value.Append("p", -1);
  value.Append(*value.GetStringArray());
  EXPECT_EQ(Joined(value.GetStringArray()), "acac;w;s;p;acac;w;s;p;");
  EXPECT_STREQ(value.GetString()->c_str(), "acac");
  value.Set(*value.GetString());  // a text that goes with the array
  EXPECT_EQ(Text(value), "acac");

  value.Set(0x44434241);
  value.Append(words);
  EXPECT_EQ(value.GetValueType(), Kalvo_VT_INT);
  value.Append(Kalvo_String("E"));
  EXPECT_EQ(value.GetValueType(), Kalvo_VT_STRING);
  EXPECT_EQ(Text(value).size(), 5u);
  EXPECT_EQ(Text(value)[4], 'E');

  value.Init(Kalvo_VT_TABLE);
  value.GetValueTable()->Set("k", "inner");
  value.Append("x", -1);
  ASSERT_NE(value.GetValueTable(), nullptr);
  value.Append(*value.GetValueTable()->GetValue("k")->GetString());
  EXPECT_EQ(Text(value), "inner");
}

TEST(Value, CopiesWhatItHoldsItself) {
  Kalvo_Value value;
  value.Init(Kalvo_VT_TABLE);
  Kalvo_KValueTable* table = value.GetValueTable()->InsertTable("deep");
  table->Set("text", "here");
  table->InsertTable("own")->Set("x", 1L);
  Kalvo_StringArray words;
  words.Add("w", -1);
  table->Insert("words")->Set(words);
  value = *value.GetValueTable()->GetValue("deep");
  ASSERT_NE(value.GetValueTable(), nullptr);
  EXPECT_EQ(value.GetValueTable()->GetCount(), 3u);
  value.Set(*value.GetValueTable()->GetTable("own"));
  EXPECT_EQ(value.GetValueTable()->GetBaseValue("x"), 1u);
  value.GetValueTable()->Insert("whole")->Set(*value.GetValueTable());
  EXPECT_EQ(value.GetValueTable()->GetTable("whole")->GetCount(), 2u);
  value = *value.GetValueTable()->GetTable("whole")->GetValue("x");
  EXPECT_EQ(value.GetLong(), 1);
  value.Init(Kalvo_VT_TABLE);
  value.GetValueTable()->Insert("words")->Set(words);
  value = *value.GetValueTable()->GetValue("words");
  EXPECT_EQ(Joined(value.GetStringArray()), "w;");
  value.Set(*value.GetStringArray());
  EXPECT_EQ(Joined(value.GetStringArray()), "w;");
}

TEST(Value, References) {
  Kalvo_Value text;
  text.Set("ab", -1);
  Kalvo_Value byte;
  byte.SetRef(&text, 5);
  EXPECT_EQ(byte.GetValueType(), Kalvo_VT_BYTE_REF);
  EXPECT_EQ(Bytes(text), std::string("ab\0\0\0\0", 6));
  byte.Set('x');
  byte.Set(static_cast<short>(1));
  byte.Set(7.0);
  byte.SetPtr(&text);
  EXPECT_EQ(Bytes(text)[5], 'x');
  EXPECT_EQ(byte.GetRef(), text.GetByteArray(nullptr) + 5);
  EXPECT_EQ(byte.GetInt(), 'x');
  EXPECT_EQ(Text(byte), "x");
  byte.Set(static_cast<unsigned char>(0xFF));
  EXPECT_EQ(byte.GetDouble(), -1);
  EXPECT_EQ(byte.GetString(), nullptr);
  EXPECT_EQ(byte.GetByteArray(nullptr), nullptr);
  Kalvo_Value copy(byte);
  EXPECT_EQ(copy.GetValueType(), Kalvo_VT_CHAR);
  EXPECT_EQ(copy.GetChar(), static_cast<char>(-1));
  byte.Append("text", -1);  // a reference has no payload to append to
  EXPECT_EQ(byte.GetValueType(), Kalvo_VT_BYTE_REF);

  Kalvo_Value whole, again;
  whole.SetRef(&text, -1);
  EXPECT_EQ(whole.GetRef(), &text);
  EXPECT_EQ(whole.GetInt(), 0);
  again.SetRef(&whole, 3);
  EXPECT_EQ(again.GetRef(), &text);
  again.SetRef(&whole, -1);
  EXPECT_EQ(again.GetRef(), &whole);
  copy = again;
  EXPECT_EQ(copy.GetValueType(), Kalvo_VT_REF);
  EXPECT_EQ(copy.GetRef(), nullptr);
  again.Set(5);
  EXPECT_EQ(again.GetInt(), 5);

  text.Set("ab", -1);
  for (int index : {255, 511}) {  // as long as the string's capacity: reading moves nothing
    byte.SetRef(&text, index);
    text.GetString()->c_str();
    byte.Set('z');
    EXPECT_EQ(Bytes(text).back(), 'z');
  }

  Kalvo_Value table;
  table.Init(Kalvo_VT_TABLE);
  again.SetRef(&table, 2);
  EXPECT_EQ(table.GetValueTable()->GetCount(), 3u);
  EXPECT_EQ(again.GetRef(), table.GetValueTable()->GetAt(2));
  table.GetValueTable()->InsertTable("deep")->Set("text", "goes with the table");
  table.SetRef(table.GetValueTable()->GetTable("deep")->GetValue("text"), 2);
  EXPECT_EQ(table.GetValueType(), Kalvo_VT_NONE);
  for (Kalvo_Value* target : {&again, &copy, static_cast<Kalvo_Value*>(nullptr)}) {
    copy.Set(9);
    copy.SetRef(target, 4);
    EXPECT_EQ(copy.GetValueType(), target == &again ? Kalvo_VT_REF : Kalvo_VT_NONE);
  }
}

TEST(Value, FormatsIntoItsOwnPayload) {
  Kalvo_Value value;
  value.Set(42);
  EXPECT_STREQ(value.Format(value.GetString(), 0), "42");
  value.Set("ab", -1);
  EXPECT_STREQ(value.Format(value.GetString(), 0), "ab");
  EXPECT_STREQ(value.Format(value.GetString(), 1), "abab");
  EXPECT_STREQ(value.Format(nullptr, 1), "");
}

}  // namespace
