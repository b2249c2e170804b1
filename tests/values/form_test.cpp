#include <gtest/gtest.h>
#include <kalvobase/kalvobase.h>
#include <pthread.h>

#include <limits>
#include <string>
#include <vector>

namespace {

std::string Form(Kalvo_Value& value) {
  Kalvo_String out;
  const unsigned long added = value.Dump(&out);
  EXPECT_EQ(out.length(), added);
  return std::string(out.c_str(), out.length());
}

std::string Form(Kalvo_KValueTable& table) {
  Kalvo_String out("in front");
  const unsigned long added = table.Dump(&out);
  EXPECT_EQ(out.length(), added + 8);
  return std::string(out.c_str() + 8, added);
}

template <class T>
unsigned long Import(T& object, const std::string& form) {
  const std::vector<char> exact(form.begin(), form.end());  // so that a sanitizer sees its end
  return object.Import(exact.data(), static_cast<int>(exact.size()));
}

const std::string kExample(
    "\x00\x03\x02\x01\x00\x01\x61\x06\x00\x00\x00\x01\x01\x01\x00\x00\x00\x00\x00\x02\x0D\x00\x00"
    "\x00\x02\x68\x69\x02\x01\x00\x01\x74\x19\x00\x01\x02\x01\x00\x01\x78\x08\x3F\xC0\x00\x00",
    45);

void Fill(Kalvo_KValueTable* table) {
  table->Set("a", 1L);
  table->Set(2ul, "hi");
  table->InsertTable("t")->Insert("x")->Set(1.5f);
}

TEST(Form, TheExampleBothWays) {
  Kalvo_KValueTable table, copy;
  Fill(&table);
  EXPECT_EQ(Form(table), kExample);
  EXPECT_EQ(Import(copy, kExample), 45u);
  EXPECT_TRUE(copy == table);
  EXPECT_EQ(Form(copy), kExample);
  EXPECT_EQ(copy.GetTable("t")->GetValue("x")->GetFloat(), 1.5f);
  EXPECT_EQ(Import(copy, kExample + kExample), 45u);
}

// Each prefix takes all its bytes and gives the entries that it reaches.
TEST(Form, EveryPrefix) {
  Kalvo_KValueTable table;
  for (int n = 0; n < 45; ++n) {
    SCOPED_TRACE(n);
    table.Set("old", 1L);
    EXPECT_EQ(Import(table, kExample.substr(0, static_cast<std::size_t>(n))),
              static_cast<unsigned long>(n));
    const unsigned long count = n <= 2 ? 0 : n <= 12 ? 1 : n <= 27 ? 2 : 3;
    ASSERT_EQ(table.GetCount(), count);
    if (count == 0) continue;
    Kalvo_Key* key = nullptr;
    Kalvo_Value* value = table.GetFirst(key);
    EXPECT_EQ(key->GetType(), n < 6 ? Kalvo_KEY_NONE : Kalvo_KEY_STRING);
    if (n >= 6) {
      EXPECT_STREQ(key->GetSKey(), n < 7 ? "" : "a");
    }
    EXPECT_EQ(value->GetValueType(), n < 8 ? -1 : 6);
    EXPECT_EQ(value->GetLong(), n < 12 ? 0 : 1);
    if (count < 2) continue;
    value = table.GetNext(key);
    EXPECT_EQ(key->GetType(), n < 16 ? Kalvo_KEY_NONE : Kalvo_KEY_NUMBER);
    EXPECT_EQ(key->GetUKey(), n < 20 ? 0u : 2u);
    EXPECT_EQ(value->GetValueType(), n < 21 ? -1 : 13);
    if (n >= 21) {
      EXPECT_STREQ(value->GetString()->c_str(), n < 27 ? "" : "hi");
    }
    if (count < 3) continue;
    value = table.GetNext(key);
    EXPECT_EQ(key->GetType(), n < 31 ? Kalvo_KEY_NONE : Kalvo_KEY_STRING);
    EXPECT_EQ(value->GetValueType(), n < 33 ? -1 : 25);
    if (n < 36) continue;
    EXPECT_EQ(value->GetValueTable()->GetCount(), 1u);
    value = value->GetValueTable()->GetFirst(key);
    EXPECT_EQ(value->GetValueType(), n < 41 ? -1 : 8);
    EXPECT_EQ(value->GetFloat(), 0);
  }
}

TEST(Form, EveryKindOfValue) {
  const struct {
    int kind;
    const char* payload;  // what the value holds, as the host stores numbers of 1
    int length;
    std::string form;
  } cases[] = {
      {0, "\1", 1, std::string("\0\1", 2)},
      {1, "\1\2", 2, std::string("\1\1", 2)},  // of two appended numbers the first
      {2, nullptr, 2, std::string("\2\0\1", 3)},
      {3, nullptr, 2, std::string("\3\0\1", 3)},
      {4, nullptr, 4, std::string("\4\0\0\0\1", 5)},
      {7, nullptr, 4, std::string("\7\0\0\0\1", 5)},
      {9, "", 0, std::string("\x09\0\0\0\0\0\0\0\0", 9)},
      {12, "ab", 2, std::string("\x0C\0\0\0\2ab", 7)},
      {13, "", 0, std::string("\x0D\0\0\0\0", 5)},
      {15, nullptr, 2, std::string("\x0F\0\0\0\1\0\1", 7)},
      {15, "abc", 3, ""},  // one and a half elements: see below
      {20, nullptr, 4, std::string("\x14\0\0\0\1\0\0\0\1", 9)},
      {22, nullptr, 8, std::string("\x16\0\0\0\1\0\0\0\0\0\0\0\1", 13)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.kind);
    Kalvo_Value value;
    value.Init(static_cast<Kalvo_VALUE_TYPE>(c.kind));
    const short one16 = 1;
    const int one32 = 1;
    const long long one64 = 1;
    const void* number = c.length == 2   ? static_cast<const void*>(&one16)
                         : c.length == 4 ? static_cast<const void*>(&one32)
                                         : &one64;
    value.GetString()->memcpy(c.payload != nullptr ? c.payload : number, c.length);
    const std::string form = Form(value);
    if (!c.form.empty()) {
      EXPECT_EQ(form, c.form);
    }
    Kalvo_Value copy;
    EXPECT_EQ(Import(copy, form), form.size());
    EXPECT_EQ(copy.GetValueType(), c.kind);
    EXPECT_EQ(Form(copy), form);
    for (std::size_t n = 1; n < form.size(); ++n) {
      EXPECT_EQ(Import(copy, form.substr(0, n)), n);
      EXPECT_EQ(copy.GetValueType(), c.kind);
      const unsigned long whole = c.kind <= 9 ? form.size() - 1 : 0;
      EXPECT_EQ(copy.GetString()->length(), whole);
      EXPECT_EQ(copy.GetDouble(), 0);
    }
  }
  Kalvo_Value value;
  EXPECT_EQ(Form(value), "\xFF");
  value.SetPtr(&value);
  EXPECT_EQ(Form(value), "\x1A");
  value.Init(Kalvo_VT_TABLE);
  EXPECT_EQ(Form(value), std::string("\x19\0\0", 3));
  Kalvo_StringArray words;
  words.Add("ab", -1);
  words.Add("", -1);
  value.Set(words);
  const std::string form("\x18\0\0\0\2\0\0\0\2ab\0\0\0\0", 15);
  EXPECT_EQ(Form(value), form);
  for (std::size_t n = 1; n < form.size(); ++n) {
    EXPECT_EQ(Import(value, form.substr(0, n)), n);
    EXPECT_EQ(value.GetStringArray()->GetSize(), n < 5 ? 0 : n < 11 ? 1 : 2);
  }
  EXPECT_EQ(Import(value, form + "x"), 15u);
  EXPECT_EQ(Form(value), form);
}

// Lengths and counts that no bytes stand behind take what there is, and allocate nothing.
TEST(Form, HostileCounts) {
  const char* const counts[] = {"\x7F\xFF\xFF\xFF", "\x80\0\0\0", "\xFF\xFF\xFF\xFF",
                                "\x40\0\0\1",       "\x20\0\0\1", "\xFF\xFF\xFF\xFB"};
  for (int kind = 12; kind <= 24; ++kind) {
    if (kind == 23) continue;
    for (const char* count : counts) {
      const std::string form =
          std::string(1, static_cast<char>(kind)) + std::string(count, 4) + "\0\0\0\1";
      Kalvo_Value value;
      EXPECT_EQ(Import(value, form + std::string(20, 'x')), form.size() + 20);
      EXPECT_EQ(value.GetValueType(), kind);
      if (kind < 24) {
        EXPECT_EQ(value.GetString()->length(), 0u);
      }
    }
  }
  Kalvo_Value strings;
  EXPECT_EQ(Import(strings, std::string("\x18\0\0\0\2\xFF\xFF\xFF\xFFxy", 11)), 11u);
  EXPECT_EQ(strings.GetStringArray()->GetSize(), 1);
  EXPECT_EQ(Import(strings, std::string("\x18\x80\0\0\0\0\0\0\0", 9)), 9u);
  EXPECT_EQ(strings.GetStringArray()->GetSize(), 0);
  Kalvo_KValueTable table;
  EXPECT_EQ(Import(table, std::string("\xFF\xFF\2\1\xFF\xFFxy", 8)), 8u);
  EXPECT_EQ(table.GetCount(), 1u);
  EXPECT_EQ(table.GetAt(0)->GetValueType(), Kalvo_VT_NONE);
  EXPECT_EQ(table.Import(nullptr, 100), 0u);
  EXPECT_EQ(table.Import("\0\1", -1), 0xFFFFFFFFul);
  EXPECT_EQ(table.GetCount(), 0u);
  EXPECT_EQ(table.Dump(nullptr), 0u);
}

// Kinds and key types that nobody has given a meaning.
TEST(Form, UnknownKindsHoldNothing) {
  Kalvo_StringArray words;
  for (int byte = 0; byte < 255; ++byte) {  // 255 is the empty value
    if (byte <= 25 && byte != 10 && byte != 11 && byte != 23) continue;
    SCOPED_TRACE(byte);
    const std::string form(1, static_cast<char>(byte));
    Kalvo_Value value, other;
    const auto import = [&] { EXPECT_EQ(Import(value, form + "xxxxxxxx"), 1u); };
    import();
    EXPECT_EQ(value.GetValueType(), static_cast<signed char>(byte));
    EXPECT_EQ(Form(value), form);
    EXPECT_EQ(value.GetChar() + value.GetInt(), 0);
    EXPECT_EQ(value.GetDouble() + value.GetFloat(), 0);
    EXPECT_EQ(value.GetPtr(), nullptr);
    EXPECT_EQ(value.GetRef(), nullptr);
    EXPECT_EQ(value.GetString(), nullptr);
    EXPECT_EQ(value.GetByteArray(nullptr), nullptr);
    Kalvo_String text;
    value.Format(&text, 1);
    EXPECT_EQ(text.length(), 0u);
    other = value;
    EXPECT_EQ(Form(other), form);
    other.Set(5);
    value.Add(&other)->Minus(&other)->Times(&other)->Divied(&other)->PlusPlus()->ShiftR(1);
    other.Add(&value)->Minus(&value)->Times(&value)->Divied(&value);
    EXPECT_EQ(other.GetInt(), 5);
    value.Copmare(&other);
    other.Copmare(&value);
    other = value;
    other.SetRef(&value, 3);
    value.Append(1);
    EXPECT_EQ(value.GetInt(), 1);
    import();
    value.Append(words);
    EXPECT_NE(value.GetStringArray(), nullptr);
    import();
    value.Append(Kalvo_String("text"));
    EXPECT_STREQ(value.GetString()->c_str(), "text");
    import();
    value.Set('c');
    EXPECT_EQ(value.GetChar(), 'c');
  }
  Kalvo_KValueTable table;
  ASSERT_EQ(Import(table, std::string("\0\2\x80\0\0\1a\1\1\x80\0\0\1A\1\2", 16)), 16u);
  EXPECT_EQ(table.GetKeyAt(0)->GetType(), -128);
  EXPECT_EQ(table.GetValue("a"), nullptr);
  Kalvo_Key key(*table.GetKeyAt(1));
  EXPECT_EQ(table.GetCount(), 2u);
}

TEST(Form, ImportedEntriesAllStay) {
  const std::string twice("\0\3\2\1\0\1k\1\1\2\1\0\1k\1\2\0\1\0\0\1\3", 22);
  Kalvo_KValueTable table;
  ASSERT_EQ(Import(table, twice), twice.size());
  EXPECT_EQ(table.GetCount(), 3u);
  EXPECT_EQ(table.GetValue("k"), table.GetAt(1));
  EXPECT_EQ(table.GetValue(static_cast<const char*>(nullptr)), table.GetAt(2));
  EXPECT_EQ(Form(table), twice);
  table.Remove("k");
  EXPECT_EQ(table.GetValue("k"), nullptr);
  EXPECT_EQ(table.GetCount(), 2u);

  ASSERT_EQ(Import(table, std::string("\0\1\2\0\0\1K\1\1", 9)), 9u);  // a key without case
  EXPECT_EQ(table.GetValue("K"), nullptr);
  table.SetCaseFlag(0);
  EXPECT_NE(table.GetValue("K"), nullptr);
}

TEST(Form, OutOfAndIntoItself) {
  Kalvo_KValueTable table;
  Fill(&table);
  table.Insert("form")->Set(kExample.c_str(), 45);
  unsigned long n = 0;
  const char* form = table.GetByteArray("form", &n);
  EXPECT_EQ(table.Import(form, static_cast<int>(n)), 45u);
  EXPECT_EQ(Form(table), kExample);
  Kalvo_Value value;
  value.Set((std::string("\x19") + kExample).c_str(), -1);
  value.Set((std::string("\x19") + kExample).data(), 46);
  EXPECT_EQ(value.Import(value.GetByteArray(nullptr), 46), 46u);
  EXPECT_TRUE(*value.GetValueTable() == table);
  value.GetValueTable()->Insert("v")->Set("\4\0\0\0\7", 5);
  EXPECT_EQ(value.Import(value.GetValueTable()->GetByteArray("v", nullptr), 5), 5u);
  EXPECT_EQ(value.GetInt(), 7);

  const int numbers[100] = {1, 2, 3};
  table.Insert("numbers")->Set(numbers, 100);
  Kalvo_String* own = table.GetValue("numbers")->GetString();
  const unsigned long added = table.Dump(own);
  EXPECT_EQ(own->length(), 400 + added);
  for (int length = 0; length < 300; ++length) {  // across the steps in which a string grows
    Kalvo_Value words;
    words.Init(Kalvo_VT_STRING_ARRAY);
    words.GetStringArray()->Add(std::string(static_cast<std::size_t>(length), 'w').c_str(), -1);
    words.Dump(words.GetString());
  }
  for (int flag = 0; flag < 2; ++flag) {
    value.Init(Kalvo_VT_INT);  // shorter than its number
    value.GetString()->SetOrderFlag(flag);
    value.Dump(value.GetString());
    EXPECT_EQ(Kalvo_Value(value).GetString()->length(), 5u);
    EXPECT_EQ(value.GetInt(), 4);
  }
}

TEST(Form, TooManyEntriesAreNotDumped) {
  Kalvo_KValueTable table;
  Kalvo_KValueTable* inner = table.InsertTable("inner");
  for (int i = 0; i < 65535; ++i) inner->InsertAt(-1);
  Kalvo_String out("kept");
  EXPECT_EQ(table.Dump(&out), 2u + 9 + 1 + 2 + 65535 * 5);
  out = "kept";
  inner->InsertAt(-1);
  EXPECT_EQ(table.Dump(&out), 0u);
  EXPECT_STREQ(out.c_str(), "kept");
}

// Runs on a thread with a stack of 256 KiB.
void WithNesting(void (*body)()) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  pthread_t thread;
  const auto run = [](void* f) -> void* {
    reinterpret_cast<void (*)()>(f)();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, reinterpret_cast<void*>(body)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(Form, NestingDoesNotUseTheStack) {
  WithNesting([] {
    constexpr int kDepth = 100000;
    std::string form;
    for (int i = 0; i < kDepth; ++i) form += std::string("\0\1\2\1\0\1k\x19", 8);
    form += std::string("\0\0", 2);
    Kalvo_KValueTable table;
    EXPECT_EQ(Import(table, form), form.size());
    Kalvo_KValueTable copy(table);
    EXPECT_TRUE(copy == table);
    EXPECT_EQ(Form(copy), form);
    Kalvo_Value value;
    value.Set(copy);
    Kalvo_KVPair a, b;
    a.value = value;
    b.value = a.value;
    EXPECT_TRUE(a == b);
    EXPECT_EQ(Form(value), '\x19' + form);
    table.GetTable("k")->RemoveAll();
    table = *copy.GetTable("k")->GetTable("k");
    value = *value.GetValueTable()->GetValue("k");
    EXPECT_EQ(Import(value, "\x19" + form.substr(0, form.size() / 2)), form.size() / 2 + 1);
    value.Reset();
    copy.Remove("k");
  });
}

}  // namespace
