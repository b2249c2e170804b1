// What each kind of value is: one table, by which values are stored, read, computed with
// and brought into their binary form.

#ifndef KALVOBASE_SRC_VALUES_VALUE_KIND_H_
#define KALVOBASE_SRC_VALUES_VALUE_KIND_H_

#include <cstddef>
#include <cstdint>

#include "kalvobase/value.h"

enum class Shape : std::uint8_t {
  kNothing,  // no content: empty, references, and numbers that are no kind
  kNumber,   // one number of `width` bytes
  kText,     // bytes
  kNumbers,  // an array of numbers of `width` bytes
  kStrings,  // a string array
  kTable,    // a table
  kPointer   // a pointer of the host; not in the binary form
};

enum class Number : std::uint8_t { kNone, kSigned, kUnsigned, kReal };

struct ValueKind {
  Shape shape;
  std::uint8_t width;  // of an element, in bytes
  Number number;
};

inline constexpr ValueKind kValueKinds[] = {
    {Shape::kNumber, 1, Number::kSigned},             // char
    {Shape::kNumber, 1, Number::kUnsigned},           // unsigned char
    {Shape::kNumber, 2, Number::kSigned},             // short
    {Shape::kNumber, 2, Number::kUnsigned},           // unsigned short
    {Shape::kNumber, 4, Number::kSigned},             // int
    {Shape::kNumber, 4, Number::kUnsigned},           // unsigned int
    {Shape::kNumber, 4, Number::kSigned},             // long
    {Shape::kNumber, 4, Number::kUnsigned},           // unsigned long
    {Shape::kNumber, 4, Number::kReal},               // float
    {Shape::kNumber, 8, Number::kReal},               // double
    {Shape::kNothing, 0, Number::kNone},              // reference to a byte
    {Shape::kNothing, 0, Number::kNone},              // 11
    {Shape::kText, 1, Number::kNone},                 // char array
    {Shape::kText, 1, Number::kNone},                 // text
    {Shape::kText, 1, Number::kNone},                 // unsigned char array
    {Shape::kNumbers, 2, Number::kSigned},            // short array
    {Shape::kNumbers, 2, Number::kUnsigned},          // unsigned short array
    {Shape::kNumbers, 4, Number::kSigned},            // int array
    {Shape::kNumbers, 4, Number::kUnsigned},          // unsigned int array
    {Shape::kNumbers, 4, Number::kSigned},            // long array
    {Shape::kNumbers, 4, Number::kUnsigned},          // unsigned long array
    {Shape::kNumbers, 4, Number::kReal},              // float array
    {Shape::kNumbers, 8, Number::kReal},              // double array
    {Shape::kNothing, 0, Number::kNone},              // 23
    {Shape::kStrings, 0, Number::kNone},              // string array
    {Shape::kTable, 0, Number::kNone},                // table
    {Shape::kPointer, sizeof(void*), Number::kNone},  // pointer
    {Shape::kNothing, 0, Number::kNone},              // reference to a value
};

inline constexpr std::int32_t kKinds = sizeof(kValueKinds) / sizeof(kValueKinds[0]);
static_assert(kKinds == Kalvo_VT_REF + 1, "a row for each kind");

// The row of a kind; that of an empty value for a number that is no kind.
constexpr ValueKind KindOf(std::int32_t code) {
  return code >= 0 && code < kKinds ? kValueKinds[code]
                                    : ValueKind{Shape::kNothing, 0, Number::kNone};
}

constexpr bool IsNumber(std::int32_t code) { return KindOf(code).shape == Shape::kNumber; }
constexpr bool IsText(std::int32_t code) { return KindOf(code).shape == Shape::kText; }

#endif  // KALVOBASE_SRC_VALUES_VALUE_KIND_H_
