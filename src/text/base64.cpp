#include "text/base64.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace text {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int kBytesPerLine = 60;  // 80 characters

constexpr std::uint8_t kOutside = 64;
constexpr std::uint8_t kPadding = 99;

struct PairTable {
  char pairs[4096][2];
};

constexpr PairTable MakePairs() {
  PairTable table{};
  for (int i = 0; i < 4096; ++i) {
    table.pairs[i][0] = kAlphabet[i >> 6];
    table.pairs[i][1] = kAlphabet[i & 63];
  }
  return table;
}

struct ValueTable {
  std::uint8_t values[256];
};

constexpr ValueTable MakeValues() {
  ValueTable table{};
  for (std::uint8_t& value : table.values) value = kOutside;
  for (int i = 0; i < 64; ++i) table.values[static_cast<unsigned char>(kAlphabet[i])] = i & 63;
  table.values[static_cast<unsigned char>('=')] = kPadding;
  return table;
}

constexpr PairTable kPairs = MakePairs();
constexpr ValueTable kValues = MakeValues();

std::uint32_t Byte(char c) { return static_cast<unsigned char>(c); }

std::uint8_t Value(char c) { return kValues.values[static_cast<unsigned char>(c)]; }

char* PutGroup(std::uint32_t bits, char* out) {
  std::memcpy(out, kPairs.pairs[bits >> 12], 2);
  std::memcpy(out + 2, kPairs.pairs[bits & 0xFFF], 2);
  return out + 4;
}

char* PutDecoded(const std::uint8_t* group, char* out) {
  *out++ = static_cast<char>((group[0] << 2) | ((group[1] >> 4) & 3));
  if (group[2] == kPadding) return out;
  *out++ = static_cast<char>((group[1] << 4) | ((group[2] >> 2) & 15));
  if (group[3] == kPadding) return out;
  *out++ = static_cast<char>((group[2] << 6) | (group[3] & 63));
  return out;
}

}  // namespace

std::int64_t Base64EncodedSize(int n) { return (std::int64_t{n} + 2) / 3 * 4 + n / kBytesPerLine; }

char* Base64Encode(const char* bytes, int n, char* out) {
  const char* const end = bytes + n;
  while (end - bytes >= 3) {
    const char* const lineEnd =
        bytes + std::min<std::ptrdiff_t>(kBytesPerLine, (end - bytes) / 3 * 3);
    const bool full = lineEnd - bytes == kBytesPerLine;
    for (; bytes != lineEnd; bytes += 3) {
      out = PutGroup(Byte(bytes[0]) << 16 | Byte(bytes[1]) << 8 | Byte(bytes[2]), out);
    }
    if (full) *out++ = '\n';
  }
  if (end - bytes == 2) {
    out = PutGroup(Byte(bytes[0]) << 16 | Byte(bytes[1]) << 8, out);
    out[-1] = '=';
  } else if (end - bytes == 1) {
    out = PutGroup(Byte(bytes[0]) << 16, out);
    out[-1] = out[-2] = '=';
  }
  return out;
}

int Base64DecodedSize(int n) { return n / 4 * 3; }

char* Base64Decode(const char* text, int n, char* out) {
  const char* const end = text + n;
  std::uint8_t group[4];
  int filled = 0;
  while (text != end) {
    // Whole groups of letters, the bulk of any text.
    while (filled == 0 && end - text >= 4) {
      const std::uint32_t a = Value(text[0]);
      const std::uint32_t b = Value(text[1]);
      const std::uint32_t c = Value(text[2]);
      const std::uint32_t d = Value(text[3]);
      if ((a | b | c | d) >= kOutside) break;
      const std::uint32_t bits = a << 18 | b << 12 | c << 6 | d;
      out[0] = static_cast<char>(bits >> 16);
      out[1] = static_cast<char>(bits >> 8);
      out[2] = static_cast<char>(bits);
      out += 3;
      text += 4;
    }
    if (text == end) break;
    const char c = *text++;
    if (c == '\r' || c == '\n') {
      filled = 0;
      continue;
    }
    group[filled] = Value(c);
    if (group[filled] == kOutside) break;
    if (++filled == 4) {
      out = PutDecoded(group, out);
      filled = 0;
    }
  }
  return out;
}

}  // namespace text
