#include <algorithm>
#include <string_view>
#include <type_traits>

#include "values/mp_value.h"

namespace {

// Calls `f` with a number of the type that a kind from 0 to 9 computes in.
template <class F>
void WithType(std::int32_t code, F f) {
  const ValueKind kind = KindOf(code);
  switch (kind.number) {
    case Number::kSigned:
      if (kind.width == 1) return f(std::int8_t{});
      if (kind.width == 2) return f(std::int16_t{});
      return f(std::int32_t{});
    case Number::kUnsigned:
      if (kind.width == 1) return f(std::uint8_t{});
      if (kind.width == 2) return f(std::uint16_t{});
      return f(std::uint32_t{});
    case Number::kReal:
      if (kind.width == 4) return f(float{});
      return f(double{});
    case Number::kNone:
      return;
  }
}

template <class T>
T Read(MP_Value& value) {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(value.Real());
  } else {
    return static_cast<T>(value.Integer(sizeof(T)));
  }
}

// Integers wrap at their width. The divisor is not 0.
template <class T>
T Result(MP_Value::Operation operation, T a, T b) {
  // Wide enough for every quotient, and with the wrap of an unsigned type elsewhere.
  using Wide = std::conditional_t<std::is_floating_point_v<T>, T, std::int64_t>;
  using Wrapping = std::conditional_t<std::is_floating_point_v<T>, T, std::uint32_t>;
  const Wide wideA = a;  // NOLINT(bugprone-signed-char-misuse): a number of 8 bits
  const Wide wideB = b;  // NOLINT(bugprone-signed-char-misuse)
  const Wrapping x = static_cast<Wrapping>(wideA);
  const Wrapping y = static_cast<Wrapping>(wideB);
  switch (operation) {
    case MP_Value::Operation::kAdd:
      return static_cast<T>(x + y);
    case MP_Value::Operation::kMinus:
      return static_cast<T>(x - y);
    case MP_Value::Operation::kTimes:
      return static_cast<T>(x * y);
    case MP_Value::Operation::kDivide:
      return static_cast<T>(wideA / wideB);
  }
  return a;
}

// Numbers and number arrays that can be appended to each other are of one family: those of
// a C++ type, signed or unsigned. -1 for kinds that are neither.
int Family(std::int32_t code) {
  const Shape shape = KindOf(code).shape;
  if (shape != Shape::kNumber && shape != Shape::kNumbers) return -1;
  const int number =
      shape == Shape::kNumber ? code : code - (Kalvo_VT_SHORT_ARRAY - Kalvo_VT_SHORT);
  return number < Kalvo_VT_FLOAT ? number / 2 : number;
}

int CompareReals(double a, double b) {
  constexpr double kEqualWithin = 1e-8;
  const double difference = a - b;
  return (difference > kEqualWithin) - (difference < -kEqualWithin);
}

// Up to their first zero bytes.
int CompareTexts(std::string_view a, std::string_view b) {
  const int order = a.substr(0, a.find('\0')).compare(b.substr(0, b.find('\0')));
  return (order > 0) - (order < 0);
}

int Difference(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

}  // namespace

// --- Arithmetic ---------------------------------------------------------------------

void MP_Value::Add(const Kalvo_Value* o) {
  if (o == nullptr) return;
  MP_Value& other = Of(*o);
  if (kind_ == Kalvo_VT_NONE) return Assign(other);
  switch (KindOf(kind_).shape) {
    case Shape::kText:
      other.Format(String(), true);
      break;
    case Shape::kNumbers:
      if (Family(kind_) == Family(other.kind_)) {
        BytesInString()->Append(*other.BytesInString());
      }
      break;
    case Shape::kStrings:
      if (IsText(other.kind_)) Strings()->Add(*other.String());
      if (Kalvo_StringArray* strings = other.Strings()) Strings()->Append(*strings);
      break;
    case Shape::kTable:
      if (Kalvo_KValueTable* table = other.Table()) Table()->Add(*table);
      break;
    case Shape::kNumber:
    case Shape::kNothing:
    case Shape::kPointer:
      Compute(Operation::kAdd, o);
      break;
  }
}

void MP_Value::Compute(Operation operation, const Kalvo_Value* o) {
  if (o == nullptr) return;
  MP_Value& other = Of(*o);
  if (char** byte = ByteReference()) {
    const bool isRead = operation == Operation::kAdd || other.kind_ < Kalvo_VT_CHAR_ARRAY;
    const std::int32_t operand = isRead ? other.Integer(4) : 0;
    if (operation == Operation::kDivide && (operand == 0 || other.Real() == 0)) return;
    **byte = static_cast<char>(
        Result<std::int32_t>(operation, static_cast<signed char>(**byte), operand));
    return;
  }
  const auto counts = [](std::int32_t code) { return code == Kalvo_VT_NONE || IsNumber(code); };
  if (!counts(kind_) || !counts(other.kind_)) return;
  const std::int32_t kind = std::max(kind_, other.kind_);
  WithType(kind, [&](auto zero) {
    using T = decltype(zero);
    const T operand = Read<T>(other);
    if (operation == Operation::kDivide && operand == zero) return;
    const T result = Result(operation, Read<T>(*this), operand);
    // A number of the same C++ type, signed or unsigned, keeps what was appended to it.
    if (Family(kind_) == Family(kind)) {
      StoreFirst(&result, sizeof(result));
      kind_ = kind;
    } else {
      StoreBytes(kind, reinterpret_cast<const char*>(&result), sizeof(result));
    }
  });
}

// In place: what was appended to the number stays.
void MP_Value::StoreFirst(const void* number, int width) {
  if (static_cast<int>(Bytes().size()) <= width) {
    StoreBytes(kind_, static_cast<const char*>(number), width);
  } else {
    BytesInString()->Overwrite(0, static_cast<const char*>(number), width);
  }
}

// --- Bits ---------------------------------------------------------------------------

// Puts `change` of the number, widened without its sign, in the number's place.
template <class Change>
void MP_Value::ChangeInteger(Change change) {
  if (char** byte = ByteReference()) {
    **byte = static_cast<char>(change(static_cast<unsigned char>(**byte)));
    return;
  }
  if (!IsNumber(kind_)) return;
  WithType(kind_, [&](auto zero) {
    using T = decltype(zero);
    if constexpr (std::is_integral_v<T>) {
      const std::uint32_t number = static_cast<std::make_unsigned_t<T>>(Read<T>(*this));
      const T result = static_cast<T>(change(number));
      StoreFirst(&result, sizeof(result));
    }
  });
}

void MP_Value::And(std::uint32_t mask) {
  ChangeInteger([mask](std::uint32_t v) { return v & mask; });
}

void MP_Value::Or(std::uint32_t mask) {
  ChangeInteger([mask](std::uint32_t v) { return v | mask; });
}

void MP_Value::Xor(std::uint32_t mask) {
  ChangeInteger([mask](std::uint32_t v) { return v ^ mask; });
}

void MP_Value::Increase(std::uint32_t by) {
  ChangeInteger([by](std::uint32_t v) { return v + by; });
}

void MP_Value::ShiftLeft(std::uint32_t n) {
  ChangeInteger([n](std::uint32_t v) { return v << n % 32; });
}

void MP_Value::ShiftRight(std::uint32_t n) {
  if (char** byte = ByteReference()) {
    **byte = static_cast<char>(static_cast<signed char>(**byte) >> n % 32);
  } else {
    ChangeInteger([n](std::uint32_t v) { return v >> n % 32; });
  }
}

// --- Comparing ----------------------------------------------------------------------

int MP_Value::Compare(const Kalvo_Value* o) {
  constexpr int kThisEmpty = -2;
  constexpr int kOtherEmpty = -3;
  constexpr int kNoCommonKind = -4;
  constexpr int kNoOrder = -5;

  if (o == nullptr || Of(*o).kind_ == Kalvo_VT_NONE) return kOtherEmpty;
  if (kind_ == Kalvo_VT_NONE) return kThisEmpty;
  MP_Value& other = Of(*o);
  if (IsText(kind_)) {
    return IsText(other.kind_) ? CompareTexts(Bytes(), other.Bytes()) : kNoOrder;
  }
  const bool thisIsByte = kind_ == Kalvo_VT_BYTE_REF;
  const bool otherIsByte = other.kind_ == Kalvo_VT_BYTE_REF;
  if (!thisIsByte && !IsNumber(kind_)) return kNoOrder;
  if (!otherIsByte && !IsNumber(other.kind_)) return kNoCommonKind;
  const Number mine = thisIsByte ? Number::kSigned : KindOf(kind_).number;
  const Number others = otherIsByte ? Number::kSigned : KindOf(other.kind_).number;
  if (mine == Number::kUnsigned && otherIsByte) return kNoCommonKind;
  if (mine == Number::kReal) {
    if (others == Number::kUnsigned && Real() < 0) return -1;
    return CompareReals(Real(), other.Real());
  }
  if (others == Number::kReal) return CompareReals(Integer(4), other.Real());
  const std::int32_t a = Integer(4);
  const std::int32_t b = other.Integer(4);
  // An unsigned number that reads as negative is beyond every signed one.
  if (mine == Number::kSigned && others == Number::kUnsigned && (a < 0 || b < 0)) return -1;
  if (mine == Number::kUnsigned && others == Number::kSigned && (a < 0 || b < 0)) return 1;
  return Difference(a, b);
}
