#include <cstring>
#include <memory>

#include "text/mp_string_array.h"
#include "values/binary_form.h"
#include "values/mp_kvalue_table.h"
#include "values/mp_value.h"

bool MP_Value::Equals(MP_Value& other) {
  if (!EqualsBesideTable(other)) return false;
  return Table() == nullptr ||
         MP_KValueTable::Of(*Table()).Equals(MP_KValueTable::Of(*other.Table()));
}

unsigned long MP_Value::Dump(Kalvo_String* out) {
  return DumpForm(out, [this](FormWriter* writer) {
    DumpBesideTable(writer);
    if (Kalvo_KValueTable* table = Table()) MP_KValueTable::Of(*table).DumpEntries(writer);
  });
}

// The bytes may be a part of what this value holds.
unsigned long MP_Value::Import(const char* p, int n) {
  std::unique_ptr<MP_HeldString> own;
  if (auto* held = std::get_if<std::unique_ptr<MP_HeldString>>(&payload_)) own = std::move(*held);
  const Holdings holdings = TakeHoldings();
  Reset();
  return ImportForm(p, n, [this](FormReader* in) {
    ImportBesideTable(in);
    if (Kalvo_KValueTable* table = Table()) MP_KValueTable::Of(*table).ImportEntries(in);
  });
}

bool MP_Value::EqualsBesideTable(MP_Value& other) {
  if (kind_ != other.kind_) return false;
  switch (KindOf(kind_).shape) {
    case Shape::kNumber:
    case Shape::kText:
    case Shape::kNumbers:
      return Bytes() == other.Bytes();
    case Shape::kStrings:
      return (*Strings() == *other.Strings()) != 0;
    case Shape::kTable:
      return true;
    case Shape::kNothing:
    case Shape::kPointer:
      return false;
  }
  return false;
}

// Bytes are looked at when there is room for them: they may be in the string that is
// written, whose block moves when it grows.
void MP_Value::DumpBesideTable(FormWriter* out) {
  const ValueKind kind = KindOf(kind_);
  switch (kind.shape) {
    case Shape::kNumber: {
      const bool whole = Bytes().size() >= kind.width;
      const std::uint64_t filledUp = whole ? 0 : First<std::uint64_t>();
      char* place = out->Room(1u + kind.width);
      if (place == nullptr) return;
      place = FormWriter::Byte(place, kind_);
      out->Numbers(place, whole ? Bytes().data() : reinterpret_cast<const char*>(&filledUp), 1,
                   kind.width);
      break;
    }
    case Shape::kText:
    case Shape::kNumbers: {
      const std::size_t count = Bytes().size() / kind.width;
      char* place = out->Room(5 + std::uint64_t{count} * kind.width);
      if (place == nullptr) return;
      place = FormWriter::Byte(place, kind_);
      place = out->Number(place, static_cast<std::uint32_t>(count));
      out->Numbers(place, Bytes().data(), count, kind.width);
      break;
    }
    case Shape::kStrings: {
      const MP_StringArray& strings = MP_StringArray::Of(*Strings());
      char* place = out->Room(5);
      if (place == nullptr) return;
      place = FormWriter::Byte(place, kind_);
      out->Number(place, static_cast<std::uint32_t>(strings.GetSize()));
      for (auto* item = strings.First(); item != nullptr; item = item->NextItem()) {
        const std::size_t length = item->text.length();
        place = out->Room(4 + length);
        if (place == nullptr) return;
        place = out->Number(place, static_cast<std::uint32_t>(length));
        FormWriter::Bytes(place, {MP_String::Of(item->text).Content(), length});
      }
      break;
    }
    case Shape::kTable:
    case Shape::kNothing:
    case Shape::kPointer:
      if (char* place = out->Room(1)) FormWriter::Byte(place, kind_);
      break;
  }
}

void MP_Value::ImportBesideTable(FormReader* in) {
  Reset();
  if (!in->Need(1)) return;
  const std::int32_t code = in->Byte();
  const ValueKind kind = KindOf(code);
  Init(code);
  kind_ = code;  // also if it is no kind
  std::uint32_t count = 0;
  switch (kind.shape) {
    case Shape::kNumber: {
      char* place = RenewedBytes().Renew(kind.width);
      if (in->Need(kind.width)) {
        in->Numbers(place, 1, kind.width);
      } else {
        std::memset(place, 0, kind.width);
      }
      break;
    }
    case Shape::kText:
    case Shape::kNumbers:
      if (in->Count(&count) && in->Need(std::uint64_t{count} * kind.width)) {
        in->Numbers(RenewedBytes().Renew(std::size_t{count} * kind.width), count, kind.width);
      }
      break;
    case Shape::kStrings:
      if (!in->Count(&count)) break;
      for (; count > 0; --count) {
        Kalvo_String* element = Strings()->Add("", 0);
        std::uint32_t length = 0;
        if (!in->Count(&length) || !in->Need(length)) break;
        element->memcpy(in->Bytes(length).data(), static_cast<int>(length));
      }
      break;
    case Shape::kTable:
    case Shape::kNothing:
    case Shape::kPointer:
      break;
  }
}
