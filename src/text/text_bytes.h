// Counts and comparisons of bytes that several units of the text subsystem share.

#ifndef KALVOBASE_SRC_TEXT_TEXT_BYTES_H_
#define KALVOBASE_SRC_TEXT_TEXT_BYTES_H_

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>

namespace text {

// The length of a text as far as a count can tell it; 0 for null.
inline int Length(const char* s) {
  return s == nullptr ? 0 : static_cast<int>(std::min<std::size_t>(std::strlen(s), INT_MAX));
}

// The length of a text of which no more than `limit` bytes may be read.
inline int LengthWithin(const char* s, int limit) {
  if (s == nullptr || limit < 1) return 0;
  const void* end = std::memchr(s, '\0', static_cast<std::size_t>(limit));
  return end == nullptr ? limit : static_cast<int>(static_cast<const char*>(end) - s);
}

// A to Z as a to z, whatever the locale.
inline int LowerAscii(int c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; }

}  // namespace text

#endif  // KALVOBASE_SRC_TEXT_TEXT_BYTES_H_
