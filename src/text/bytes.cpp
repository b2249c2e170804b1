// Byte order and hash functions.

#include "kalvobase/bytes.h"

#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/byte_order.h"
#include "text/text_bytes.h"

namespace {

// Numbers travel as 16, 32 and 64 bits, whatever the width of a long.
template <class Wire, class T>
unsigned long Store(char* dst, T value) {
  const Wire wire = static_cast<Wire>(value);
  char bytes[sizeof(Wire)];
  std::memcpy(bytes, &wire, sizeof(wire));
  stNB_Put(dst, bytes, sizeof(wire));
  return sizeof(wire);
}

template <class Wire, class T>
unsigned long Load(const char* src, T& value) {
  Wire wire;
  char bytes[sizeof(Wire)];
  stNB_Put(bytes, src, sizeof(wire));
  if constexpr (sizeof(T) == sizeof(Wire)) {
    std::memcpy(&value, bytes, sizeof(value));  // every bit pattern, of any NaN too
  } else {
    std::memcpy(&wire, bytes, sizeof(wire));
    value = wire;
  }
  return sizeof(wire);
}

std::string_view View(const char* s) { return s != nullptr ? s : std::string_view(); }

}  // namespace

void stNB_Put(char* dst, const char* src, unsigned long n) {
  if (n == 0) return;
  if (!platform::kLeastSignificantFirst) {
    std::memcpy(dst, src, n);
    return;
  }
  for (unsigned long i = 0; i < n; ++i) dst[i] = src[n - 1 - i];
}

unsigned long NB_ToBuf(char* dst, short v) { return Store<std::int16_t>(dst, v); }
unsigned long NB_ToBuf(char* dst, unsigned short v) { return Store<std::uint16_t>(dst, v); }
unsigned long NB_ToBuf(char* dst, int v) { return Store<std::int32_t>(dst, v); }
unsigned long NB_ToBuf(char* dst, unsigned int v) { return Store<std::uint32_t>(dst, v); }
unsigned long NB_ToBuf(char* dst, long v) { return Store<std::int32_t>(dst, v); }
unsigned long NB_ToBuf(char* dst, unsigned long v) { return Store<std::uint32_t>(dst, v); }
unsigned long NB_ToBuf(char* dst, float v) { return Store<float>(dst, v); }
unsigned long NB_ToBuf(char* dst, double v) { return Store<double>(dst, v); }

unsigned long NB_ToValue(const char* src, short& v) { return Load<std::int16_t>(src, v); }
unsigned long NB_ToValue(const char* src, unsigned short& v) { return Load<std::uint16_t>(src, v); }
unsigned long NB_ToValue(const char* src, int& v) { return Load<std::int32_t>(src, v); }
unsigned long NB_ToValue(const char* src, unsigned int& v) { return Load<std::uint32_t>(src, v); }
unsigned long NB_ToValue(const char* src, long& v) { return Load<std::int32_t>(src, v); }
unsigned long NB_ToValue(const char* src, unsigned long& v) { return Load<std::uint32_t>(src, v); }
unsigned long NB_ToValue(const char* src, float& v) { return Load<float>(src, v); }
unsigned long NB_ToValue(const char* src, double& v) { return Load<double>(src, v); }

unsigned long Kalvo_HashKey(short v) { return text::Hash(std::int32_t{v}); }
unsigned long Kalvo_HashKey(unsigned short v) { return text::Hash(std::uint32_t{v}); }
unsigned long Kalvo_HashKey(int v) { return text::Hash(static_cast<std::int32_t>(v)); }
unsigned long Kalvo_HashKey(unsigned int v) { return text::Hash(static_cast<std::uint32_t>(v)); }
unsigned long Kalvo_HashKey(long v) { return text::Hash(static_cast<std::int32_t>(v)); }
unsigned long Kalvo_HashKey(unsigned long v) { return text::Hash(static_cast<std::uint32_t>(v)); }

unsigned long Kalvo_HashKey(const char* s) { return text::Hash(View(s)); }

unsigned long Kalvo_HashKeyNocase(const char* s) { return text::HashNocase(View(s)); }
