#include "config/ini_entries.h"

#include <new>

Kalvo_String* IniEntry::Tail() {
  if (!tail) tail = std::make_unique<Kalvo_String>();
  return tail.get();
}

IniEntry* IniEntries::Append(std::string_view text) {
  void* memory = pool_.Take();
  if (memory == nullptr) throw std::bad_alloc();
  IniEntry* entry = new (memory) IniEntry;
  entry->text = text;
  entry->previous = last_;
  (last_ != nullptr ? last_->next : first_) = entry;
  last_ = entry;
  ++count_;
  return entry;
}

IniEntry* IniEntries::Set(std::string_view key, std::string_view value) {
  IniEntry* entry = Find(key);
  if (entry == nullptr) {
    entry = Append(value);
    entry->name = key;
    index_.Add(entry);
    return entry;
  }
  entry->text = value;
  entry->quote = '\0';
  entry->tail.reset();
  return entry;
}

void IniEntries::Remove(std::string_view key) {
  IniEntry* entry = Find(key);
  if (entry == nullptr) return;
  index_.Remove(entry);
  if (walk_ == entry) walk_ = entry->next;
  (entry->previous != nullptr ? entry->previous->next : first_) = entry->next;
  (entry->next != nullptr ? entry->next->previous : last_) = entry->previous;
  --count_;
  entry->~IniEntry();
  pool_.Give(entry);
}

void IniEntries::Clear() {
  index_.Clear();
  for (IniEntry* entry = first_; entry != nullptr;) {
    IniEntry* next = entry->next;
    entry->~IniEntry();
    entry = next;
  }
  pool_.GiveAll();
  first_ = last_ = nullptr;
  walk_ = nullptr;
  count_ = 0;
}

void IniEntries::CopyFrom(const IniEntries& other) {
  Clear();
  for (const IniEntry* from = other.first_; from != nullptr; from = from->next) {
    IniEntry* entry = from->IsKey() ? Set(from->name, from->text) : Append(from->text);
    entry->quote = from->quote;
    if (from->tail) *entry->Tail() = *from->tail;
  }
}
