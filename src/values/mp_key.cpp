#include "values/mp_key.h"

#include <algorithm>
#include <string_view>

#include "text/text_bytes.h"
#include "values/binary_form.h"
#include "values/key_index.h"

bool EqualNocase(std::string_view a, std::string_view b) {
  a = a.substr(0, a.find('\0'));
  b = b.substr(0, b.find('\0'));
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return text::LowerAscii(static_cast<unsigned char>(x)) ==
           text::LowerAscii(static_cast<unsigned char>(y));
  });
}

void MP_Key::KeepForReader() { reader_->TakeOwnKey(); }

void MP_Key::Clear() {
  BeforeChange();
  text_.Renew(0);
  number_ = 0;
  type_ = Kalvo_KEY_NONE;
  caseFlag_ = 1;
  holdsZeros_ = false;
}

void MP_Key::SetText(const char* s, int n) {
  if (s == nullptr) return;
  BeforeChange();
  const std::size_t limit = n < 1 ? KeyView::kLongestText : static_cast<std::size_t>(n);
  text_.Assign(KeyView::Counted(s, std::min(limit, KeyView::kLongestText)));
  holdsZeros_ = false;
  type_ = Kalvo_KEY_STRING;
}

void MP_Key::SetNumber(unsigned long v, const char* label) {
  BeforeChange();
  text_.Assign(KeyView::Counted(label));
  holdsZeros_ = false;
  number_ = static_cast<std::uint32_t>(v);
  type_ = Kalvo_KEY_NUMBER;
}

void MP_Key::Assign(const KeyView& view) {
  BeforeChange();
  text_.Assign(view.text);
  number_ = view.number;
  type_ = view.type;
  caseFlag_ = view.caseFlag;
  holdsZeros_ = view.holdsZeros;
}

const char* MP_Key::NumberAndText(unsigned long* number) const {
  const char* text = Text();
  if (text != nullptr) *number = number_;
  return text;
}

bool MP_Key::HasText(const char* s) const {
  if (type_ != Kalvo_KEY_STRING) return false;
  const std::string_view other = s != nullptr ? s : "";
  return caseFlag_ != 0 ? s != nullptr && text_.view() == other : EqualNocase(text_.view(), other);
}

// --- The binary form: type, case flag, length and text, and of a number the number ------

unsigned long MP_Key::Dump(Kalvo_String* out) const {
  return DumpForm(out, [this](FormWriter* writer) { Dump(writer); });
}

// Into a new key first: the bytes may be those of the old one.
unsigned long MP_Key::Import(const char* p, int n) {
  MP_Key fresh;
  const unsigned long taken = ImportForm(p, n, [&fresh](FormReader* in) { fresh.Import(in); });
  Assign(fresh.View());
  return taken;
}

void MP_Key::Dump(FormWriter* out) const {
  const std::string_view text = text_.view();
  const bool isNumber = type_ == Kalvo_KEY_NUMBER;
  char* place = out->Room(4 + text.size() + (isNumber ? 4 : 0));
  if (place == nullptr) return;
  place = FormWriter::Byte(place, type_);
  place = FormWriter::Byte(place, caseFlag_);
  place = out->Number(place, static_cast<std::uint16_t>(text.size()));
  place = FormWriter::Bytes(place, text);
  if (isNumber) out->Number(place, number_);
}

// Expects a new key.
void MP_Key::Import(FormReader* in) {
  if (!in->Need(4)) return;
  type_ = in->Byte();
  caseFlag_ = in->Byte();
  const std::size_t length = in->Number<std::uint16_t>();
  if (!in->Need(length)) return;
  text_.Assign(in->Bytes(length));
  holdsZeros_ = text_.view().find('\0') != std::string_view::npos;
  if (type_ == Kalvo_KEY_NUMBER && in->Need(4)) number_ = in->Number<std::uint32_t>();
}
