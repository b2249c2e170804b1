// A key that lies elsewhere: that by which keys are compared, hashed and found. A look-up by
// text builds no key.

#ifndef KALVOBASE_SRC_VALUES_KEY_VIEW_H_
#define KALVOBASE_SRC_VALUES_KEY_VIEW_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kalvobase/value.h"
#include "text/text_bytes.h"

struct KeyView {
  static constexpr std::size_t kLongestText = 65535;

  // A text of which no more than `limit` bytes count; none for null.
  static std::string_view Counted(const char* s, std::size_t limit = kLongestText) {
    return {s, static_cast<std::size_t>(text::LengthWithin(s, static_cast<int>(limit)))};
  }

  // As the keys that Kalvo_Key::Set(s, 0) and Set(n, 0) make of a new one.
  static KeyView OfText(const char* s, std::int32_t caseFlag) {
    if (s == nullptr) return {{}, 0, Kalvo_KEY_NONE, caseFlag, false};
    return {Counted(s), 0, Kalvo_KEY_STRING, caseFlag, false};
  }
  static KeyView OfNumber(unsigned long n, std::int32_t caseFlag) {
    return {{}, static_cast<std::uint32_t>(n), Kalvo_KEY_NUMBER, caseFlag, false};
  }

  // The same key with the text up to its first zero byte, which is all of it that a copy
  // of a key takes over.
  KeyView Cut() const {
    if (!holdsZeros) return *this;
    return {text.substr(0, text.find('\0')), number, type, caseFlag, false};
  }

  std::uint32_t Hash() const {
    if (type == Kalvo_KEY_NUMBER) return number >> 4;
    return caseFlag != 0 ? text::Hash(text) : text::HashNocase(text);
  }

  std::string_view text;
  std::uint32_t number;
  std::int32_t type;
  std::int32_t caseFlag;
  bool holdsZeros;  // the text, which then came from a binary form
};

// Two texts up to their first zero bytes, A to Z as a to z.
bool EqualNocase(std::string_view a, std::string_view b);

inline bool operator==(const KeyView& a, const KeyView& b) {
  if (a.type != b.type) return false;
  if (a.type == Kalvo_KEY_NUMBER) return a.number == b.number;
  return a.caseFlag != 0 && b.caseFlag != 0 ? a.text == b.text : EqualNocase(a.text, b.text);
}

#endif  // KALVOBASE_SRC_VALUES_KEY_VIEW_H_
