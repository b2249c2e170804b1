// What is behind a Kalvo_Value: a kind and a payload. The kind tells how the payload is
// read; which payload there is, only the payload tells. So a value whose kind came from
// foreign bytes has no payload, whatever its kind, and none is read.
//
// Bytes are kept in a SmallBytes until somebody wants to see or to change the string that
// they are told to be. That string then stays the payload's place.

#ifndef KALVOBASE_SRC_VALUES_MP_VALUE_H_
#define KALVOBASE_SRC_VALUES_MP_VALUE_H_

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <variant>

#include "kalvobase/value.h"
#include "values/held_string.h"
#include "values/small_bytes.h"
#include "values/value_kind.h"

class FormReader;
class FormWriter;

class MP_Value {
 public:
  static MP_Value& Of(Kalvo_Value& value) { return *value.impl_; }
  static MP_Value& Of(const Kalvo_Value& value) { return *value.impl_; }

  MP_Value() = default;
  MP_Value(const MP_Value&) = delete;
  MP_Value& operator=(const MP_Value&) = delete;

  // --- Storage and conversion: mp_value.cpp -------------------------------------------

  void Reset();
  void Init(std::int32_t kind);
  void Assign(MP_Value& other);
  std::int32_t kind() const { return kind_; }

  // `T` has the width of the kind.
  template <class T>
  void SetNumber(std::int32_t kind, T v) {
    StoreNumber(kind, &v);
  }

  void SetText(std::int32_t kind, const char* p, int n);
  template <class T>
  void SetNumbers(std::int32_t kind, const T* p, int n) {
    constexpr int kWidth = sizeof(T);
    StoreBytes(kind, reinterpret_cast<const char*>(p), std::clamp(n, 0, INT_MAX / kWidth) * kWidth);
  }

  // The same from 32 bits of each of the host's longs.
  template <class HostLong>
  void SetLongs(std::int32_t kind, const HostLong* p, int n);

  void SetString(const Kalvo_String& s);
  void SetStrings(const Kalvo_StringArray& a);
  void SetTable(const Kalvo_KValueTable& t);
  void SetPointer(const void* p);

  template <class T>
  void AppendNumber(std::int32_t kind, T v) {
    AppendNumberBytes(kind, &v);
  }

  void AppendText(std::int32_t kind, const char* p, int n);
  void AppendString(const Kalvo_String& s);
  void AppendStrings(const Kalvo_StringArray& a);

  // The number in the first `width` bytes at most, 1, 2 or 4, widened with its sign.
  std::int32_t Integer(std::size_t width);
  double Real();
  float Float();
  void* Pointer();

  Kalvo_String* String();
  Kalvo_StringArray* Strings();
  Kalvo_KValueTable* Table();

  // The payload as an array, and the number of its whole elements; null if there are none.
  template <class T>
  T* Elements(unsigned long* n) {
    return static_cast<T*>(Elements(sizeof(T), n));
  }

  const char* Format(Kalvo_String* out, bool append);
  void SetReference(const Kalvo_Value* target, int index);
  void* Reference();

  // The table that this value holds, taken out of it; null if there is none.
  Kalvo_KValueTable* ReleaseTable();

  // Makes the value one with a new table.
  Kalvo_KValueTable& BecomeTable();

  // --- Computing: mp_value_arithmetic.cpp ---------------------------------------------

  enum class Operation { kAdd, kMinus, kTimes, kDivide };

  void Add(const Kalvo_Value* o);
  void Compute(Operation operation, const Kalvo_Value* o);
  void ShiftLeft(std::uint32_t n);
  void ShiftRight(std::uint32_t n);
  void And(std::uint32_t mask);
  void Or(std::uint32_t mask);
  void Xor(std::uint32_t mask);
  void Increase(std::uint32_t by);
  int Compare(const Kalvo_Value* o);

  // --- Comparing and the binary form: mp_value_form.cpp -------------------------------

  bool Equals(MP_Value& other);
  unsigned long Dump(Kalvo_String* out);
  unsigned long Import(const char* p, int n);

  // The same for all but the content of a table.
  bool EqualsBesideTable(MP_Value& other);
  void DumpBesideTable(FormWriter* out);
  void ImportBesideTable(FormReader* in);

 private:
  using Payload = std::variant<std::monostate, SmallBytes, std::unique_ptr<MP_HeldString>,
                               std::unique_ptr<Kalvo_StringArray>,
                               std::unique_ptr<Kalvo_KValueTable>, char*, Kalvo_Value*>;

  // What a value held. It is kept until the value has taken over what may be a part of it.
  struct Holdings {
    std::unique_ptr<Kalvo_StringArray> strings;
    std::unique_ptr<Kalvo_KValueTable> table;
  };

  bool HasNothing() const { return std::holds_alternative<std::monostate>(payload_); }
  char** ByteReference() { return std::get_if<char*>(&payload_); }
  MP_HeldString* Held() const;

  // The payload's bytes; no data at all, not even an empty text, if it is of another sort.
  std::string_view Bytes() const;

  // The bytes' place while there is no string.
  SmallBytes& RenewedBytes();

  // The payload as a string; null if it is of another sort.
  MP_String* BytesInString();

  Holdings TakeHoldings();
  template <class Change>
  void ChangeInteger(Change change);
  // The first number in the payload; what is not there counts as zero bytes.
  template <class T>
  T First() const;
  void StoreFirst(const void* number, int width);
  void StoreBytes(std::int32_t kind, const char* p, int n);
  void StoreNumber(std::int32_t kind, const void* number);
  void AppendNumberBytes(std::int32_t kind, const void* number);
  void* Elements(std::size_t width, unsigned long* n);

  std::int32_t kind_ = Kalvo_VT_NONE;
  Payload payload_;
};

template <class T>
T MP_Value::First() const {
  T number{};
  const std::string_view bytes = Bytes();
  if (bytes.size() >= sizeof(T)) {
    std::memcpy(&number, bytes.data(), sizeof(T));
  } else if (!bytes.empty()) {
    std::memcpy(&number, bytes.data(), bytes.size());
  }
  return number;
}

#endif  // KALVOBASE_SRC_VALUES_MP_VALUE_H_
