// The order in which the host stores the bytes of a number.

#ifndef KALVOBASE_SRC_PLATFORM_BYTE_ORDER_H_
#define KALVOBASE_SRC_PLATFORM_BYTE_ORDER_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace platform {

constexpr bool kLeastSignificantFirst = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

// A number with its bytes in the other order.
constexpr std::uint8_t turn_bytes(std::uint8_t v) { return v; }
constexpr std::uint16_t turn_bytes(std::uint16_t v) {
  return static_cast<std::uint16_t>(v << 8 | v >> 8);
}
constexpr std::uint32_t turn_bytes(std::uint32_t v) {
  return v << 24 | (v & 0xFF00u) << 8 | (v >> 8 & 0xFF00u) | v >> 24;
}
constexpr std::uint64_t turn_bytes(std::uint64_t v) {
  return std::uint64_t{turn_bytes(static_cast<std::uint32_t>(v))} << 32 |
         turn_bytes(static_cast<std::uint32_t>(v >> 32));
}

template <class Word>
void turn_words(char* to, const char* from, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    Word word;
    std::memcpy(&word, from + i * sizeof(Word), sizeof(Word));
    word = turn_bytes(word);
    std::memcpy(to + i * sizeof(Word), &word, sizeof(Word));
  }
}

// Copies `count` numbers of `width` bytes, 1, 2, 4 or 8, each turned round if `turned`.
inline void copy_numbers(char* to, const char* from, std::size_t count, std::size_t width,
                         bool turned) {
  if (!turned || width == 1) {
    if (count != 0) std::memcpy(to, from, count * width);
  } else if (width == 2) {
    turn_words<std::uint16_t>(to, from, count);
  } else if (width == 4) {
    turn_words<std::uint32_t>(to, from, count);
  } else {
    turn_words<std::uint64_t>(to, from, count);
  }
}

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_BYTE_ORDER_H_
