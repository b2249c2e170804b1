#include <cstdint>
#include <vector>

#include "values/binary_form.h"
#include "values/mp_kvalue_table.h"

// --- Copying ------------------------------------------------------------------------

void MP_KValueTable::Assign(const MP_KValueTable& other) {
  if (this != &other) TakeCopies(other, other.caseFlag_);
}

void MP_KValueTable::AssignEntries(const MP_KValueTable& other) {
  if (this != &other) TakeCopies(other, caseFlag_);
}

// Nothing changes until all has been copied: either table may be a part of the other one.
void MP_KValueTable::TakeCopies(const MP_KValueTable& other, std::int32_t caseFlag) {
  MP_KValueTable copy;
  copy.caseFlag_ = caseFlag;
  copy.CopyEntries(other);
  caseFlag_ = caseFlag;
  SwapEntries(copy);
}

// True if no two entries have equal keys for a table with this case flag. That is so if each is
// found under the very key that it has, which two with cut keys are not.
bool MP_KValueTable::HasDistinctKeys(std::int32_t caseFlag) const {
  for (const MP_TableEntry* entry = first_; entry != nullptr; entry = entry->next) {
    const KeyNode* node = entry->node;
    if (node == nullptr || node->own != nullptr) return false;
    const bool isNumber = entry->keyBody.type() == Kalvo_KEY_NUMBER;
    if (!isNumber && node->ignoresCase != (caseFlag == 0)) return false;
  }
  return true;
}

// Keys that are known to be distinct are not looked for, and have the hashes that they had.
void MP_KValueTable::CopyEntries(const MP_KValueTable& other) {
  struct Level {
    MP_KValueTable* to;
    MP_TableEntry* rest;  // what is still to be copied
    bool distinct;
  };
  std::vector<Level> levels = {{this, other.first_, other.HasDistinctKeys(caseFlag_)}};
  while (!levels.empty()) {
    const auto [to, from, distinct] = levels.back();
    if (from == nullptr) {
      levels.pop_back();
      continue;
    }
    levels.back().rest = from->next;
    KeyView key = from->keyBody.View();
    key.caseFlag = to->caseFlag_;
    MP_Value& value = distinct ? to->NewEntryFor(key, from->node->hash)->valueBody
                               : MP_Value::Of(*to->Insert(key));
    if (Kalvo_KValueTable* table = from->valueBody.Table()) {
      const MP_KValueTable& source = Of(*table);
      MP_KValueTable& nested = Of(value.BecomeTable());
      nested.caseFlag_ = source.caseFlag_;
      levels.push_back({&nested, source.first_, source.HasDistinctKeys(source.caseFlag_)});
    } else {
      value.Assign(from->valueBody);
    }
  }
}

// --- Comparing ----------------------------------------------------------------------

bool MP_KValueTable::Equals(const MP_KValueTable& other) const {
  struct Level {
    MP_TableEntry* a;  // what is still to be compared
    MP_TableEntry* b;
  };
  if (count_ != other.count_) return false;
  std::vector<Level> levels = {{first_, other.first_}};
  while (!levels.empty()) {
    const auto [a, b] = levels.back();
    if (a == nullptr) {
      levels.pop_back();
      continue;
    }
    levels.back() = {a->next, b->next};
    if (!(a->keyBody.View() == b->keyBody.View())) return false;
    if (!a->valueBody.EqualsBesideTable(b->valueBody)) return false;
    if (Kalvo_KValueTable* table = a->valueBody.Table()) {
      const MP_KValueTable& nestedA = Of(*table);
      const MP_KValueTable& nestedB = Of(*b->valueBody.Table());
      if (nestedA.count_ != nestedB.count_) return false;
      levels.push_back({nestedA.first_, nestedB.first_});
    }
  }
  return true;
}

bool MP_KValueTable::Holds(const Kalvo_Value* value) const {
  std::vector<MP_TableEntry*> rests = {first_};  // of each level what is still to be looked at
  while (!rests.empty()) {
    MP_TableEntry* entry = rests.back();
    if (entry == nullptr) {
      rests.pop_back();
      continue;
    }
    if (&entry->value == value) return true;
    rests.back() = entry->next;
    if (Kalvo_KValueTable* table = entry->valueBody.Table()) rests.push_back(Of(*table).first_);
  }
  return false;
}

// --- The binary form: the count, then each entry's key and value ------------------------

unsigned long MP_KValueTable::Dump(Kalvo_String* out) const {
  return DumpForm(out, [this](FormWriter* writer) { DumpEntries(writer); });
}

void MP_KValueTable::DumpEntries(FormWriter* out) const {
  constexpr std::uint32_t kMostEntries = 65535;
  std::vector<MP_TableEntry*> rests;  // of each level what is still to be dumped
  const auto begin = [out, &rests](const MP_KValueTable& table) {
    if (table.count_ > kMostEntries) out->Fail();
    if (char* place = out->Room(2)) out->Number(place, static_cast<std::uint16_t>(table.count_));
    rests.push_back(table.first_);
  };
  begin(*this);
  while (!rests.empty() && !out->failed()) {
    MP_TableEntry* entry = rests.back();
    if (entry == nullptr) {
      rests.pop_back();
      continue;
    }
    rests.back() = entry->next;
    entry->keyBody.Dump(out);
    entry->valueBody.DumpBesideTable(out);
    if (Kalvo_KValueTable* table = entry->valueBody.Table()) begin(Of(*table));
  }
}

// The bytes may be a part of what this table holds.
unsigned long MP_KValueTable::Import(const char* p, int n) {
  MP_KValueTable fresh;
  const unsigned long taken =
      ImportForm(p, n, [&fresh](FormReader* in) { fresh.ImportEntries(in); });
  SwapEntries(fresh);
  return taken;
}

// Expects an empty table.
void MP_KValueTable::ImportEntries(FormReader* in) {
  struct Level {
    MP_KValueTable* table;
    std::uint32_t left;  // entries that are still to be read
  };
  std::vector<Level> levels;
  const auto begin = [in, &levels](MP_KValueTable& table) {
    if (in->Need(2)) levels.push_back({&table, in->Number<std::uint16_t>()});
  };
  begin(*this);
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.left == 0 || in->AtEnd()) {
      levels.pop_back();
      continue;
    }
    --level.left;
    MP_KValueTable& table = *level.table;
    MP_TableEntry* entry = table.NewEntry(nullptr);
    entry->keyBody.Import(in);
    table.Enter(entry);
    entry->valueBody.ImportBesideTable(in);
    if (Kalvo_KValueTable* nested = entry->valueBody.Table()) begin(Of(*nested));
  }
}
