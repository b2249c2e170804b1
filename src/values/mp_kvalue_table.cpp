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
MP_TableEntry* MP_KValueTable::NewEntryFor(const KeyView& key, std::uint32_t hash) {
  MP_TableEntry* entry = NewEntry(nullptr);
  try {
    entry->keyBody.Assign(key.Cut());
    entry->node = index_.Add(hash, entry);
    if (key.holdsZeros) entry->node->TakeOwnKey();  // as the entry of another such key has
  } catch (...) {
    RemoveEntry(entry);
    throw;
  }
  return entry;
}

// From the nearest of the two ends and the place where one was looked for last.
MP_TableEntry* MP_KValueTable::EntryAt(int i) {
  if (count_ == 0) return nullptr;
  const std::uint32_t last = count_ - 1;
  const std::uint32_t position = i < 0 ? last : std::min(static_cast<std::uint32_t>(i), last);
  const auto distance = [position](std::uint32_t from) {
    return from > position ? from - position : position - from;
  };
  if (known_ == nullptr || distance(knownPosition_) > std::min(position, last - position)) {
    known_ = position > last / 2 ? last_ : first_;
    knownPosition_ = position > last / 2 ? last : 0;
  }
  for (; knownPosition_ < position; ++knownPosition_) known_ = known_->next;
  for (; knownPosition_ > position; --knownPosition_) known_ = known_->previous;
  return known_;
}

Kalvo_Value* MP_KValueTable::ValueAt(int i) {
  cursor_ = EntryAt(i);
  return cursor_ != nullptr ? &cursor_->value : nullptr;
}

Kalvo_Key* MP_KValueTable::KeyAt(int i) {
  cursor_ = EntryAt(i);
  return cursor_ != nullptr ? &cursor_->key : nullptr;
}

// What an iteration gives at the cursor.
Kalvo_Value* MP_KValueTable::Pair(Kalvo_Key** key) const {
  *key = cursor_ != nullptr ? &cursor_->key : nullptr;
  return cursor_ != nullptr ? &cursor_->value : nullptr;
}

Kalvo_Value* MP_KValueTable::First(Kalvo_Key** key) {
  cursor_ = first_;
  return Pair(key);
}

Kalvo_Value* MP_KValueTable::Next(Kalvo_Key** key) {
  if (cursor_ != nullptr) cursor_ = cursor_->next;
  return Pair(key);
}

Kalvo_Value* MP_KValueTable::ValueAtLeast(int i) {
  while (count_ <= static_cast<std::uint32_t>(i)) InsertAt(-1);
  return &EntryAt(i)->value;
}

Kalvo_Value* MP_KValueTable::InsertAt(int i) {
  const bool atEnd = i < 0 || static_cast<std::uint32_t>(i) >= count_;
  MP_TableEntry* behind = atEnd ? nullptr : EntryAt(i);
  MP_TableEntry* entry = NewEntry(behind);
  entry->keyBody.SetCaseFlag(caseFlag_);
  if (!atEnd) known_ = entry;  // at the position that EntryAt found
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
  const std::uint32_t hash = key.Cut().Hash();
  KeyNode* node = index_.Find(key, hash);
  if (node != nullptr) {
    node->TakeOwnKey();
    node->entry->node = nullptr;
    node->entry = entry;
  } else {
    node = index_.Add(hash, entry);
  }
  entry->node = node;
}

void MP_KValueTable::Leave(MP_TableEntry* entry) {
  if (entry->node == nullptr) return;
  index_.Remove(entry->node);
  entry->node = nullptr;
}

void MP_KValueTable::EnterAnew(MP_TableEntry* entry) {
  Leave(entry);
  Enter(entry);
}

Kalvo_Value* MP_KValueTable::Insert(const KeyView& key) {
  const std::uint32_t hash = key.Cut().Hash();
  if (KeyNode* node = index_.Find(key, hash)) return &node->entry->value;
  return &NewEntryFor(key, hash)->value;
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
  const KeyView view = Given(key);
  if (key != &entry->key) entry->keyBody.Assign(view.Cut());
  EnterAnew(entry);
}

void MP_KValueTable::ModifyKey(int i, const char* text) {
  MP_TableEntry* entry = EntryAt(i);
  if (entry == nullptr) return;
  entry->keyBody.SetText(text, 0);
  entry->keyBody.SetCaseFlag(caseFlag_);
  EnterAnew(entry);
}

void MP_KValueTable::ModifyKey(int i, unsigned long number) {
  MP_TableEntry* entry = EntryAt(i);
  if (entry == nullptr) return;
  entry->keyBody.SetNumber(number, nullptr);
  EnterAnew(entry);
}

// --- Removing -----------------------------------------------------------------------

void MP_KValueTable::Remove(const KeyView& key) {
  if (KeyNode* node = FindNode(key)) RemoveEntry(node->entry);
}

void MP_KValueTable::RemoveAt(int i) {
  if (MP_TableEntry* entry = EntryAt(i)) RemoveEntry(entry);
}

void MP_KValueTable::RemoveEntry(MP_TableEntry* entry) {
  if (entry == cursor_) cursor_ = entry->next;
  known_ = entry == known_ ? entry->next : nullptr;  // which takes over the position
  Leave(entry);
  (entry->previous != nullptr ? entry->previous->next : first_) = entry->next;
  (entry->next != nullptr ? entry->next->previous : last_) = entry->previous;
  --count_;
  entry->~MP_TableEntry();
  entries_.Give(entry);
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
  known_ = nullptr;
  MP_TableEntry* entry = std::exchange(first_, nullptr);
  last_ = nullptr;
  count_ = 0;
  while (entry != nullptr) {
    if (Kalvo_KValueTable* table = entry->valueBody.ReleaseTable()) {
      Of(*table).nextDoomed_ = *nested;
      *nested = table;
    }
    std::exchange(entry, entry->next)->~MP_TableEntry();
  }
  entries_.GiveAll();
}

void MP_KValueTable::SwapEntries(MP_KValueTable& other) {
  std::swap(first_, other.first_);
  std::swap(last_, other.last_);
  std::swap(count_, other.count_);
  std::swap(cursor_, other.cursor_);
  std::swap(known_, other.known_);
  std::swap(knownPosition_, other.knownPosition_);
  index_.Swap(other.index_);
  entries_.Swap(other.entries_);
}
