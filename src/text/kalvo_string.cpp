#include <cstring>

#include "kalvobase/text.h"
#include "text/date_format.h"
#include "text/mp_string.h"

// --- Making and assigning -----------------------------------------------------------

Kalvo_String::Kalvo_String() : cursor_(new MP_String) {}

Kalvo_String::Kalvo_String(const char* s) : cursor_(new MP_String(s)) {}

Kalvo_String::Kalvo_String(MP_String& held) : cursor_(&held) {}

Kalvo_String::Kalvo_String(const char* s, int n) : Kalvo_String() { impl()->AssignText(s, n); }

Kalvo_String::Kalvo_String(char c, int n) : Kalvo_String() { impl()->AppendRun(c, n); }

Kalvo_String::Kalvo_String(const Kalvo_String& other) : Kalvo_String() {
  impl()->Append(*other.impl());
}

Kalvo_String& Kalvo_String::operator=(const Kalvo_String& other) {
  if (this != &other) impl()->Assign(*other.impl());
  return *this;
}

Kalvo_String::~Kalvo_String() { delete impl(); }

Kalvo_String& Kalvo_String::operator=(const char* s) {
  impl()->AssignText(s);
  return *this;
}

Kalvo_String* Kalvo_String::strcpy(const char* s) {
  impl()->AssignText(s);
  return this;
}

Kalvo_String* Kalvo_String::strncpy(const char* s, int n) {
  impl()->AssignText(s, n);
  return this;
}

Kalvo_String* Kalvo_String::memcpy(const void* p, int n) {
  impl()->Assign(static_cast<const char*>(p), n);
  return this;
}

void Kalvo_String::Reset() { impl()->Clear(); }

// --- Appending ----------------------------------------------------------------------

Kalvo_String* Kalvo_String::strcat(const char* s) {
  impl()->AppendText(s);
  return this;
}

Kalvo_String* Kalvo_String::strncat(const char* s, int n) {
  impl()->AppendText(s, n);
  return this;
}

Kalvo_String* Kalvo_String::memcat(const void* p, int n) {
  impl()->Append(static_cast<const char*>(p), n);
  return this;
}

Kalvo_String* Kalvo_String::AppendRun(char c, int n) {
  impl()->AppendRun(c, n);
  return this;
}

// --- Reading ------------------------------------------------------------------------

unsigned long Kalvo_String::length() const { return static_cast<unsigned long>(impl()->Length()); }
const char* Kalvo_String::c_str() const { return impl()->Text(); }
Kalvo_String::operator const char*() const { return impl()->Text(); }
char Kalvo_String::GetAt(int i) const { return impl()->At(i); }
char Kalvo_String::operator[](int i) const { return impl()->At(i); }
char Kalvo_String::operator[](unsigned int i) const { return impl()->At(static_cast<int>(i)); }
char Kalvo_String::operator[](long i) const { return impl()->At(static_cast<int>(i)); }
char Kalvo_String::operator[](unsigned long i) const { return impl()->At(static_cast<int>(i)); }
char Kalvo_String::operator[](long long i) const { return impl()->At(static_cast<int>(i)); }
char Kalvo_String::operator[](unsigned long long i) const {
  return impl()->At(static_cast<int>(i));
}
const char* Kalvo_String::right(int n) const { return impl()->Right(n); }
int Kalvo_String::Compare(const char* s) const { return impl()->Compare(s); }
int Kalvo_String::CompareNoCase(const char* s) const { return impl()->CompareNoCase(s); }
char Kalvo_String::GetQuote() const { return impl()->quote(); }
void Kalvo_String::SetQuote(char c) { impl()->SetQuote(c); }

// --- Editing in place ---------------------------------------------------------------

void Kalvo_String::SetAt(int i, char c) { impl()->SetAt(i, c); }

Kalvo_String* Kalvo_String::truncate(int n) {
  impl()->Truncate(n);
  return this;
}

Kalvo_String* Kalvo_String::truncate_right(int n) {
  impl()->TruncateRight(n);
  return this;
}

void Kalvo_String::resize(int n, char c) { impl()->Resize(n, c); }

Kalvo_String* Kalvo_String::Delete(int pos, int n) {
  impl()->Delete(pos, n);
  return this;
}

Kalvo_String* Kalvo_String::insert_char(int pos, char c, int n) {
  impl()->InsertFill(pos, c, n);
  return this;
}

Kalvo_String* Kalvo_String::insert_string(int pos, const char* s, int n) {
  impl()->Insert(pos, s, n);
  return this;
}

Kalvo_String* Kalvo_String::replace(char from, char to) {
  impl()->ReplaceByte(from, to);
  return this;
}

Kalvo_String* Kalvo_String::replace(int pos, char c) {
  impl()->ReplaceAt(pos, c);
  return this;
}

Kalvo_String* Kalvo_String::replace(int pos, const char* s, int n) {
  impl()->Overwrite(pos, s, n);
  return this;
}

int Kalvo_String::replace(int from, const char* what, const char* with) {
  return impl()->Replace(from, what, with);
}

int Kalvo_String::replace_all(int from, const char* what, const char* with) {
  return impl()->ReplaceAll(from, what, with);
}

void Kalvo_String::TrimLeft() { impl()->TrimLeft(); }
void Kalvo_String::TrimRight() { impl()->TrimRight(); }
void Kalvo_String::Trim() { impl()->Trim(); }

Kalvo_String* Kalvo_String::MakeUpper() {
  impl()->MakeUpper();
  return this;
}

Kalvo_String* Kalvo_String::MakeLower() {
  impl()->MakeLower();
  return this;
}

void Kalvo_String::MakeReverse() { impl()->Reverse(); }

Kalvo_String* Kalvo_String::Align(char mode, char c, int width) {
  impl()->Align(mode, c, width);
  return this;
}

// --- Binary writes ------------------------------------------------------------------

int Kalvo_String::Write(char v) { return impl()->WriteOrdered(&v, 1); }
int Kalvo_String::Write(unsigned char v) { return impl()->WriteOrdered(&v, 1); }
int Kalvo_String::Write(short v) { return impl()->WriteOrdered(&v, 2); }
int Kalvo_String::Write(unsigned short v) { return impl()->WriteOrdered(&v, 2); }
int Kalvo_String::Write(int v) { return impl()->WriteOrdered(&v, 4); }
int Kalvo_String::Write(unsigned int v) { return impl()->WriteOrdered(&v, 4); }
int Kalvo_String::Write(long v) { return Write(static_cast<int>(v)); }
int Kalvo_String::Write(unsigned long v) { return Write(static_cast<unsigned int>(v)); }
int Kalvo_String::Write(float v) { return impl()->WriteOrdered(&v, 4); }
int Kalvo_String::Write(double v) { return impl()->WriteOrdered(&v, 8); }
int Kalvo_String::Write(long double v) { return Write(static_cast<double>(v)); }
int Kalvo_String::Write(const char* p, int n) { return impl()->WriteBlock(p, n); }
void Kalvo_String::SetOrderFlag(int flag) { impl()->SetOrderFlag(flag); }

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
  impl()->Format(fmt, args);
  return this;
}

Kalvo_String* Kalvo_String::vsprintf_append(const char* fmt, va_list args) {
  impl()->AppendFormat(fmt, args);
  return this;
}

Kalvo_String* Kalvo_String::vinsert(int pos, const char* fmt, va_list args) {
  impl()->InsertFormat(pos, fmt, args);
  return this;
}

// --- Numbers and dates --------------------------------------------------------------

long Kalvo_String::ToInt(int base) const { return impl()->ToInt(base); }
double Kalvo_String::ToFloat() const { return impl()->ToFloat(); }
char Kalvo_String::ToChar() const { return impl()->ToChar(); }
long Kalvo_String::ToTime(const char* fmt) const { return text::ParseDate(impl()->Text(), fmt); }
long Kalvo_String::GetTimePeriod(const char* fmt) { return text::DatePeriod(fmt); }

Kalvo_String* Kalvo_String::FormatDate(long t, const char* fmt) {
  impl()->FormatDate(t, fmt);
  return this;
}

Kalvo_String* Kalvo_String::Append_FormatDate(long t, const char* fmt) {
  impl()->AppendDate(t, fmt);
  return this;
}

// --- Searching and Base64 -----------------------------------------------------------

const char* Kalvo_String::Find(int start, const char* pat, int& pos, int patlen) {
  return impl()->Find(start, pat, pos, patlen);
}

const char* Kalvo_String::FindLast(const char* pat, int& pos, int patlen) {
  return impl()->FindLast(pat, pos, patlen);
}

int Kalvo_String::FindLastChar(char c) const { return impl()->FindLastChar(c); }

const char* Kalvo_String::MatchBrack(int start, const char* open, const char* close, int& openpos,
                                     int& closepos) {
  return impl()->MatchBrack(start, open, close, openpos, closepos);
}

const char* Kalvo_String::Base64Encode(const char* p, int n) { return impl()->AppendBase64(p, n); }

const char* Kalvo_String::Base64Decode(const char* text) {
  return impl()->AppendDecodedBase64(text);
}

const char* Kalvo_String::Base64Decode(const char* p, int n) {
  return impl()->AppendDecodedBase64(p, n);
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
