// What is behind a Kalvo_KValueTable: the entries in their order, and the index by which
// they are found.
//
// Tables hold tables to any depth. What walks through all of them, in
// mp_kvalue_table_walk.cpp and in RemoveAll, keeps its place on the heap, not on the stack.

#ifndef KALVOBASE_SRC_VALUES_MP_KVALUE_TABLE_H_
#define KALVOBASE_SRC_VALUES_MP_KVALUE_TABLE_H_

#include <cstdint>

#include "frame/block_pool.h"
#include "values/key_index.h"
#include "values/mp_key.h"
#include "values/table_entry.h"

class MP_KValueTable {
 public:
  static MP_KValueTable& Of(const Kalvo_KValueTable& table) { return *table.impl_; }

  MP_KValueTable() = default;
  MP_KValueTable(const MP_KValueTable&) = delete;
  MP_KValueTable& operator=(const MP_KValueTable&) = delete;
  ~MP_KValueTable() { RemoveAll(); }

  // --- Entries: mp_kvalue_table.cpp ---------------------------------------------------

  // The keys by which the operations below are called. A null Kalvo_Key* gives a key that
  // no entry has; any other gets the table's case flag.
  KeyView Text(const char* s) const { return KeyView::OfText(s, caseFlag_); }
  KeyView Number(unsigned long n) const { return KeyView::OfNumber(n, 1); }
  KeyView Given(Kalvo_Key* key) const;

  Kalvo_Value* Insert(const KeyView& key);
  Kalvo_KValueTable* InsertTable(const KeyView& key);
  Kalvo_Value* Set(const KeyView& key, const char* s);
  Kalvo_Value* Set(const KeyView& key, long v);
  Kalvo_Value* SetPointer(const KeyView& key, void* p);
  void Remove(const KeyView& key);

  Kalvo_Value* GetValue(const KeyView& key);
  Kalvo_KValueTable* GetTable(const KeyView& key);
  void* GetPointer(const KeyView& key);
  char* GetBytes(const KeyView& key, unsigned long* n);
  unsigned long GetNumber(const KeyView& key);

  std::uint32_t count() const { return count_; }
  Kalvo_Value* ValueAt(int i);
  Kalvo_Key* KeyAt(int i);
  Kalvo_Value* First(Kalvo_Key** key);
  Kalvo_Value* Next(Kalvo_Key** key);
  Kalvo_Value* InsertAt(int i);
  void RemoveAt(int i);
  void ModifyKey(int i, Kalvo_Key* key);
  void ModifyKey(int i, const char* text);
  void ModifyKey(int i, unsigned long number);

  // The value at `i`, 0 or more, for which the table gets as many keyless entries as it
  // takes. The cursor stays.
  Kalvo_Value* ValueAtLeast(int i);

  void SetCaseFlag(int flag) { caseFlag_ = flag; }
  void RemoveAll();

  // --- Through all levels: mp_kvalue_table_walk.cpp -------------------------------------

  // Takes over copies of all entries of `other`, which may be a part of this table.
  void Assign(const MP_KValueTable& other);
  void AssignEntries(const MP_KValueTable& other);

  bool Equals(const MP_KValueTable& other) const;

  // True if the value stands in this table or in one within it.
  bool Holds(const Kalvo_Value* value) const;

  unsigned long Dump(Kalvo_String* out) const;
  void DumpEntries(FormWriter* out) const;
  unsigned long Import(const char* p, int n);
  void ImportEntries(FormReader* in);

 private:
  MP_TableEntry* NewEntry(MP_TableEntry* behind);
  MP_TableEntry* NewEntryFor(const KeyView& key, std::uint32_t hash);
  MP_TableEntry* EntryAt(int i);
  Kalvo_Value* Pair(Kalvo_Key** key) const;
  MP_Value* Find(const KeyView& key);
  KeyNode* FindNode(const KeyView& key);
  void Enter(MP_TableEntry* entry);
  void Leave(MP_TableEntry* entry);
  void EnterAnew(MP_TableEntry* entry);
  void RemoveEntry(MP_TableEntry* entry);
  void RemoveEntries(Kalvo_KValueTable** nested);
  void TakeCopies(const MP_KValueTable& other, std::int32_t caseFlag);
  bool HasDistinctKeys(std::int32_t caseFlag) const;
  void CopyEntries(const MP_KValueTable& other);
  void SwapEntries(MP_KValueTable& other);

  MP_TableEntry* first_ = nullptr;
  MP_TableEntry* last_ = nullptr;
  std::uint32_t count_ = 0;
  std::int32_t caseFlag_ = 1;
  MP_TableEntry* cursor_ = nullptr;
  MP_TableEntry* known_ = nullptr;  // an entry whose position is known, or null
  std::uint32_t knownPosition_ = 0;
  KeyIndex index_;
  BlockPool<MP_TableEntry, 2, 128, 0> entries_;
  Kalvo_KValueTable* nextDoomed_ = nullptr;  // in the list of tables that RemoveAll destroys
};

#endif  // KALVOBASE_SRC_VALUES_MP_KVALUE_TABLE_H_
