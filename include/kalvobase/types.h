// Fixed-width names and the export macro.
//
// Every other public header includes this one. The library's data, formats and
// arithmetic count `short` as 16 bits and `int` and `long` as 32 bits on every
// platform. The interface keeps the plain C++ types that host code is written
// with; two rules follow for hosts whose `long` has 64 bits.
//
// Of a `long` argument the low 32 bits count. A time-out of -1 or 0xFFFFFFFF, in
// whatever width, means "no limit".
//
// A 32-bit result comes back sign-extended in a `long`, and as 0 to 0xFFFFFFFF in
// an `unsigned long`.

#ifndef KALVOBASE_TYPES_H_
#define KALVOBASE_TYPES_H_

#include <climits>

#if defined(_WIN32)
#if defined(KALVOBASE_BUILDING)
#define KALVO_API __declspec(dllexport)
#elif defined(KALVOBASE_STATIC)
#define KALVO_API
#else
#define KALVO_API __declspec(dllimport)
#endif
#else
#define KALVO_API __attribute__((visibility("default")))
#endif

// The 32-bit numbers that the library stores for a `long` and an `unsigned long`.
#if LONG_MAX == 2147483647L
typedef long Kalvo_Long;
typedef unsigned long Kalvo_ULong;
#else
typedef int Kalvo_Long;
typedef unsigned int Kalvo_ULong;
#endif

#endif  // KALVOBASE_TYPES_H_
