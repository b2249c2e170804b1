// The order in which the host stores the bytes of a number.

#ifndef KALVOBASE_SRC_PLATFORM_BYTE_ORDER_H_
#define KALVOBASE_SRC_PLATFORM_BYTE_ORDER_H_

#include <cstdint>

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

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_BYTE_ORDER_H_
