// The lines of a section: keys with their values, and comments, in the order of the file.

#ifndef KALVOBASE_SRC_CONFIG_INI_ENTRIES_H_
#define KALVOBASE_SRC_CONFIG_INI_ENTRIES_H_

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "config/name_index.h"
#include "frame/block_pool.h"
#include "kalvobase/text.h"

struct IniEntry {
  bool IsKey() const { return !name.empty(); }

  // The tail comment, for the caller to change; made when it is first asked for.
  Kalvo_String* Tail();

  std::string name;  // empty for a comment
  std::string text;  // the value without its quotes, or the whole comment
  char quote = '\0';
  std::unique_ptr<Kalvo_String> tail;  // null while there is none
  std::size_t hash = 0;
  IniEntry* next = nullptr;
  IniEntry* previous = nullptr;
};

class IniEntries {
 public:
  IniEntries() = default;
  IniEntries(const IniEntries&) = delete;
  IniEntries& operator=(const IniEntries&) = delete;
  ~IniEntries() { Clear(); }

  int count() const { return count_; }
  IniEntry* first() const { return first_; }

  // Null if there is no such key.
  IniEntry* Find(std::string_view key) const { return index_.Find(key); }

  // Gives a key a value, with neither quote nor tail comment: in its place, or at the end. The
  // key must not be empty.
  IniEntry* Set(std::string_view key, std::string_view value);

  void AddComment(std::string_view line) { Append(line); }

  void Remove(std::string_view key);
  void Clear();
  void CopyFrom(const IniEntries& other);

  // The one walk through the entries. These step and give the entry, or null behind the last.
  // Removing the entry that the walk is at moves it to the next.
  const IniEntry* StepToFirst() { return walk_ = first_; }
  const IniEntry* StepToNext() { return walk_ = walk_ != nullptr ? walk_->next : nullptr; }

 private:
  IniEntry* Append(std::string_view text);

  IniEntry* first_ = nullptr;
  IniEntry* last_ = nullptr;
  const IniEntry* walk_ = nullptr;
  int count_ = 0;
  NameIndex<IniEntry> index_;
  BlockPool<IniEntry, 2, 64, 0> pool_;
};

#endif  // KALVOBASE_SRC_CONFIG_INI_ENTRIES_H_
