#include "kalvobase/text.h"
#include "text/mp_string_array.h"

Kalvo_StringArray::Kalvo_StringArray() : impl_(new MP_StringArray) {}

Kalvo_StringArray::Kalvo_StringArray(const Kalvo_StringArray& other) : Kalvo_StringArray() {
  impl_->Append(*other.impl_);
}

Kalvo_StringArray::~Kalvo_StringArray() { delete impl_; }

Kalvo_StringArray& Kalvo_StringArray::operator=(const Kalvo_StringArray& other) {
  impl_->Copy(*other.impl_);
  return *this;
}

int Kalvo_StringArray::GetSize() const { return impl_->GetSize(); }

Kalvo_String* Kalvo_StringArray::GetAt(int i) const { return impl_->GetAt(i); }

Kalvo_String* Kalvo_StringArray::operator[](int i) const { return impl_->GetAt(i); }

Kalvo_String* Kalvo_StringArray::GetTail() const { return impl_->GetAt(-1); }

Kalvo_String* Kalvo_StringArray::Add(const char* s, int n) { return impl_->InsertText(-1, s, n); }

Kalvo_String* Kalvo_StringArray::Add(const Kalvo_String& s) { return impl_->InsertString(-1, s); }

Kalvo_String* Kalvo_StringArray::SetAt(int i, const char* s, int n) {
  return impl_->InsertText(i, s, n);
}

Kalvo_String* Kalvo_StringArray::SetAt(int i, const Kalvo_String& s) {
  return impl_->InsertString(i, s);
}

Kalvo_String* Kalvo_StringArray::InsertAt(int i, const char* s, int n) {
  return impl_->InsertCopies(i, s, n);
}

Kalvo_String* Kalvo_StringArray::InsertAt(int i, const Kalvo_String& s, int n) {
  return impl_->InsertCopies(i, s, n);
}

Kalvo_String* Kalvo_StringArray::InsertAt(int i, Kalvo_StringArray* a) {
  return a != nullptr ? impl_->InsertArray(i, *a->impl_) : nullptr;
}

int Kalvo_StringArray::Append(const Kalvo_StringArray& other) {
  return impl_->Append(*other.impl_);
}

void Kalvo_StringArray::Copy(const Kalvo_StringArray& other) { impl_->Copy(*other.impl_); }

void Kalvo_StringArray::RemoveAt(int i, int n) { impl_->RemoveAt(i, n); }

void Kalvo_StringArray::RemoveTail() { impl_->RemoveTail(); }

void Kalvo_StringArray::RemoveAll() { impl_->RemoveAll(); }

int Kalvo_StringArray::Split(const char* text, char sep, int merge) {
  return impl_->SplitText(text, sep, merge != 0);
}

int Kalvo_StringArray::Split(Kalvo_String* text, char sep, int merge) {
  return impl_->SplitString(text, sep, merge != 0);
}

int operator==(const Kalvo_StringArray& a, const Kalvo_StringArray& b) {
  return a.impl_->Equals(*b.impl_);
}

int operator!=(const Kalvo_StringArray& a, const Kalvo_StringArray& b) { return !(a == b); }
