// Base64 in blocks of memory.

#ifndef KALVOBASE_SRC_TEXT_BASE64_H_
#define KALVOBASE_SRC_TEXT_BASE64_H_

#include <cstdint>

namespace text {

// What Base64Encode writes for `n` bytes, line feeds included.
std::int64_t Base64EncodedSize(int n);

// Encodes `n` bytes, with a line feed after each 80 characters of whole groups. Returns
// the end of what it wrote.
char* Base64Encode(const char* bytes, int n, char* out);

// The most that Base64Decode writes for `n` bytes.
int Base64DecodedSize(int n);

// Decodes until a byte outside the alphabet, line ends aside. Returns the end of what it
// wrote.
char* Base64Decode(const char* text, int n, char* out);

}  // namespace text

#endif  // KALVOBASE_SRC_TEXT_BASE64_H_
