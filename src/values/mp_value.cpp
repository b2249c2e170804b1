#include "values/mp_value.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "text/text_bytes.h"
#include "values/mp_kvalue_table.h"

namespace {

constexpr int kMostBytes = INT_MAX - 1;  // as many as a string can hold

// A string stores what it has memory for; a value stores all or throws.
void RequireLength(const MP_String& string, std::size_t length) {
  if (static_cast<std::size_t>(string.Length()) != length) throw std::bad_alloc();
}

}  // namespace

// --- Payload ------------------------------------------------------------------------

MP_HeldString* MP_Value::Held() const {
  auto* held = std::get_if<std::unique_ptr<MP_HeldString>>(&payload_);
  return held != nullptr ? held->get() : nullptr;
}

std::string_view MP_Value::Bytes() const {
  if (const SmallBytes* small = std::get_if<SmallBytes>(&payload_)) return small->view();
  MP_HeldString* held = Held();
  if (held == nullptr) return {};
  return {held->body().Content(), static_cast<std::size_t>(held->body().Length())};
}

MP_String* MP_Value::BytesInString() {
  if (const SmallBytes* small = std::get_if<SmallBytes>(&payload_)) {
    const std::string_view bytes = small->view();
    auto held = std::make_unique<MP_HeldString>();
    held->body().Append(bytes.data(), static_cast<int>(bytes.size()));
    RequireLength(held->body(), bytes.size());
    payload_ = std::move(held);
  }
  MP_HeldString* held = Held();
  return held != nullptr ? &held->body() : nullptr;
}

MP_Value::Holdings MP_Value::TakeHoldings() {
  Holdings held;
  if (auto* strings = std::get_if<std::unique_ptr<Kalvo_StringArray>>(&payload_)) {
    held.strings = std::move(*strings);
    Reset();
  } else if (auto* table = std::get_if<std::unique_ptr<Kalvo_KValueTable>>(&payload_)) {
    held.table = std::move(*table);
    Reset();
  }
  return held;
}

// The bytes may be a part of what this value holds.
void MP_Value::StoreBytes(std::int32_t kind, const char* p, int n) {
  const std::size_t length =
      p != nullptr ? static_cast<std::size_t>(std::clamp(n, 0, kMostBytes)) : 0;
  if (MP_HeldString* held = Held()) {
    const bool isOwn = p != nullptr && held->body().OffsetOf(p) >= 0;  // there is room for it
    held->body().Assign(p, static_cast<int>(length));
    if (!isOwn) RequireLength(held->body(), length);
  } else if (SmallBytes* small = std::get_if<SmallBytes>(&payload_)) {
    small->Assign({p, length});
  } else if (HasNothing() && length <= SmallBytes::kRoom) {
    payload_.emplace<SmallBytes>().Assign({p, length});
  } else {
    SmallBytes fresh({p, length});
    const Holdings holdings = TakeHoldings();
    payload_.emplace<SmallBytes>().Swap(fresh);
  }
  kind_ = kind;
}

SmallBytes& MP_Value::RenewedBytes() {
  SmallBytes* small = std::get_if<SmallBytes>(&payload_);
  return small != nullptr ? *small : payload_.emplace<SmallBytes>();
}

void MP_Value::Reset() {
  kind_ = Kalvo_VT_NONE;
  payload_.emplace<std::monostate>();
}

void MP_Value::Init(std::int32_t kind) {
  switch (KindOf(kind).shape) {
    case Shape::kNumber:
    case Shape::kText:
    case Shape::kNumbers:
      payload_.emplace<SmallBytes>();
      break;
    case Shape::kStrings:
      payload_ = std::make_unique<Kalvo_StringArray>();
      break;
    case Shape::kTable:
      payload_ = std::make_unique<Kalvo_KValueTable>();
      break;
    case Shape::kNothing:
    case Shape::kPointer:
      Reset();
      return;
  }
  kind_ = kind;
}

// The other value may be a part of what this one holds.
void MP_Value::Assign(MP_Value& other) {
  if (this == &other) return;
  const std::int32_t kind = other.kind_;
  if (const std::string_view bytes = other.Bytes(); bytes.data() != nullptr) {
    StoreBytes(kind, bytes.data(), static_cast<int>(bytes.size()));
  } else if (Kalvo_StringArray* strings = other.Strings()) {
    SetStrings(*strings);
  } else if (Kalvo_KValueTable* table = other.Table()) {
    SetTable(*table);
  } else if (char** byte = other.ByteReference()) {
    StoreBytes(Kalvo_VT_CHAR, *byte, 1);
  } else {
    Reset();
    kind_ = kind;
  }
}

Kalvo_KValueTable* MP_Value::ReleaseTable() { return TakeHoldings().table.release(); }

Kalvo_KValueTable& MP_Value::BecomeTable() {
  Init(Kalvo_VT_TABLE);
  return *Table();
}

// --- Setting ------------------------------------------------------------------------

void MP_Value::StoreNumber(std::int32_t kind, const void* number) {
  const int width = KindOf(kind).width;
  if (char** byte = ByteReference()) {
    if (width == 1) **byte = *static_cast<const char*>(number);
    return;
  }
  StoreBytes(kind, static_cast<const char*>(number), width);
}

void MP_Value::SetText(std::int32_t kind, const char* p, int n) {
  StoreBytes(kind, p, n < 0 ? text::Length(p) : n);
}

template <class HostLong>
void MP_Value::SetLongs(std::int32_t kind, const HostLong* p, int n) {
  if constexpr (sizeof(HostLong) == sizeof(std::int32_t)) {
    SetNumbers(kind, p, n);
  } else {
    const int count = p != nullptr ? std::clamp(n, 0, kMostBytes / 4) : 0;
    const std::vector<std::int32_t> narrowed(p, p + count);
    SetNumbers(kind, narrowed.data(), count);
  }
}

template void MP_Value::SetLongs(std::int32_t, const long*, int);
template void MP_Value::SetLongs(std::int32_t, const unsigned long*, int);

void MP_Value::SetString(const Kalvo_String& s) {
  StoreBytes(Kalvo_VT_STRING, s.c_str(), static_cast<int>(s.length()));
}

void MP_Value::SetStrings(const Kalvo_StringArray& a) {
  if (Kalvo_StringArray* strings = Strings()) {
    *strings = a;
    return;
  }
  auto copy = std::make_unique<Kalvo_StringArray>(a);
  Reset();
  payload_ = std::move(copy);
  kind_ = Kalvo_VT_STRING_ARRAY;
}

void MP_Value::SetTable(const Kalvo_KValueTable& t) {
  if (Kalvo_KValueTable* table = Table()) {
    *table = t;
    return;
  }
  auto copy = std::make_unique<Kalvo_KValueTable>(t);
  Reset();
  payload_ = std::move(copy);
  kind_ = Kalvo_VT_TABLE;
}

void MP_Value::SetPointer(const void* p) {
  if (ByteReference() != nullptr) return;
  StoreBytes(Kalvo_VT_PTR, reinterpret_cast<const char*>(&p), sizeof(p));
}

// --- Appending ----------------------------------------------------------------------

// Numbers go behind numbers of their width, though an int does not go behind a long.
void MP_Value::AppendNumberBytes(std::int32_t kind, const void* number) {
  if (HasNothing()) return StoreNumber(kind, number);
  const ValueKind from = KindOf(kind);
  const ValueKind to = KindOf(kind_);
  const bool fits = to.shape == Shape::kNumber && to.width == from.width &&
                    (to.number == Number::kReal) == (from.number == Number::kReal);
  const bool intToLong = kind_ == Kalvo_VT_LONG && kind <= Kalvo_VT_UINT;
  if (fits && !intToLong) BytesInString()->Append(static_cast<const char*>(number), from.width);
}

void MP_Value::AppendText(std::int32_t kind, const char* p, int n) {
  if (MP_String* bytes = BytesInString()) {
    bytes->WriteBlock(p, n);
  } else if (Kalvo_StringArray* strings = Strings()) {
    strings->Add(p, n);
  } else if (HasNothing()) {
    SetText(kind, p, n);
  }
}

void MP_Value::AppendString(const Kalvo_String& s) {
  if (Kalvo_StringArray* strings = Strings()) {
    strings->Add(s);
  } else if (HasNothing() || Table() != nullptr) {
    SetString(s);
  } else if (MP_String* bytes = BytesInString()) {
    bytes->Append(s.c_str(), static_cast<int>(s.length()));
    kind_ = Kalvo_VT_STRING;
  }
}

void MP_Value::AppendStrings(const Kalvo_StringArray& a) {
  if (HasNothing()) return SetStrings(a);
  if (Kalvo_StringArray* strings = Strings()) {
    strings->Append(a);
  } else if (IsText(kind_)) {
    auto all = std::make_unique<Kalvo_StringArray>();
    all->Add(*String());
    all->Append(a);
    Reset();
    payload_ = std::move(all);
    kind_ = Kalvo_VT_STRING_ARRAY;
  }
}

// --- Reading ------------------------------------------------------------------------

std::int32_t MP_Value::Integer(std::size_t width) {
  if (char** byte = ByteReference()) return static_cast<signed char>(**byte);
  const ValueKind kind = KindOf(kind_);
  if (kind.shape != Shape::kNumber && kind.shape != Shape::kPointer) return 0;
  width = std::min<std::size_t>(width, kind.width);
  if (width == 1) return First<std::int8_t>();
  if (width == 2) return First<std::int16_t>();
  return First<std::int32_t>();
}

// A float with all its bits.
float MP_Value::Float() {
  return kind_ == Kalvo_VT_FLOAT ? First<float>() : static_cast<float>(Real());
}

double MP_Value::Real() {
  const ValueKind kind = KindOf(kind_);
  if (kind.shape == Shape::kPointer) return 0;
  if (kind.shape != Shape::kNumber || kind.number != Number::kReal) return Integer(4);
  return kind.width == 4 ? double{First<float>()} : First<double>();
}

void* MP_Value::Pointer() {
  if (kind_ == Kalvo_VT_PTR) return First<void*>();
  const std::uintptr_t number = static_cast<std::uint32_t>(Integer(4));
  void* pointer;
  std::memcpy(&pointer, &number, sizeof(pointer));
  return pointer;
}

Kalvo_String* MP_Value::String() {
  if (Kalvo_StringArray* strings = Strings()) return strings->GetAt(0);
  BytesInString();
  return Held();
}

Kalvo_StringArray* MP_Value::Strings() {
  auto* strings = std::get_if<std::unique_ptr<Kalvo_StringArray>>(&payload_);
  return strings != nullptr ? strings->get() : nullptr;
}

Kalvo_KValueTable* MP_Value::Table() {
  auto* table = std::get_if<std::unique_ptr<Kalvo_KValueTable>>(&payload_);
  return table != nullptr ? table->get() : nullptr;
}

void* MP_Value::Elements(std::size_t width, unsigned long* n) {
  MP_String* bytes = BytesInString();
  if (bytes == nullptr || static_cast<std::size_t>(bytes->Length()) < width) return nullptr;
  if (n != nullptr) *n = static_cast<unsigned long>(bytes->Length()) / width;
  return const_cast<char*>(bytes->Text());
}

// The string may be this value's own payload, so what is to be written is known before the
// string is emptied.
const char* MP_Value::Format(Kalvo_String* out, bool append) {
  if (out == nullptr) return "";
  const ValueKind kind = KindOf(kind_);
  const std::int32_t integer = Integer(4);
  const double real = Real();
  const bool itself = out == Held();
  if (!append && !(itself && kind.shape == Shape::kText)) out->Reset();
  if (ByteReference() != nullptr || (kind.shape == Shape::kNumber && kind.width == 1)) {
    out->addch(static_cast<char>(integer), 1);
  } else if (kind.shape == Shape::kText) {
    if (append || !itself) out->memcat(Bytes().data(), static_cast<int>(Bytes().size()));
  } else if (kind.shape == Shape::kNumber) {
    switch (kind.number) {
      case Number::kSigned:
        out->sprintf_append("%d", integer);
        break;
      case Number::kUnsigned:
        out->sprintf_append("%u", kind.width == 2 ? integer & 0xFFFF : integer);
        break;
      case Number::kReal:
        out->sprintf_append("%f", real);
        break;
      case Number::kNone:
        break;
    }
  }
  return out->c_str();
}

// --- References ---------------------------------------------------------------------

// A target that goes with what this value held is none.
void MP_Value::SetReference(const Kalvo_Value* target, int index) {
  Kalvo_Value* value = const_cast<Kalvo_Value*>(target);
  char* byte = nullptr;
  std::int32_t kind = Kalvo_VT_NONE;
  if (value != nullptr && index < 0) {
    kind = Kalvo_VT_REF;
  } else if (value != nullptr && &Of(*value) != this) {
    MP_Value& body = Of(*value);
    if (body.kind_ == Kalvo_VT_REF) {
      kind = Kalvo_VT_REF;
      value = static_cast<Kalvo_Value*>(body.Reference());
    } else if (IsText(body.kind_)) {
      MP_String& bytes = *body.BytesInString();
      if (index >= bytes.Length() && index < INT_MAX) bytes.Resize(index + 1, '\0');
      if (index < bytes.Length()) {
        kind = Kalvo_VT_BYTE_REF;
        byte = const_cast<char*>(bytes.Text()) + index;  // with room for the terminator
      }
    } else if (Kalvo_KValueTable* table = body.Table()) {
      kind = Kalvo_VT_REF;
      value = MP_KValueTable::Of(*table).ValueAtLeast(index);
    }
  }
  const Holdings held = TakeHoldings();
  Reset();
  if (held.table != nullptr && kind != Kalvo_VT_NONE) {
    const Kalvo_Value* holder = kind == Kalvo_VT_BYTE_REF ? target : value;
    if (MP_KValueTable::Of(*held.table).Holds(holder)) return;
  }
  kind_ = kind;
  if (kind == Kalvo_VT_BYTE_REF) payload_ = byte;
  if (kind == Kalvo_VT_REF) payload_ = value;
}

void* MP_Value::Reference() {
  if (char** byte = ByteReference()) return *byte;
  Kalvo_Value** value = std::get_if<Kalvo_Value*>(&payload_);
  return value != nullptr ? *value : nullptr;
}
