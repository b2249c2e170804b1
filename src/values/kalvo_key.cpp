#include "kalvobase/bytes.h"
#include "kalvobase/value.h"
#include "values/mp_key.h"

Kalvo_Key::Kalvo_Key() : impl_(new MP_Key) {}
Kalvo_Key::Kalvo_Key(Kalvo_Key& other) : impl_(new MP_Key(other.impl_->View().Cut())) {}
Kalvo_Key::~Kalvo_Key() { delete impl_; }

Kalvo_Key& Kalvo_Key::operator=(const Kalvo_Key& other) {
  if (this != &other) impl_->Assign(other.impl_->View().Cut());
  return *this;
}

Kalvo_Key& Kalvo_Key::operator=(const char* s) {
  impl_->SetText(s, 0);
  return *this;
}

Kalvo_Key& Kalvo_Key::operator=(unsigned long v) {
  impl_->SetNumber(v, nullptr);
  return *this;
}

void Kalvo_Key::Clear() { impl_->Clear(); }
void Kalvo_Key::Set(const char* s, int n) { impl_->SetText(s, n); }
void Kalvo_Key::Set(unsigned long v, const char* label) { impl_->SetNumber(v, label); }
void Kalvo_Key::SetCaseFlag(int flag) { impl_->SetCaseFlag(flag); }
Kalvo_KeyType Kalvo_Key::GetType() { return static_cast<Kalvo_KeyType>(impl_->type()); }
const char* Kalvo_Key::GetSKey() { return impl_->Text(); }
unsigned long Kalvo_Key::GetUKey() { return impl_->number(); }

const char* Kalvo_Key::GetUKey(unsigned long& v) { return impl_->NumberAndText(&v); }
unsigned long Kalvo_Key::Hash() { return impl_->View().Hash(); }
unsigned long Kalvo_Key::Dump(Kalvo_String* out) { return impl_->Dump(out); }
unsigned long Kalvo_Key::Import(const char* p, int n) { return impl_->Import(p, n); }

int operator==(Kalvo_Key& k, const char* s) { return MP_Key::Of(k).HasText(s); }
int operator!=(Kalvo_Key& k, const char* s) { return !(k == s); }
int operator==(Kalvo_Key& a, Kalvo_Key& b) { return MP_Key::Of(a).View() == MP_Key::Of(b).View(); }
int operator!=(Kalvo_Key& a, Kalvo_Key& b) { return !(a == b); }

unsigned long Kalvo_HashKey(Kalvo_Key k) { return k.Hash(); }
