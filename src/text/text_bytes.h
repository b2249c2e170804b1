// Counts and comparisons of bytes that several units of the text subsystem share.

#ifndef KALVOBASE_SRC_TEXT_TEXT_BYTES_H_
#define KALVOBASE_SRC_TEXT_TEXT_BYTES_H_

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

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

// The hashes of numbers.
inline std::uint32_t Hash(std::int32_t v) { return static_cast<std::uint32_t>(v >> 4); }
inline std::uint32_t Hash(std::uint32_t v) { return v >> 4; }

// h = h * 33 + c over the bytes, each as a signed number that `fold` may change.
template <class Fold>
std::uint32_t Hash(std::string_view s, Fold fold) {
  constexpr std::uint32_t k = 33;
  const auto at = [s, fold](std::size_t i) {
    return static_cast<std::uint32_t>(fold(static_cast<signed char>(s[i])));
  };
  std::uint32_t hash = 0;
  const std::size_t n = s.size();
  std::size_t i = 0;
  for (; n - i >= 4; i += 4) {  // four steps in one, so that they need not wait for each other
    hash = hash * (k * k * k * k) +
           (at(i) * (k * k * k) + at(i + 1) * (k * k) + at(i + 2) * k + at(i + 3));
  }
  for (; i < n; ++i) hash = hash * k + at(i);
  return hash;
}

inline std::uint32_t Hash(std::string_view s) {
  return Hash(s, [](int c) { return c; });
}

inline std::uint32_t HashNocase(std::string_view s) { return Hash(s, LowerAscii); }

}  // namespace text

#endif  // KALVOBASE_SRC_TEXT_TEXT_BYTES_H_
