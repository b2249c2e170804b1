// What is behind a Kalvo_Key.

#ifndef KALVOBASE_SRC_VALUES_MP_KEY_H_
#define KALVOBASE_SRC_VALUES_MP_KEY_H_

#include <cstdint>

#include "kalvobase/value.h"
#include "values/key_view.h"
#include "values/small_bytes.h"

class FormReader;
class FormWriter;
struct KeyNode;

// The key of a table's entry is read by the node of the index under which the entry is found,
// until it changes: then the node gets a copy of what it was.
class MP_Key {
 public:
  static MP_Key& Of(Kalvo_Key& key) { return *key.impl_; }
  static const MP_Key& Of(const Kalvo_Key& key) { return *key.impl_; }

  MP_Key() = default;
  explicit MP_Key(const KeyView& view)
      : text_(view.text),
        number_(view.number),
        type_(view.type),
        caseFlag_(view.caseFlag),
        holdsZeros_(view.holdsZeros) {}

  void Clear();
  void SetText(const char* s, int n);
  void SetNumber(unsigned long v, const char* label);
  void Assign(const KeyView& view);
  void SetCaseFlag(int flag) {
    if (flag == caseFlag_) return;
    BeforeChange();
    caseFlag_ = flag;
  }
  void SetReader(KeyNode* node) { reader_ = node; }

  std::int32_t type() const { return type_; }
  std::uint32_t number() const { return number_; }
  const char* NumberAndText(unsigned long* number) const;
  const char* Text() const { return type_ == Kalvo_KEY_NONE ? nullptr : text_.data(); }
  bool HasText(const char* s) const;
  KeyView View() const { return {text_.view(), number_, type_, caseFlag_, holdsZeros_}; }

  unsigned long Dump(Kalvo_String* out) const;
  void Dump(FormWriter* out) const;
  unsigned long Import(const char* p, int n);
  void Import(FormReader* in);

 private:
  void BeforeChange() {
    if (reader_ != nullptr) KeepForReader();
  }
  void KeepForReader();

  SmallBytes text_;
  std::uint32_t number_ = 0;
  std::int32_t type_ = Kalvo_KEY_NONE;
  std::int32_t caseFlag_ = 1;
  bool holdsZeros_ = false;
  KeyNode* reader_ = nullptr;
};

#endif  // KALVOBASE_SRC_VALUES_MP_KEY_H_
