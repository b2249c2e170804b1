#include "kalvobase/value.h"
#include "values/mp_value.h"

Kalvo_Value::Kalvo_Value() : impl_(new MP_Value) {}
Kalvo_Value::Kalvo_Value(const Kalvo_Value& other) : Kalvo_Value() { impl_->Assign(*other.impl_); }
Kalvo_Value::~Kalvo_Value() { delete impl_; }

Kalvo_Value& Kalvo_Value::operator=(const Kalvo_Value& other) {
  impl_->Assign(*other.impl_);
  return *this;
}

void Kalvo_Value::Reset() { impl_->Reset(); }
void Kalvo_Value::Init(Kalvo_VALUE_TYPE t) { impl_->Init(t); }
Kalvo_VALUE_TYPE Kalvo_Value::GetValueType() {
  return static_cast<Kalvo_VALUE_TYPE>(impl_->kind());
}

// --- Setting ------------------------------------------------------------------------

void Kalvo_Value::Set(char v) { impl_->SetNumber(Kalvo_VT_CHAR, v); }
void Kalvo_Value::Set(unsigned char v) { impl_->SetNumber(Kalvo_VT_UCHAR, v); }
void Kalvo_Value::Set(short v) { impl_->SetNumber(Kalvo_VT_SHORT, v); }
void Kalvo_Value::Set(unsigned short v) { impl_->SetNumber(Kalvo_VT_USHORT, v); }
void Kalvo_Value::Set(int v) { impl_->SetNumber(Kalvo_VT_INT, v); }
void Kalvo_Value::Set(unsigned int v) { impl_->SetNumber(Kalvo_VT_UINT, v); }
void Kalvo_Value::Set(long v) { impl_->SetNumber(Kalvo_VT_LONG, static_cast<Kalvo_Long>(v)); }
void Kalvo_Value::Set(unsigned long v) {
  impl_->SetNumber(Kalvo_VT_ULONG, static_cast<Kalvo_ULong>(v));
}
void Kalvo_Value::Set(float v) { impl_->SetNumber(Kalvo_VT_FLOAT, v); }
void Kalvo_Value::Set(double v) { impl_->SetNumber(Kalvo_VT_DOUBLE, v); }

void Kalvo_Value::Set(const char* p, int n) { impl_->SetText(Kalvo_VT_STRING, p, n); }
void Kalvo_Value::Set(const unsigned char* p, int n) {
  impl_->SetText(Kalvo_VT_UCHAR_ARRAY, reinterpret_cast<const char*>(p), n);
}
void Kalvo_Value::Set(const short* p, int n) { impl_->SetNumbers(Kalvo_VT_SHORT_ARRAY, p, n); }
void Kalvo_Value::Set(const unsigned short* p, int n) {
  impl_->SetNumbers(Kalvo_VT_USHORT_ARRAY, p, n);
}
void Kalvo_Value::Set(const int* p, int n) { impl_->SetNumbers(Kalvo_VT_INT_ARRAY, p, n); }
void Kalvo_Value::Set(const unsigned int* p, int n) {
  impl_->SetNumbers(Kalvo_VT_UINT_ARRAY, p, n);
}
void Kalvo_Value::Set(const long* p, int n) { impl_->SetLongs(Kalvo_VT_LONG_ARRAY, p, n); }
void Kalvo_Value::Set(const unsigned long* p, int n) {
  impl_->SetLongs(Kalvo_VT_ULONG_ARRAY, p, n);
}
void Kalvo_Value::Set(const float* p, int n) { impl_->SetNumbers(Kalvo_VT_FLOAT_ARRAY, p, n); }
void Kalvo_Value::Set(const double* p, int n) { impl_->SetNumbers(Kalvo_VT_DOUBLE_ARRAY, p, n); }
void Kalvo_Value::Set(const Kalvo_String& s) { impl_->SetString(s); }
void Kalvo_Value::Set(const Kalvo_StringArray& a) { impl_->SetStrings(a); }
void Kalvo_Value::Set(const Kalvo_KValueTable& t) { impl_->SetTable(t); }
void Kalvo_Value::SetPtr(const void* p) { impl_->SetPointer(p); }

// --- Appending ----------------------------------------------------------------------

void Kalvo_Value::Append(short v) { impl_->AppendNumber(Kalvo_VT_SHORT, v); }
void Kalvo_Value::Append(unsigned short v) { impl_->AppendNumber(Kalvo_VT_USHORT, v); }
void Kalvo_Value::Append(int v) { impl_->AppendNumber(Kalvo_VT_INT, v); }
void Kalvo_Value::Append(unsigned int v) { impl_->AppendNumber(Kalvo_VT_UINT, v); }
void Kalvo_Value::Append(long v) { impl_->AppendNumber(Kalvo_VT_LONG, static_cast<Kalvo_Long>(v)); }
void Kalvo_Value::Append(unsigned long v) {
  impl_->AppendNumber(Kalvo_VT_ULONG, static_cast<Kalvo_ULong>(v));
}
void Kalvo_Value::Append(float v) { impl_->AppendNumber(Kalvo_VT_FLOAT, v); }
void Kalvo_Value::Append(double v) { impl_->AppendNumber(Kalvo_VT_DOUBLE, v); }
void Kalvo_Value::Append(const char* p, int n) { impl_->AppendText(Kalvo_VT_STRING, p, n); }
void Kalvo_Value::Append(const unsigned char* p, int n) {
  impl_->AppendText(Kalvo_VT_UCHAR_ARRAY, reinterpret_cast<const char*>(p), n);
}
void Kalvo_Value::Append(const Kalvo_String& s) { impl_->AppendString(s); }
void Kalvo_Value::Append(const Kalvo_StringArray& a) { impl_->AppendStrings(a); }

// --- Reading ------------------------------------------------------------------------

char Kalvo_Value::GetChar() { return static_cast<char>(impl_->Integer(1)); }
unsigned char Kalvo_Value::GetUChar() { return static_cast<unsigned char>(impl_->Integer(1)); }
short Kalvo_Value::GetShort() { return static_cast<short>(impl_->Integer(2)); }
unsigned short Kalvo_Value::GetUShort() { return static_cast<unsigned short>(impl_->Integer(2)); }
int Kalvo_Value::GetInt() { return impl_->Integer(4); }
unsigned int Kalvo_Value::GetUInt() { return static_cast<unsigned int>(impl_->Integer(4)); }
long Kalvo_Value::GetLong() { return impl_->Integer(4); }
unsigned long Kalvo_Value::GetULong() { return static_cast<std::uint32_t>(impl_->Integer(4)); }
float Kalvo_Value::GetFloat() { return impl_->Float(); }
double Kalvo_Value::GetDouble() { return impl_->Real(); }
void* Kalvo_Value::GetPtr() { return impl_->Pointer(); }

Kalvo_String* Kalvo_Value::GetString() { return impl_->String(); }
Kalvo_StringArray* Kalvo_Value::GetStringArray() { return impl_->Strings(); }
Kalvo_KValueTable* Kalvo_Value::GetValueTable() { return impl_->Table(); }

char* Kalvo_Value::GetByteArray(unsigned long* n) { return impl_->Elements<char>(n); }
unsigned char* Kalvo_Value::GetUCharArray(unsigned long* n) {
  return impl_->Elements<unsigned char>(n);
}
short* Kalvo_Value::GetShortArray(unsigned long* n) { return impl_->Elements<short>(n); }
unsigned short* Kalvo_Value::GetUShortArray(unsigned long* n) {
  return impl_->Elements<unsigned short>(n);
}
int* Kalvo_Value::GetIntArray(unsigned long* n) { return impl_->Elements<int>(n); }
unsigned int* Kalvo_Value::GetUIntArray(unsigned long* n) {
  return impl_->Elements<unsigned int>(n);
}
Kalvo_Long* Kalvo_Value::GetLongArray(unsigned long* n) { return impl_->Elements<Kalvo_Long>(n); }
Kalvo_ULong* Kalvo_Value::GetULongArray(unsigned long* n) {
  return impl_->Elements<Kalvo_ULong>(n);
}
float* Kalvo_Value::GetFloatArray(unsigned long* n) { return impl_->Elements<float>(n); }
double* Kalvo_Value::GetDoubleArray(unsigned long* n) { return impl_->Elements<double>(n); }

const char* Kalvo_Value::Format(Kalvo_String* out, int append) {
  return impl_->Format(out, append != 0);
}

void Kalvo_Value::SetRef(const Kalvo_Value* target, int index) {
  impl_->SetReference(target, index);
}

void* Kalvo_Value::GetRef() { return impl_->Reference(); }

// --- Computing ----------------------------------------------------------------------

Kalvo_Value* Kalvo_Value::Add(const Kalvo_Value* o) {
  impl_->Add(o);
  return this;
}

Kalvo_Value* Kalvo_Value::Minus(const Kalvo_Value* o) {
  impl_->Compute(MP_Value::Operation::kMinus, o);
  return this;
}

Kalvo_Value* Kalvo_Value::Times(const Kalvo_Value* o) {
  impl_->Compute(MP_Value::Operation::kTimes, o);
  return this;
}

Kalvo_Value* Kalvo_Value::Divied(const Kalvo_Value* o) {
  impl_->Compute(MP_Value::Operation::kDivide, o);
  return this;
}

Kalvo_Value* Kalvo_Value::ShiftL(unsigned long n) {
  impl_->ShiftLeft(static_cast<std::uint32_t>(n));
  return this;
}

Kalvo_Value* Kalvo_Value::ShiftR(unsigned long n) {
  impl_->ShiftRight(static_cast<std::uint32_t>(n));
  return this;
}

Kalvo_Value* Kalvo_Value::BitAnd(unsigned long m) {
  impl_->And(static_cast<std::uint32_t>(m));
  return this;
}

Kalvo_Value* Kalvo_Value::BitOr(unsigned long m) {
  impl_->Or(static_cast<std::uint32_t>(m));
  return this;
}

Kalvo_Value* Kalvo_Value::BitXor(unsigned long m) {
  impl_->Xor(static_cast<std::uint32_t>(m));
  return this;
}

Kalvo_Value* Kalvo_Value::BitNot() {
  impl_->Xor(0xFFFFFFFFu);
  return this;
}

Kalvo_Value* Kalvo_Value::PlusPlus() {
  impl_->Increase(1);
  return this;
}

Kalvo_Value* Kalvo_Value::MinusMinus() {
  impl_->Increase(0xFFFFFFFFu);
  return this;
}

int Kalvo_Value::Copmare(const Kalvo_Value* o) { return impl_->Compare(o); }

unsigned long Kalvo_Value::Dump(Kalvo_String* out) { return impl_->Dump(out); }
unsigned long Kalvo_Value::Import(const char* p, int n) { return impl_->Import(p, n); }
