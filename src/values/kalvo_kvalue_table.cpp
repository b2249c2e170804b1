#include "kalvobase/value.h"
#include "values/mp_kvalue_table.h"

Kalvo_KValueTable::Kalvo_KValueTable() : impl_(new MP_KValueTable) {}
Kalvo_KValueTable::~Kalvo_KValueTable() { delete impl_; }

Kalvo_KValueTable::Kalvo_KValueTable(const Kalvo_KValueTable& other) : Kalvo_KValueTable() {
  impl_->Assign(*other.impl_);
}

Kalvo_KValueTable& Kalvo_KValueTable::operator=(const Kalvo_KValueTable& other) {
  impl_->Assign(*other.impl_);
  return *this;
}

Kalvo_KValueTable& Kalvo_KValueTable::Add(const Kalvo_KValueTable& other) {
  impl_->AssignEntries(*other.impl_);
  return *this;
}

void Kalvo_KValueTable::SetCaseFlag(int flag) { impl_->SetCaseFlag(flag); }
void Kalvo_KValueTable::RemoveAll() { impl_->RemoveAll(); }

// --- By key -------------------------------------------------------------------------

Kalvo_Value* Kalvo_KValueTable::Insert(unsigned long k) { return impl_->Insert(impl_->Number(k)); }
Kalvo_Value* Kalvo_KValueTable::Insert(const char* k) { return impl_->Insert(impl_->Text(k)); }
Kalvo_Value* Kalvo_KValueTable::Insert(Kalvo_Key& k) { return impl_->Insert(impl_->Given(&k)); }

Kalvo_Value* Kalvo_KValueTable::GetValue(unsigned long k) {
  return impl_->GetValue(impl_->Number(k));
}
Kalvo_Value* Kalvo_KValueTable::GetValue(const char* k) { return impl_->GetValue(impl_->Text(k)); }
Kalvo_Value* Kalvo_KValueTable::GetValue(Kalvo_Key* k) { return impl_->GetValue(impl_->Given(k)); }

void Kalvo_KValueTable::Remove(unsigned long k) { return impl_->Remove(impl_->Number(k)); }
void Kalvo_KValueTable::Remove(const char* k) { return impl_->Remove(impl_->Text(k)); }
void Kalvo_KValueTable::Remove(Kalvo_Key* k) { return impl_->Remove(impl_->Given(k)); }

Kalvo_KValueTable* Kalvo_KValueTable::InsertTable(unsigned long k) {
  return impl_->InsertTable(impl_->Number(k));
}
Kalvo_KValueTable* Kalvo_KValueTable::InsertTable(const char* k) {
  return impl_->InsertTable(impl_->Text(k));
}
Kalvo_KValueTable* Kalvo_KValueTable::InsertTable(Kalvo_Key& k) {
  return impl_->InsertTable(impl_->Given(&k));
}

Kalvo_KValueTable* Kalvo_KValueTable::GetTable(unsigned long k) {
  return impl_->GetTable(impl_->Number(k));
}
Kalvo_KValueTable* Kalvo_KValueTable::GetTable(const char* k) {
  return impl_->GetTable(impl_->Text(k));
}
Kalvo_KValueTable* Kalvo_KValueTable::GetTable(Kalvo_Key* k) {
  return impl_->GetTable(impl_->Given(k));
}

void* Kalvo_KValueTable::GetPtr(unsigned long k) { return impl_->GetPointer(impl_->Number(k)); }
void* Kalvo_KValueTable::GetPtr(const char* k) { return impl_->GetPointer(impl_->Text(k)); }
void* Kalvo_KValueTable::GetPtr(Kalvo_Key* k) { return impl_->GetPointer(impl_->Given(k)); }

char* Kalvo_KValueTable::GetByteArray(unsigned long k, unsigned long* n) {
  return impl_->GetBytes(impl_->Number(k), n);
}
char* Kalvo_KValueTable::GetByteArray(const char* k, unsigned long* n) {
  return impl_->GetBytes(impl_->Text(k), n);
}
char* Kalvo_KValueTable::GetByteArray(Kalvo_Key* k, unsigned long* n) {
  return impl_->GetBytes(impl_->Given(k), n);
}

unsigned long Kalvo_KValueTable::GetBaseValue(unsigned long k) {
  return impl_->GetNumber(impl_->Number(k));
}
unsigned long Kalvo_KValueTable::GetBaseValue(const char* k) {
  return impl_->GetNumber(impl_->Text(k));
}
unsigned long Kalvo_KValueTable::GetBaseValue(Kalvo_Key* k) {
  return impl_->GetNumber(impl_->Given(k));
}

Kalvo_Value* Kalvo_KValueTable::Set(unsigned long k, const char* s) {
  return impl_->Set(impl_->Number(k), s);
}
Kalvo_Value* Kalvo_KValueTable::Set(const char* k, const char* s) {
  return impl_->Set(impl_->Text(k), s);
}
Kalvo_Value* Kalvo_KValueTable::Set(unsigned long k, long v) {
  return impl_->Set(impl_->Number(k), v);
}
Kalvo_Value* Kalvo_KValueTable::Set(const char* k, long v) { return impl_->Set(impl_->Text(k), v); }
Kalvo_Value* Kalvo_KValueTable::SetPtr(unsigned long k, void* p) {
  return impl_->SetPointer(impl_->Number(k), p);
}
Kalvo_Value* Kalvo_KValueTable::SetPtr(const char* k, void* p) {
  return impl_->SetPointer(impl_->Text(k), p);
}

// --- By position and in order -------------------------------------------------------

unsigned long Kalvo_KValueTable::GetCount() { return impl_->count(); }

Kalvo_Value* Kalvo_KValueTable::GetAt(int i) const { return impl_->ValueAt(i); }
Kalvo_Key* Kalvo_KValueTable::GetKeyAt(int i) const { return impl_->KeyAt(i); }
Kalvo_Value* Kalvo_KValueTable::InsertAt(int i) { return impl_->InsertAt(i); }
void Kalvo_KValueTable::RemoveAt(int i) { impl_->RemoveAt(i); }
void Kalvo_KValueTable::ModifyKey(int i, Kalvo_Key* k) { impl_->ModifyKey(i, k); }
void Kalvo_KValueTable::ModifyKey(int i, const char* k) { impl_->ModifyKey(i, k); }
void Kalvo_KValueTable::ModifyKey(int i, unsigned long k) { impl_->ModifyKey(i, k); }

Kalvo_Value* Kalvo_KValueTable::GetFirst(Kalvo_Key*& k) const { return impl_->First(&k); }
Kalvo_Value* Kalvo_KValueTable::GetNext(Kalvo_Key*& k) const { return impl_->Next(&k); }

// --- Comparing and the binary form --------------------------------------------------

unsigned long Kalvo_KValueTable::Dump(Kalvo_String* out) { return impl_->Dump(out); }
unsigned long Kalvo_KValueTable::Import(const char* p, int n) { return impl_->Import(p, n); }

int operator==(Kalvo_KValueTable& a, Kalvo_KValueTable& b) {
  return MP_KValueTable::Of(a).Equals(MP_KValueTable::Of(b));
}

int operator!=(Kalvo_KValueTable& a, Kalvo_KValueTable& b) { return !(a == b); }
