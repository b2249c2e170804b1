// String arrays.

#include <gtest/gtest.h>

#include <climits>
#include <initializer_list>
#include <string>
#include <vector>

#include "kalvobase/text.h"

namespace {

using Texts = std::vector<std::string>;

Texts Contents(const Kalvo_StringArray& array) {
  Texts texts;
  for (int i = 0; i < array.GetSize(); ++i) {
    texts.emplace_back(array[i]->c_str(), array[i]->length());
  }
  return texts;
}

void Fill(Kalvo_StringArray* array, std::initializer_list<const char*> texts) {
  array->RemoveAll();
  for (const char* text : texts) array->Add(text, -1);
}

TEST(StringArray, Positions) {
  Kalvo_StringArray a;
  EXPECT_EQ(a.GetAt(0), nullptr);
  EXPECT_EQ(a.GetTail(), nullptr);
  a.RemoveTail();
  Fill(&a, {"a", "b"});
  EXPECT_STREQ(a.GetAt(5)->c_str(), "b");
  EXPECT_STREQ(a.GetAt(-1)->c_str(), "b");
  EXPECT_EQ(a.GetTail(), a[1]);
  Kalvo_String* made = a.SetAt(0, "x", -1);
  EXPECT_EQ(made, a[0]);
  made = a.SetAt(-1, Kalvo_String("y"));
  EXPECT_EQ(made, a.GetTail());
  made = a.SetAt(9, "z", 0);
  EXPECT_EQ(made, a.GetTail());
  EXPECT_EQ(Contents(a), (Texts{"x", "a", "b", "y", ""}));
  EXPECT_STREQ(a.Add(nullptr, -1)->c_str(), "");
}

TEST(StringArray, Inserting) {
  Kalvo_StringArray a;
  Fill(&a, {"a", "b"});
  EXPECT_EQ(a.InsertAt(1, "x", 0), nullptr);
  Kalvo_String* first = a.InsertAt(1, "x", 2);
  EXPECT_EQ(first, a[2]);
  EXPECT_EQ(Contents(a), (Texts{"a", "x", "x", "b"}));
  for (const int outside : {-1, 4, 99}) {
    Kalvo_StringArray b(a);
    first = b.InsertAt(outside, "y", 3);
    EXPECT_EQ(first, b.GetTail());
    EXPECT_EQ(b.GetSize(), 7);
  }
  first = a.InsertAt(0, Kalvo_String("y"), 1);
  EXPECT_EQ(first, a[0]);

  Kalvo_StringArray empty;
  EXPECT_EQ(a.InsertAt(1, &empty), nullptr);
  EXPECT_EQ(a.InsertAt(1, static_cast<Kalvo_StringArray*>(nullptr)), nullptr);
  Fill(&a, {"a", "b"});
  first = a.InsertAt(1, &a);
  EXPECT_EQ(first, a[1]);
  EXPECT_EQ(Contents(a), (Texts{"a", "a", "b", "b"}));
  first = empty.InsertAt(INT_MAX, &a);
  EXPECT_EQ(first, empty[0]);
  EXPECT_EQ(Contents(empty), Contents(a));
}

TEST(StringArray, Removing) {
  Kalvo_StringArray a;
  Fill(&a, {"a", "b", "c"});
  a.RemoveAt(1, 0);
  a.RemoveAt(-1, 1);
  a.RemoveAt(3, 1);
  a.RemoveAt(1, -5);
  EXPECT_EQ(a.GetSize(), 3);
  a.RemoveAt(1, INT_MAX);
  EXPECT_EQ(Contents(a), Texts{"a"});
  a.RemoveAt(5, 1);
  a.RemoveTail();
  EXPECT_EQ(a.GetSize(), 0);
}

TEST(StringArray, CopiesEndAtAZeroByte) {
  Kalvo_StringArray a;
  a.Add(Kalvo_String())->memcpy("a\0b", 3);
  a.Add(*a[0]);
  EXPECT_EQ(a[1]->length(), 3u);
  Kalvo_StringArray b(a);
  EXPECT_EQ(Contents(b), (Texts{"a", "a"}));
  EXPECT_EQ(a == b, 0);
  EXPECT_EQ(a != b, 1);
  a = b;
  EXPECT_EQ(a == b, 1);
  a = *&a;
  a.Copy(a);
  EXPECT_EQ(a.Append(a), 4);
  EXPECT_EQ(Contents(a), (Texts{"a", "a", "a", "a"}));
  EXPECT_EQ(Kalvo_StringArray() == Kalvo_StringArray(), 1);
}

TEST(StringArray, Splits) {
  struct {
    const char* text;
    int merge;
    Texts fromText;
    Texts fromString;
  } const rows[] = {
      {"", 0, {}, {""}},
      {"", 1, {}, {""}},
      {"a,b", 0, {"a", "b"}, {"a", "b"}},
      {"a,b,", 0, {"a", "b"}, {"a", "b", ""}},
      {"a,b,,", 1, {"a", "b"}, {"a", "b", ""}},
      {",a", 0, {"", "a"}, {"", "a"}},
      {"a,,b", 0, {"a", "", "b"}, {"a", "", "b"}},
      {"a,,b", 1, {"a", "b"}, {"a", "b"}},
      {",,a", 1, {"", "a"}, {"", "a"}},
      {",", 0, {""}, {"", ""}},
  };
  for (const auto& row : rows) {
    Kalvo_StringArray a;
    a.Add("old", -1);
    EXPECT_EQ(a.Split(row.text, ',', row.merge), static_cast<int>(row.fromText.size()));
    EXPECT_EQ(Contents(a), row.fromText) << row.text;
    Kalvo_String s(row.text);
    EXPECT_EQ(a.Split(&s, ',', row.merge), static_cast<int>(row.fromString.size()));
    EXPECT_EQ(Contents(a), row.fromString) << row.text;
  }
  Kalvo_StringArray a;
  Kalvo_String zeros;
  zeros.memcpy("a\0b,c", 5);
  EXPECT_EQ(a.Split(&zeros, ',', 0), 2);
  EXPECT_EQ(Contents(a), (Texts{"a", "c"}));
  EXPECT_EQ(a.Split(static_cast<const char*>(nullptr), ',', 0), 0);
  EXPECT_EQ(a.Split(static_cast<Kalvo_String*>(nullptr), ',', 0), 0);
  // Its own element, which goes with the old content.
  a.Add("x-y", -1);
  EXPECT_EQ(a.Split(a[0]->c_str(), '-', 0), 2);
  a.Add("p-q-r", -1);
  EXPECT_EQ(a.Split(a.GetTail(), '-', 0), 3);
  EXPECT_EQ(Contents(a), (Texts{"p", "q", "r"}));
}

}  // namespace
