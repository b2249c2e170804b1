// An entry of a table: a pair whose key and value have their implementations inside it, so
// that an entry is one piece of memory, and its place in the order of entries.

#ifndef KALVOBASE_SRC_VALUES_TABLE_ENTRY_H_
#define KALVOBASE_SRC_VALUES_TABLE_ENTRY_H_

#include "kalvobase/value.h"
#include "values/mp_key.h"
#include "values/mp_value.h"

struct KeyNode;

struct MP_TableEntryBody {
  MP_Key keyBody;
  MP_Value valueBody;
};

class MP_TableEntry final : public MP_TableEntryBody, public Kalvo_KVPair {
 public:
  MP_TableEntry() : Kalvo_KVPair(keyBody, valueBody) {}
  MP_TableEntry(const MP_TableEntry&) = delete;
  MP_TableEntry& operator=(const MP_TableEntry&) = delete;

  // The handles have nothing to delete.
  ~MP_TableEntry() override {
    key.impl_ = nullptr;
    value.impl_ = nullptr;
  }

  MP_TableEntry* next = nullptr;
  MP_TableEntry* previous = nullptr;
  KeyNode* node = nullptr;  // under which it is found; null if it is found by position only
};

#endif  // KALVOBASE_SRC_VALUES_TABLE_ENTRY_H_
