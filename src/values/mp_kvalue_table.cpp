#include "values/mp_kvalue_table.h"

#include <algorithm>
#include <new>
#include <utility>

// --- Entries ------------------------------------------------------------------------

MP_TableEntry* MP_KValueTable::NewEntry(MP_TableEntry* behind) {
  void* memory = entries_.Take();
  if (memory == nullptr) throw std::bad_alloc();
  MP_TableEntry* entry = new (memory) MP_TableEntry;
  entry->next = behind;
  entry->previous = behind != nullptr ? behind->previous : last_;
  (entry->previous != nullptr ? entry->previous->next : first_) = entry;
  (behind != nullptr ? behind->previous : last_) = entry;
  ++count_;
  return entry;
}

// At the end, for a key that no entry is found under.
MP_TableEntry* MP_KValueTable::NewEntryFor(const KeyView& cutKey, std::uint32_t hash) {
  MP_TableEntry* entry = NewEntry(nullptr);
  entry->keyBody.Assign(cutKey);
  entry->node = index_.Add(cutKey, hash, entry);
  return entry;
}

void MP_KValueTable::DestroyEntry(MP_TableEntry* entry) {
  entry->~MP_TableEntry();
  entries_.Give(entry);
}

// From the nearest of the two ends and the cursor.
MP_TableEntry* MP_KValueTable::EntryAt(int i) const {
  if (count_ == 0) return nullptr;
  const std::uint32_t last = count_ - 1;
  const std::uint32_t position = i < 0 ? last : std::min(static_cast<std::uint32_t>(i), last);
  MP_TableEntry* entry = position > last / 2 ? last_ : first_;
  std::uint32_t from = position > last / 2 ? last : 0;
  if (cursorPosition_ != kUnknown) {
    const std::uint32_t cursor = static_cast<std::uint32_t>(cursorPosition_);
    const auto distance = [position](std::uint32_t to) {
      return to > position ? to - position : position - to;
    };
    if (distance(cursor) < distance(from)) {
      entry = cursor_;
      from = cursor;
    }
  }
  for (; from < position; ++from) entry = entry->next;
  for (; from > position; --from) entry = entry->previous;
  return entry;
}

MP_TableEntry* MP_KValueTable::MoveTo(int i) {
  cursor_ = EntryAt(i);
  const bool known = i >= 0 && static_cast<std::uint32_t>(i) < count_;
  cursorPosition_ = known ? i : static_cast<std::int32_t>(count_) - 1;
  return cursor_;
}

Kalvo_Value* MP_KValueTable::ValueAt(int i) {
  MP_TableEntry* entry = MoveTo(i);
  return entry != nullptr ? &entry->value : nullptr;
}

Kalvo_Key* MP_KValueTable::KeyAt(int i) {
  MP_TableEntry* entry = MoveTo(i);
  return entry != nullptr ? &entry->key : nullptr;
}

// What an iteration gives at the cursor.
Kalvo_Value* MP_KValueTable::Pair(Kalvo_Key** key) const {
  *key = cursor_ != nullptr ? &cursor_->key : nullptr;
  return cursor_ != nullptr ? &cursor_->value : nullptr;
}

Kalvo_Value* MP_KValueTable::First(Kalvo_Key** key) {
  cursor_ = first_;
  cursorPosition_ = first_ != nullptr ? 0 : kUnknown;
  return Pair(key);
}

Kalvo_Value* MP_KValueTable::Next(Kalvo_Key** key) {
  if (cursor_ != nullptr) cursor_ = cursor_->next;
  if (cursor_ == nullptr) {
    cursorPosition_ = kUnknown;
  } else if (cursorPosition_ != kUnknown) {
    ++cursorPosition_;
  }
  return Pair(key);
}

Kalvo_Value* MP_KValueTable::ValueAtLeast(int i) {
  while (count_ <= static_cast<std::uint32_t>(i)) InsertAt(-1);
  return &EntryAt(i)->value;
}

Kalvo_Value* MP_KValueTable::InsertAt(int i) {
  const bool atEnd = i < 0 || static_cast<std::uint32_t>(i) >= count_;
  MP_TableEntry* entry = NewEntry(atEnd ? nullptr : EntryAt(i));
  entry->keyBody.SetCaseFlag(caseFlag_);
  if (!atEnd) cursorPosition_ = kUnknown;
  return &entry->value;
}

// --- Keys ---------------------------------------------------------------------------

KeyView MP_KValueTable::Given(Kalvo_Key* key) const {
  constexpr std::int32_t kNoType = INT32_MIN;
  if (key == nullptr) return {{}, 0, kNoType, caseFlag_, false};
  MP_Key::Of(*key).SetCaseFlag(caseFlag_);
  return MP_Key::Of(*key).View();
}

KeyNode* MP_KValueTable::FindNode(const KeyView& key) { return index_.Find(key, key.Cut().Hash()); }

MP_Value* MP_KValueTable::Find(const KeyView& key) {
  KeyNode* node = FindNode(key);
  return node != nullptr ? &node->entry->valueBody : nullptr;
}

// Lets the entry be found under its key, in place of an entry that was.
void MP_KValueTable::Enter(MP_TableEntry* entry) {
  const KeyView key = entry->keyBody.View();
  const KeyView cut = key.Cut();
  const std::uint32_t hash = cut.Hash();
  KeyNode* node = index_.Find(key, hash);
  if (node != nullptr) {
    node->entry->node = nullptr;
    node->entry = entry;
  } else {
    node = index_.Add(cut, hash, entry);
  }
  entry->node = node;
}

void MP_KValueTable::Leave(MP_TableEntry* entry) {
  if (entry->node == nullptr) return;
  index_.Remove(entry->node);
  entry->node = nullptr;
}

Kalvo_Value* MP_KValueTable::Insert(const KeyView& key) {
  const KeyView cut = key.Cut();
  const std::uint32_t hash = cut.Hash();
  if (KeyNode* node = index_.Find(key, hash)) return &node->entry->value;
  return &NewEntryFor(cut, hash)->value;
}

Kalvo_KValueTable* MP_KValueTable::InsertTable(const KeyView& key) {
  return &MP_Value::Of(*Insert(key)).BecomeTable();
}

Kalvo_Value* MP_KValueTable::Set(const KeyView& key, const char* s) {
  Kalvo_Value* value = Insert(key);
  value->Set(s, -1);
  return value;
}

Kalvo_Value* MP_KValueTable::Set(const KeyView& key, long v) {
  Kalvo_Value* value = Insert(key);
  value->Set(v);
  return value;
}

Kalvo_Value* MP_KValueTable::SetPointer(const KeyView& key, void* p) {
  Kalvo_Value* value = Insert(key);
  value->SetPtr(p);
  return value;
}

Kalvo_Value* MP_KValueTable::GetValue(const KeyView& key) {
  KeyNode* node = FindNode(key);
  return node != nullptr ? &node->entry->value : nullptr;
}

Kalvo_KValueTable* MP_KValueTable::GetTable(const KeyView& key) {
  MP_Value* value = Find(key);
  return value != nullptr ? value->Table() : nullptr;
}

void* MP_KValueTable::GetPointer(const KeyView& key) {
  MP_Value* value = Find(key);
  return value != nullptr ? value->Pointer() : nullptr;
}

char* MP_KValueTable::GetBytes(const KeyView& key, unsigned long* n) {
  MP_Value* value = Find(key);
  return value != nullptr ? value->Elements<char>(n) : nullptr;
}

unsigned long MP_KValueTable::GetNumber(const KeyView& key) {
  MP_Value* value = Find(key);
  return value != nullptr ? static_cast<std::uint32_t>(value->Integer(4)) : 0;
}

void MP_KValueTable::ModifyKey(int i, Kalvo_Key* key) {
  MP_TableEntry* entry = EntryAt(i);
  if (entry == nullptr || key == nullptr) return;
  Leave(entry);
  const KeyView view = Given(key);
  if (key != &entry->key) entry->keyBody.Assign(view.Cut());
  Enter(entry);
}

void MP_KValueTable::ModifyKey(int i, const char* text) {
  MP_TableEntry* entry = EntryAt(i);
  if (entry == nullptr) return;
  Leave(entry);
  entry->keyBody.SetText(text, 0);
  entry->keyBody.SetCaseFlag(caseFlag_);
  Enter(entry);
}

void MP_KValueTable::ModifyKey(int i, unsigned long number) {
  MP_TableEntry* entry = EntryAt(i);
  if (entry == nullptr) return;
  Leave(entry);
  entry->keyBody.SetNumber(number, nullptr);
  Enter(entry);
}

// --- Removing -----------------------------------------------------------------------

void MP_KValueTable::Remove(const KeyView& key) {
  if (KeyNode* node = FindNode(key)) RemoveEntry(node->entry);
}

void MP_KValueTable::RemoveAt(int i) {
  if (MP_TableEntry* entry = EntryAt(i)) RemoveEntry(entry);
}

void MP_KValueTable::RemoveEntry(MP_TableEntry* entry) {
  if (entry == cursor_) {
    cursor_ = entry->next;  // which takes over the position
    if (cursor_ == nullptr) cursorPosition_ = kUnknown;
  } else {
    cursorPosition_ = kUnknown;
  }
  Leave(entry);
  (entry->previous != nullptr ? entry->previous->next : first_) = entry->next;
  (entry->next != nullptr ? entry->next->previous : last_) = entry->previous;
  --count_;
  DestroyEntry(entry);
}

// Tables in tables are taken out and put in a list first, so that no destructor calls
// another one for each level.
void MP_KValueTable::RemoveAll() {
  Kalvo_KValueTable* doomed = nullptr;
  RemoveEntries(&doomed);
  while (doomed != nullptr) {
    Kalvo_KValueTable* table = doomed;
    doomed = Of(*table).nextDoomed_;
    Of(*table).RemoveEntries(&doomed);
    delete table;
  }
}

void MP_KValueTable::RemoveEntries(Kalvo_KValueTable** nested) {
  index_.Clear();
  cursor_ = nullptr;
  cursorPosition_ = kUnknown;
  MP_TableEntry* entry = std::exchange(first_, nullptr);
  last_ = nullptr;
  count_ = 0;
  while (entry != nullptr) {
    if (Kalvo_KValueTable* table = entry->valueBody.ReleaseTable()) {
      Of(*table).nextDoomed_ = *nested;
      *nested = table;
    }
    DestroyEntry(std::exchange(entry, entry->next));
  }
}

void MP_KValueTable::SwapEntries(MP_KValueTable& other) {
  std::swap(first_, other.first_);
  std::swap(last_, other.last_);
  std::swap(count_, other.count_);
  std::swap(cursor_, other.cursor_);
  std::swap(cursorPosition_, other.cursorPosition_);
  index_.Swap(other.index_);
  entries_.Swap(other.entries_);
}
