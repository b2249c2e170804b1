#include <cstring>

#include "kalvobase/text.h"
#include "text/date_format.h"
#include "text/mp_string.h"

// --- Making and assigning -----------------------------------------------------------

Kalvo_String::Kalvo_String() : impl_(new MP_String) {}

Kalvo_String::Kalvo_String(const char* s) : impl_(new MP_String(s)) {}

Kalvo_String::Kalvo_String(const char* s, int n) : Kalvo_String() { impl_->AssignText(s, n); }

Kalvo_String::Kalvo_String(char c, int n) : Kalvo_String() { impl_->AppendFill(c, n); }

Kalvo_String::Kalvo_String(const Kalvo_String& other) : Kalvo_String() {
  impl_->Append(other.impl_->Content(), other.impl_->Length());
}

Kalvo_String& Kalvo_String::operator=(const Kalvo_String& other) {
  if (this != &other) impl_->Assign(other.impl_->Content(), other.impl_->Length());
  return *this;
}

Kalvo_String::~Kalvo_String() { delete impl_; }

Kalvo_String& Kalvo_String::operator=(const char* s) {
  impl_->AssignText(s);
  return *this;
}

Kalvo_String* Kalvo_String::strcpy(const char* s) {
  impl_->AssignText(s);
  return this;
}

Kalvo_String* Kalvo_String::strncpy(const char* s, int n) {
  impl_->AssignText(s, n);
  return this;
}

Kalvo_String* Kalvo_String::memcpy(const void* p, int n) {
  impl_->Assign(static_cast<const char*>(p), n);
  return this;
}

void Kalvo_String::Reset() { impl_->Clear(); }

// --- Appending ----------------------------------------------------------------------

Kalvo_String* Kalvo_String::strcat(const char* s) {
  impl_->AppendText(s);
  return this;
}

Kalvo_String* Kalvo_String::strncat(const char* s, int n) {
  impl_->AppendText(s, n);
  return this;
}

Kalvo_String* Kalvo_String::memcat(const void* p, int n) {
  impl_->Append(static_cast<const char*>(p), n);
  return this;
}

Kalvo_String* Kalvo_String::addch(char c, int n) {
  impl_->AppendFill(c, n);
  return this;
}

// --- Reading ------------------------------------------------------------------------

unsigned long Kalvo_String::length() const { return static_cast<unsigned long>(impl_->Length()); }
const char* Kalvo_String::c_str() const { return impl_->Text(); }
Kalvo_String::operator const char*() const { return impl_->Text(); }
char Kalvo_String::GetAt(int i) const { return impl_->At(i); }
char Kalvo_String::operator[](int i) const { return impl_->At(i); }
char Kalvo_String::operator[](unsigned int i) const { return impl_->At(static_cast<int>(i)); }
char Kalvo_String::operator[](long i) const { return impl_->At(static_cast<int>(i)); }
char Kalvo_String::operator[](unsigned long i) const { return impl_->At(static_cast<int>(i)); }
char Kalvo_String::operator[](long long i) const { return impl_->At(static_cast<int>(i)); }
char Kalvo_String::operator[](unsigned long long i) const { return impl_->At(static_cast<int>(i)); }
const char* Kalvo_String::right(int n) const { return impl_->Right(n); }
int Kalvo_String::Compare(const char* s) const { return impl_->Compare(s); }
int Kalvo_String::CompareNoCase(const char* s) const { return impl_->CompareNoCase(s); }
char Kalvo_String::GetQuote() const { return impl_->quote(); }
void Kalvo_String::SetQuote(char c) { impl_->SetQuote(c); }

// --- Editing in place ---------------------------------------------------------------

void Kalvo_String::SetAt(int i, char c) { impl_->SetAt(i, c); }

Kalvo_String* Kalvo_String::truncate(int n) {
  impl_->Truncate(n);
  return this;
}

Kalvo_String* Kalvo_String::truncate_right(int n) {
  impl_->TruncateRight(n);
  return this;
}

void Kalvo_String::resize(int n, char c) { impl_->Resize(n, c); }

Kalvo_String* Kalvo_String::Delete(int pos, int n) {
  impl_->Delete(pos, n);
  return this;
}

Kalvo_String* Kalvo_String::insert_char(int pos, char c, int n) {
  impl_->InsertFill(pos, c, n);
  return this;
}

Kalvo_String* Kalvo_String::insert_string(int pos, const char* s, int n) {
  impl_->Insert(pos, s, n);
  return this;
}

Kalvo_String* Kalvo_String::replace(char from, char to) {
  impl_->ReplaceByte(from, to);
  return this;
}

Kalvo_String* Kalvo_String::replace(int pos, char c) {
  impl_->ReplaceAt(pos, c);
  return this;
}

Kalvo_String* Kalvo_String::replace(int pos, const char* s, int n) {
  impl_->Overwrite(pos, s, n);
  return this;
}

int Kalvo_String::replace(int from, const char* what, const char* with) {
  return impl_->Replace(from, what, with);
}

int Kalvo_String::replace_all(int from, const char* what, const char* with) {
  return impl_->ReplaceAll(from, what, with);
}

void Kalvo_String::TrimLeft() { impl_->TrimLeft(); }
void Kalvo_String::TrimRight() { impl_->TrimRight(); }
void Kalvo_String::Trim() { impl_->Trim(); }

Kalvo_String* Kalvo_String::MakeUpper() {
  impl_->MakeUpper();
  return this;
}

Kalvo_String* Kalvo_String::MakeLower() {
  impl_->MakeLower();
  return this;
}

void Kalvo_String::MakeReverse() { impl_->Reverse(); }

Kalvo_String* Kalvo_String::Align(char mode, char c, int width) {
  impl_->Align(mode, c, width);
  return this;
}

// --- Binary writes ------------------------------------------------------------------

int Kalvo_String::Write(char v) { return impl_->PutCount(v); }
int Kalvo_String::Write(unsigned char v) { return impl_->PutCount(v); }
int Kalvo_String::Write(short v) { return impl_->WriteOrdered(&v, 2); }
int Kalvo_String::Write(unsigned short v) { return impl_->WriteOrdered(&v, 2); }
int Kalvo_String::Write(int v) { return impl_->WriteOrdered(&v, 4); }
int Kalvo_String::Write(unsigned int v) { return impl_->WriteOrdered(&v, 4); }
int Kalvo_String::Write(long v) { return Write(static_cast<int>(v)); }
int Kalvo_String::Write(unsigned long v) { return Write(static_cast<unsigned int>(v)); }
int Kalvo_String::Write(float v) { return impl_->WriteOrdered(&v, 4); }
int Kalvo_String::Write(double v) { return impl_->WriteOrdered(&v, 8); }
int Kalvo_String::Write(long double v) { return Write(static_cast<double>(v)); }
int Kalvo_String::Write(const char* p, int n) { return impl_->WriteBlock(p, n); }
void Kalvo_String::SetOrderFlag(int flag) { impl_->SetOrderFlag(flag); }

// --- Formatting ---------------------------------------------------------------------

Kalvo_String* Kalvo_String::sprintf(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  vsprintf(fmt, args);
  va_end(args);
  return this;
}

Kalvo_String* Kalvo_String::sprintf_append(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  vsprintf_append(fmt, args);
  va_end(args);
  return this;
}

Kalvo_String* Kalvo_String::insert(int pos, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  vinsert(pos, fmt, args);
  va_end(args);
  return this;
}

Kalvo_String* Kalvo_String::vsprintf(const char* fmt, va_list args) {
  impl_->Format(fmt, args);
  return this;
}

Kalvo_String* Kalvo_String::vsprintf_append(const char* fmt, va_list args) {
  impl_->AppendFormat(fmt, args);
  return this;
}

Kalvo_String* Kalvo_String::vinsert(int pos, const char* fmt, va_list args) {
  impl_->InsertFormat(pos, fmt, args);
  return this;
}

// --- Numbers and dates --------------------------------------------------------------

long Kalvo_String::ToInt(int base) const { return impl_->ToInt(base); }
double Kalvo_String::ToFloat() const { return impl_->ToFloat(); }
char Kalvo_String::ToChar() const { return impl_->ToChar(); }
long Kalvo_String::ToTime(const char* fmt) const { return text::ParseDate(impl_->Text(), fmt); }
long Kalvo_String::GetTimePeriod(const char* fmt) { return text::DatePeriod(fmt); }

Kalvo_String* Kalvo_String::FormatDate(long t, const char* fmt) {
  impl_->FormatDate(t, fmt);
  return this;
}

Kalvo_String* Kalvo_String::Append_FormatDate(long t, const char* fmt) {
  impl_->AppendDate(t, fmt);
  return this;
}

// --- Searching and Base64 -----------------------------------------------------------

const char* Kalvo_String::Find(int start, const char* pat, int& pos, int patlen) {
  return impl_->Find(start, pat, pos, patlen);
}

const char* Kalvo_String::FindLast(const char* pat, int& pos, int patlen) {
  return impl_->FindLast(pat, pos, patlen);
}

int Kalvo_String::FindLastChar(char c) const { return impl_->FindLastChar(c); }

const char* Kalvo_String::MatchBrack(int start, const char* open, const char* close, int& openpos,
                                     int& closepos) {
  return impl_->MatchBrack(start, open, close, openpos, closepos);
}

const char* Kalvo_String::Base64Encode(const char* p, int n) { return impl_->AppendBase64(p, n); }

const char* Kalvo_String::Base64Decode(const char* text) {
  return impl_->AppendDecodedBase64(text);
}

const char* Kalvo_String::Base64Decode(const char* p, int n) {
  return impl_->AppendDecodedBase64(p, n);
}

// --- Comparing ----------------------------------------------------------------------

int operator==(const Kalvo_String& a, const char* s) {
  return s != nullptr && a.length() == std::strlen(s) && std::memcmp(a, s, a.length()) == 0;
}

int operator==(const Kalvo_String& a, const Kalvo_String& b) {
  return a.length() == b.length() && std::memcmp(a, b, a.length()) == 0;
}

int operator!=(const Kalvo_String& a, const char* s) { return !(a == s); }

int operator!=(const Kalvo_String& a, const Kalvo_String& b) { return !(a == b); }
