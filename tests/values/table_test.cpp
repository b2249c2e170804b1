#include <gtest/gtest.h>
#include <kalvobase/kalvobase.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

// The keys in order: texts as they are, numbers as "#7", empty keys as "-".
std::string Keys(const Kalvo_KValueTable& table) {
  std::string all;
  Kalvo_Key* key = nullptr;
  for (Kalvo_Value* value = table.GetFirst(key); value != nullptr; value = table.GetNext(key)) {
    if (!all.empty()) all += ' ';
    if (key->GetType() == Kalvo_KEY_NONE) all += '-';
    if (key->GetType() == Kalvo_KEY_NUMBER) all += '#' + std::to_string(key->GetUKey());
    if (key->GetType() == Kalvo_KEY_STRING) all += key->GetSKey();
  }
  EXPECT_EQ(key, nullptr);
  return all;
}

TEST(Table, FindsByAllFormsOfKeys) {
  Kalvo_KValueTable table;
  EXPECT_EQ(table.GetValue(5), nullptr);
  EXPECT_EQ(table.GetAt(0), nullptr);
  EXPECT_EQ(table.GetKeyAt(0), nullptr);
  table.RemoveAt(0);
  Kalvo_Value* b = table.Insert("b");
  EXPECT_EQ(table.Insert("b"), b);
  table.Set("a", "x");
  EXPECT_EQ(table.Set("a", 5L)->GetValueType(), Kalvo_VT_LONG);
  table.Set(7ul, "number");
  table.Set("7", "text");
  Kalvo_Key key;
  key.SetCaseFlag(0);
  key = "c";
  table.Insert(key)->Set(-1);
  EXPECT_TRUE(key != "C");  // the table has put its own case flag there
  EXPECT_EQ(Keys(table), "b a #7 7 c");
  EXPECT_EQ(table.GetValue(&key), table.GetValue("c"));
  EXPECT_EQ(table.GetBaseValue(&key), 0xFFFFFFFFul);
  EXPECT_EQ(table.GetBaseValue("a"), 5u);
  EXPECT_EQ(table.GetBaseValue(7ul), 0u);
  unsigned long n = 0;
  EXPECT_EQ(std::string(table.GetByteArray(7ul, &n), 6), "number");
  EXPECT_EQ(n, 6u);
  EXPECT_EQ(table.SetPtr("p", &n)->GetPtr(), &n);
  EXPECT_EQ(table.GetPtr("p"), &n);
  EXPECT_EQ(table.GetPtr("absent"), nullptr);
  EXPECT_EQ(table.GetByteArray("absent", &n), nullptr);
  EXPECT_EQ(table.GetBaseValue("absent"), 0u);
  EXPECT_EQ(table.GetTable("a"), nullptr);
  Kalvo_KValueTable* nested = table.InsertTable("a");
  nested->Set("inner", 1L);
  EXPECT_EQ(table.GetTable("a"), nested);
  EXPECT_EQ(table.InsertTable("a")->GetCount(), 0u);
  const std::string longText(70000, 'k');
  Kalvo_Value* cut = table.Insert(longText.c_str());
  EXPECT_EQ(table.GetValue((longText + "more").c_str()), cut);

  Kalvo_Key* none = nullptr;
  EXPECT_EQ(table.GetValue(none), nullptr);
  table.Remove(none);
  table.ModifyKey(0, none);
  const char* empty = nullptr;
  EXPECT_EQ(table.GetValue(empty), nullptr);
  Kalvo_Value* keyless = table.Insert(empty);
  EXPECT_EQ(table.GetValue(empty), keyless);
  table.Remove(empty);
  table.Remove("absent");
  EXPECT_EQ(table.GetCount(), 7u);
}

TEST(Table, CaseFlag) {
  Kalvo_KValueTable table;
  table.SetCaseFlag(0);
  Kalvo_Value* value = table.Insert("Abc");
  EXPECT_EQ(table.GetValue("ABC"), value);
  EXPECT_STREQ(table.GetKeyAt(0)->GetSKey(), "Abc");
  table.SetCaseFlag(1);
  EXPECT_EQ(table.GetValue("Abc"), nullptr);  // filed under another hash
  Kalvo_KValueTable copy(table);
  EXPECT_NE(copy.GetValue("Abc"), nullptr);
  table.RemoveAll();
  table.SetCaseFlag(0);
  table.Insert("q");
  table.SetCaseFlag(1);
  EXPECT_EQ(table.GetValue("q"), table.GetAt(0));  // the same hash with and without case
  EXPECT_EQ(table.GetValue("Q"), nullptr);

  // "AaaaA" with case and "aaaaa" without have two hashes that lead to one chain. There they
  // are equal, as one key without case is enough; "aaAaA" leads elsewhere.
  for (int others = 0; others < 20; others += 19) {  // in a small table, and in a larger one
    Kalvo_KValueTable mixed;
    mixed.SetCaseFlag(0);
    mixed.Insert("aaaaa");
    mixed.SetCaseFlag(1);
    for (int i = 0; i < others; ++i) mixed.Insert(std::to_string(i).c_str());
    EXPECT_EQ(mixed.GetValue("AaaaA"), mixed.GetAt(0));
    EXPECT_EQ(mixed.GetValue("aaAaA"), nullptr);
  }
}

TEST(Table, PositionsAndKeys) {
  Kalvo_KValueTable table;
  table.Set("a", 1L);
  table.InsertAt(0)->Set(2);
  EXPECT_EQ(Keys(table), "- a");
  EXPECT_EQ(table.GetAt(7), table.GetValue("a"));
  EXPECT_EQ(table.GetAt(-1), table.GetValue("a"));
  table.ModifyKey(0, "k");
  EXPECT_EQ(table.GetValue("k"), table.GetAt(0));
  table.ModifyKey(0, "a");  // which another entry has
  EXPECT_EQ(table.GetValue("a")->GetInt(), 2);
  EXPECT_EQ(table.GetValue("k"), nullptr);
  EXPECT_EQ(table.GetCount(), 2u);
  table.RemoveAt(1);  // the entry that lost its key leaves the other one's alone
  EXPECT_EQ(table.GetValue("a"), table.GetAt(0));
  table.ModifyKey(9, 7ul);
  EXPECT_EQ(table.GetValue(7ul), table.GetAt(0));
  Kalvo_Key key;
  table.ModifyKey(0, &key);  // even the empty key can be looked for then
  EXPECT_EQ(table.GetValue(&key), table.GetAt(0));
  table.RemoveAt(0);
  EXPECT_EQ(table.GetValue(&key), nullptr);
  Kalvo_Value* again = table.Insert("again");
  EXPECT_EQ(table.GetValue("again"), again);

  // Who changes a key that the table handed out does not change where it is found.
  table.GetKeyAt(0)->Set("changed", 0);
  EXPECT_EQ(table.GetValue("again"), table.GetAt(0));
  EXPECT_EQ(table.GetValue("changed"), nullptr);
  Kalvo_Key* own = table.GetKeyAt(0);
  table.ModifyKey(0, own);
  EXPECT_EQ(table.GetValue("changed"), table.GetAt(0));
  table.ModifyKey(0, own->GetSKey() + 2);
  EXPECT_EQ(Keys(table), "anged");
  table.ModifyKey(0, static_cast<const char*>(nullptr));
  EXPECT_NE(table.GetValue("anged"), nullptr);
  table.Remove(table.GetKeyAt(0));
  EXPECT_EQ(table.GetCount(), 0u);
}

TEST(Table, RemovingWithinAnIteration) {
  Kalvo_KValueTable table;
  for (const char* text : {"a", "b", "c", "d", "e"}) table.Insert(text);
  Kalvo_Key* key = nullptr;
  table.GetFirst(key);
  table.Remove(key);
  table.GetNext(key);  // the cursor was on "b" already
  EXPECT_STREQ(key->GetSKey(), "c");
  table.Remove("b");
  table.RemoveAt(0);
  EXPECT_EQ(table.GetAt(0), table.GetValue("d"));
  table.RemoveAt(1);
  EXPECT_EQ(table.GetNext(key), nullptr);
  EXPECT_EQ(table.GetNext(key), nullptr);
  EXPECT_EQ(key, nullptr);
  table.GetAt(0);
  table.RemoveAll();
  EXPECT_EQ(table.GetNext(key), nullptr);
}

TEST(Table, CopyingAndAdding) {
  Kalvo_KValueTable source;
  source.SetCaseFlag(0);
  source.Set("Text", "t");
  source.InsertTable("nested")->Set("x", 1L);
  for (int i = 0; i < 3; ++i) source.InsertAt(i)->Set(i);
  Kalvo_Key* key = nullptr;
  source.GetAt(1);
  Kalvo_KValueTable copy;
  copy.Set("old", 1L);
  copy = source;
  EXPECT_EQ(source.GetNext(key)->GetInt(), 2);  // the source's cursor stayed
  EXPECT_EQ(Keys(copy), "- Text nested");
  EXPECT_EQ(copy.GetAt(0)->GetInt(), 2);  // keyless entries are equal: the last one's value
  EXPECT_NE(copy.GetValue("TEXT"), nullptr);
  Kalvo_KValueTable added;
  added.Add(source).Add(added);
  EXPECT_EQ(added.GetCount(), 3u);
  EXPECT_EQ(added.GetValue("TEXT"), nullptr);
  EXPECT_NE(added.GetValue("Text"), nullptr);

  Kalvo_KValueTable& self = copy;
  copy = self;
  EXPECT_EQ(copy.GetCount(), 3u);
  copy.SetCaseFlag(0);
  copy.GetTable("nested")->Set("X", 2L);  // has case, unlike the table around it
  *copy.GetTable("nested") = copy;
  EXPECT_EQ(copy.GetTable("nested")->GetTable("nested")->GetCount(), 2u);
  EXPECT_EQ(copy.GetTable("nested")->GetTable("nested")->GetBaseValue("x"), 1u);
  copy = *copy.GetTable("nested")->GetTable("nested");
  EXPECT_EQ(Keys(copy), "x X");

  // Two texts that differ behind a zero byte are two when they come in, and one in a copy.
  Kalvo_Key cut;
  cut.Import("\2\1\0\3a\0b", 7);
  copy.Insert(cut)->Set(1);
  copy.Insert(cut)->Set(2);
  EXPECT_EQ(copy.GetCount(), 4u);
  source = copy;
  EXPECT_EQ(Keys(source), "x X a");
  EXPECT_EQ(source.GetValue("a")->GetInt(), 2);
}

TEST(Table, Equality) {
  Kalvo_KValueTable a, b;
  EXPECT_TRUE(a == b);
  a.Set("x", 1L);
  a.InsertTable("t")->Set(3ul, "in");
  EXPECT_FALSE(a == b);
  b = a;
  EXPECT_TRUE(a == b);
  EXPECT_TRUE(a == a);
  Kalvo_Key* key = nullptr;
  a.GetFirst(key);
  EXPECT_FALSE(a != b || a != a);
  a.GetNext(key);
  EXPECT_STREQ(key->GetSKey(), "t");
  b.GetTable("t")->Set(3ul, "other");
  EXPECT_FALSE(a == b);
  b.GetTable("t")->Set(3ul, "in");
  b.Set("x", 2L);
  EXPECT_TRUE(a != b);
  b.Insert("x")->Set(1);  // the same number of another kind
  EXPECT_TRUE(a != b);
  Kalvo_KValueTable c;
  c.InsertTable("t")->Set(3ul, "in");
  c.Set("x", 1L);
  EXPECT_TRUE(a != c);  // another order
  a.Insert("empty");
  EXPECT_TRUE(a != a);

  Kalvo_KVPair left, right;
  left.key = "k";
  right.key = "k";
  left.value.Set(1.5);
  right.value = left.value;
  EXPECT_TRUE(left == right);
  right.key = "K";
  EXPECT_TRUE(left != right);
  left.key.SetCaseFlag(0);
  left.value.Init(Kalvo_VT_TABLE);
  right.value = left.value;
  EXPECT_TRUE(left == right);
  left.value.GetValueTable()->Set("x", 1L);
  EXPECT_TRUE(left != right);
  left.value.SetPtr(&left);
  right.value = left.value;
  EXPECT_TRUE(left != right);
}

// A table against a plain list with the same rules, under random operations.
TEST(Table, BehavesLikeAList) {
  struct Entry {
    std::string key;  // "" for none
    bool found;       // under its key
    long number;
  };
  std::vector<Entry> model;
  Kalvo_KValueTable table;
  int cursor = -1;
  std::mt19937 random(20);
  const auto find = [&model](const std::string& key) {
    return std::find_if(model.begin(), model.end(),
                        [&key](const Entry& e) { return e.found && e.key == key; });
  };
  const auto removed = [&](int position) {
    model.erase(model.begin() + position);
    if (cursor > position) --cursor;
    if (cursor >= static_cast<int>(model.size())) cursor = -1;
  };
  for (int step = 0; step < 20000; ++step) {
    const std::string key = "k" + std::to_string(random() % 300);
    const int count = static_cast<int>(model.size());
    const int i = static_cast<int>(random() % 350) - 2;
    const int position = i < 0 || i >= count ? count - 1 : i;
    const auto entry = find(key);
    Kalvo_Key* given = nullptr;
    switch (random() % 9) {
      case 0:
      case 1:
        table.Set(key.c_str(), static_cast<long>(step));
        if (entry != model.end()) entry->number = step;
        if (entry == model.end()) model.push_back({key, true, step});
        break;
      case 2:
        table.Remove(key.c_str());
        if (entry != model.end()) removed(static_cast<int>(entry - model.begin()));
        break;
      case 3:
        table.InsertAt(i)->Set(static_cast<long>(step));
        model.insert(model.begin() + (i < 0 || i >= count ? count : i), {"", false, step});
        if (cursor >= 0 && i >= 0 && i <= cursor) ++cursor;
        break;
      case 4:
        table.RemoveAt(i);
        if (count > 0) removed(position);
        break;
      case 5:
        table.ModifyKey(i, key.c_str());
        if (count == 0) break;
        if (entry != model.end()) entry->found = false;
        model[static_cast<std::size_t>(position)].key = key;
        model[static_cast<std::size_t>(position)].found = true;
        break;
      case 6:
        table.GetAt(i);
        cursor = count == 0 ? -1 : position;
        break;
      case 7:
        table.GetNext(given);
        if (cursor >= 0 && ++cursor >= count) cursor = -1;
        ASSERT_EQ(given != nullptr, cursor >= 0);
        if (given != nullptr) {
          const char* text = given->GetSKey();
          ASSERT_EQ(text != nullptr ? text : "", model[static_cast<std::size_t>(cursor)].key);
        }
        break;
      default:
        ASSERT_EQ(table.GetValue(key.c_str()) != nullptr, entry != model.end());
        if (entry != model.end()) {
          ASSERT_EQ(table.GetValue(key.c_str())->GetLong(), entry->number);
        }
        break;
    }
    ASSERT_EQ(table.GetCount(), model.size());
  }
  for (std::size_t i = 0; i < model.size(); ++i) {
    EXPECT_EQ(table.GetAt(static_cast<int>(i))->GetLong(), model[i].number);
  }
}

}  // namespace
