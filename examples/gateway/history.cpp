#include "history.h"

#include <fcntl.h>

#include <cstdio>

#include "machine.h"

namespace {

constexpr int kNameWidth = 14;

bool IsNumber(Kalvo_Value* value) {
  return value->GetValueType() >= Kalvo_VT_CHAR && value->GetValueType() <= Kalvo_VT_DOUBLE;
}

// The unit of the numbers below a key of a sample; null if the key has none of its own.
const char* UnitBelow(Kalvo_Key* key) {
  if (*key == "load") return " processes";
  if (*key == "memory" || *key == "network") return " MiB";
  return *key == "processors" ? " ticks" : nullptr;
}

void FormatNumber(Kalvo_Value* value, Kalvo_String* out) {
  if (value->GetValueType() == Kalvo_VT_DOUBLE) {
    out->sprintf_append("%.2f", value->GetDouble());
  } else {
    value->Format(out, 1);
  }
}

}  // namespace

bool SaveTable(Kalvo_KValueTable* table, const char* path) {
  Kalvo_String form;
  table->Dump(&form);
  const int length = static_cast<int>(form.length());
  Kalvo_FileStream file;
  if (file.Open(path, O_WRONLY | O_CREAT | O_TRUNC, 0644) < 0) return false;
  return file.Write(form.c_str(), length) == length && file.Write() > 0;
}

bool LoadTable(Kalvo_KValueTable* table, const char* path) {
  const Kalvo_String form = ReadText(path);
  const unsigned long taken = table->Import(form.c_str(), static_cast<int>(form.length()));
  return form.length() > 0 && taken == form.length();
}

void AddUp(Kalvo_KValueTable* total, Kalvo_KValueTable* sample) {
  Kalvo_Key* key = nullptr;
  for (Kalvo_Value* value = sample->GetFirst(key); value != nullptr; value = sample->GetNext(key)) {
    if (Kalvo_KValueTable* nested = value->GetValueTable()) {
      Kalvo_KValueTable* sum = total->GetTable(key);
      AddUp(sum != nullptr ? sum : total->InsertTable(*key), nested);
    } else if (IsNumber(value) && *key != "time") {
      total->Insert(*key)->Add(value);  // to an empty value at first
    }
  }
}

void DivideAll(Kalvo_KValueTable* table, long count) {
  Kalvo_Value divisor;
  divisor.Set(count);
  Kalvo_Key* key = nullptr;
  for (Kalvo_Value* value = table->GetFirst(key); value != nullptr; value = table->GetNext(key)) {
    if (Kalvo_KValueTable* nested = value->GetValueTable()) {
      DivideAll(nested, count);
    } else if (IsNumber(value)) {
      value->Divied(&divisor);
    }
  }
}

void PrintTree(Kalvo_KValueTable* table, int indent, const char* unit) {
  Kalvo_Key* key = nullptr;
  for (Kalvo_Value* value = table->GetFirst(key); value != nullptr; value = table->GetNext(key)) {
    Kalvo_String line(' ', indent);
    line.strcat(key->GetSKey());
    if (Kalvo_KValueTable* nested = value->GetValueTable()) {
      std::puts(line.c_str());
      const char* below = UnitBelow(key);
      PrintTree(nested, indent + 2, below != nullptr ? below : unit);
      continue;
    }
    line.Align('L', ' ', indent + kNameWidth);
    if (*key == "time") {
      line.Append_FormatDate(value->GetLong(), "yyyy-mm-dd hh:mi:ss");
    } else if (IsNumber(value)) {
      FormatNumber(value, &line);
      line.strcat(unit);
    } else {
      value->Format(&line, 1);
    }
    std::puts(line.c_str());
  }
}
