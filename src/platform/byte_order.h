// The order in which the host stores the bytes of a number.

#ifndef KALVOBASE_SRC_PLATFORM_BYTE_ORDER_H_
#define KALVOBASE_SRC_PLATFORM_BYTE_ORDER_H_

namespace platform {

constexpr bool kLeastSignificantFirst = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_BYTE_ORDER_H_
