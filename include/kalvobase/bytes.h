// Network byte order and the hash functions of keys.
//
//   char buffer[4];
//   NB_ToBuf(buffer, 0x12345678);  // 12 34 56 78
//   int value;
//   NB_ToValue(buffer, value);  // 0x12345678 again
//
// All of these may be called from any thread. Buffers are the caller's and must have
// room for the bytes told.

#ifndef KALVOBASE_BYTES_H_
#define KALVOBASE_BYTES_H_

#include "kalvobase/types.h"

// Copies `n` bytes, turned round on a host that stores the least significant byte
// first and straight on any other. The two areas must not overlap.
KALVO_API void stNB_Put(char* dst, const char* src, unsigned long n);

// Stores a number most significant byte first and returns the bytes stored: 2 for
// the short kinds, 8 for double, 4 for the others. A `float` or `double` is its
// IEEE 754 bit pattern; of a `long` the low 32 bits are stored.
KALVO_API unsigned long NB_ToBuf(char* dst, short v);
KALVO_API unsigned long NB_ToBuf(char* dst, unsigned short v);
KALVO_API unsigned long NB_ToBuf(char* dst, int v);
KALVO_API unsigned long NB_ToBuf(char* dst, unsigned int v);
KALVO_API unsigned long NB_ToBuf(char* dst, long v);
KALVO_API unsigned long NB_ToBuf(char* dst, unsigned long v);
KALVO_API unsigned long NB_ToBuf(char* dst, float v);
KALVO_API unsigned long NB_ToBuf(char* dst, double v);

// Reads a number that NB_ToBuf stored and returns the bytes read.
KALVO_API unsigned long NB_ToValue(const char* src, short& v);
KALVO_API unsigned long NB_ToValue(const char* src, unsigned short& v);
KALVO_API unsigned long NB_ToValue(const char* src, int& v);
KALVO_API unsigned long NB_ToValue(const char* src, unsigned int& v);
KALVO_API unsigned long NB_ToValue(const char* src, long& v);
KALVO_API unsigned long NB_ToValue(const char* src, unsigned long& v);
KALVO_API unsigned long NB_ToValue(const char* src, float& v);
KALVO_API unsigned long NB_ToValue(const char* src, double& v);

// Hashes, 0 to 0xFFFFFFFF. Numbers are shifted right by 4 bits: signed ones keep
// their sign, so a negative number fills up with ones.
KALVO_API unsigned long Kalvo_HashKey(short v);
KALVO_API unsigned long Kalvo_HashKey(unsigned short v);
KALVO_API unsigned long Kalvo_HashKey(int v);
KALVO_API unsigned long Kalvo_HashKey(unsigned int v);
KALVO_API unsigned long Kalvo_HashKey(long v);
KALVO_API unsigned long Kalvo_HashKey(unsigned long v);

// A text's hash: h = h * 33 + c over its bytes, each counted as a signed number.
// Null and the empty text give 0.
KALVO_API unsigned long Kalvo_HashKey(const char* s);

// The same with A to Z counted as a to z. A Kalvo_Key has its own Kalvo_HashKey, in value.h.
KALVO_API unsigned long Kalvo_HashKeyNocase(const char* s);

#endif  // KALVOBASE_BYTES_H_
