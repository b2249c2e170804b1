#include "config/mp_xini.h"

Kalvo_XIni::Kalvo_XIni() : impl_(new MP_XIni) {}
Kalvo_XIni::Kalvo_XIni(const char* file) : Kalvo_XIni() { impl_->Read(file); }
Kalvo_XIni::Kalvo_XIni(const Kalvo_XIni& other) = default;
Kalvo_XIni::~Kalvo_XIni() { delete impl_; }

Kalvo_XIni& Kalvo_XIni::operator=(const Kalvo_XIni& other) {
  impl_->CopyFrom(*other.impl_);
  return *this;
}

// --- The file -----------------------------------------------------------------------

int Kalvo_XIni::Read(const char* file) { return impl_->Read(file); }
int Kalvo_XIni::Dump(const char* file) { return impl_->Dump(file); }
const char* Kalvo_XIni::GetFileName() { return impl_->FileName(); }

// --- The cursor ---------------------------------------------------------------------

const char* Kalvo_XIni::SetSectionName(const char* path, ...) {
  va_list args;
  va_start(args, path);
  const char* result = impl_->MoveTo(path, args);
  va_end(args);
  return result;
}

const char* Kalvo_XIni::VSetSectionName(const char* path, va_list args) {
  return impl_->MoveTo(path, args);
}

const char* Kalvo_XIni::GetSectionName() { return impl_->Path(); }

const char* Kalvo_XIni::ToChildSection(const char* name, int index) {
  return impl_->MoveToChild(name, index);
}

void Kalvo_XIni::ToParentSection() { impl_->MoveToParent(); }
void Kalvo_XIni::ToTopSection() { impl_->MoveToTop(); }

// --- Sections and keys --------------------------------------------------------------

void Kalvo_XIni::AddSection(const char* name) { impl_->AddSection(name); }
void Kalvo_XIni::RemoveSection() { impl_->RemoveSection(); }
void Kalvo_XIni::RemoveChildSection(const char* name, int index) {
  impl_->RemoveChild(name, index);
}
void Kalvo_XIni::RemoveKey(const char* key) { impl_->RemoveKey(key); }
int Kalvo_XIni::GetChildSectionCount(const char* name) { return impl_->ChildCount(name); }
const char* Kalvo_XIni::GetChildSectionName(int i) { return impl_->ChildName(i); }
int Kalvo_XIni::GetKVCount() { return impl_->EntryCount(); }
const char* Kalvo_XIni::GetFirstKeyName() { return impl_->FirstKey(); }
const char* Kalvo_XIni::GetNextKeyName() { return impl_->NextKey(); }
Kalvo_String* Kalvo_XIni::GetTailComment(const char* key) { return impl_->TailComment(key); }

// --- Reading ------------------------------------------------------------------------

int Kalvo_XIni::Read(const char* key, char* out) { return impl_->ReadCharacter(key, out); }

int Kalvo_XIni::Read(const char* key, unsigned char* out) {
  return impl_->ReadCharacter(key, reinterpret_cast<char*>(out));
}

int Kalvo_XIni::Read(const char* key, short* out) { return impl_->ReadInteger(key, out); }
int Kalvo_XIni::Read(const char* key, int* out) { return impl_->ReadInteger(key, out); }
int Kalvo_XIni::Read(const char* key, float* out) { return impl_->ReadFloat(key, out); }
int Kalvo_XIni::Read(const char* key, double* out) { return impl_->ReadFloat(key, out); }

int Kalvo_XIni::Read(const char* key, char* buf, int size) {
  return impl_->ReadText(key, buf, size, 1);
}

int Kalvo_XIni::Read(const char* key, unsigned char* buf, int size) {
  return impl_->ReadText(key, reinterpret_cast<char*>(buf), size, 2);
}

const char* Kalvo_XIni::ReadString(const char* key, const char* defaultValue) {
  return impl_->ReadString(key, defaultValue);
}

// --- Writing ------------------------------------------------------------------------

int Kalvo_XIni::Write(const char* key, char value) {
  return impl_->WriteCharacter(key, static_cast<unsigned char>(value),
                               static_cast<std::uint32_t>(static_cast<signed char>(value)));
}

int Kalvo_XIni::Write(const char* key, unsigned char value) {
  return impl_->WriteCharacter(key, value, value);
}

int Kalvo_XIni::Write(const char* key, short value, int hex) {
  return Write(key, static_cast<int>(value), hex);
}

int Kalvo_XIni::Write(const char* key, unsigned short value, int hex) {
  return Write(key, static_cast<unsigned int>(value), hex);
}

int Kalvo_XIni::Write(const char* key, int value, int hex) {
  return impl_->WriteNumber(key, value, "%d", hex);
}

int Kalvo_XIni::Write(const char* key, unsigned int value, int hex) {
  return impl_->WriteNumber(key, value, "%u", hex);
}

int Kalvo_XIni::Write(const char* key, long value, int hex) {
  return Write(key, static_cast<int>(value), hex);
}

int Kalvo_XIni::Write(const char* key, unsigned long value, int hex) {
  return Write(key, static_cast<unsigned int>(value), hex);
}

int Kalvo_XIni::Write(const char* key, float value) {
  return Write(key, static_cast<double>(value));
}

int Kalvo_XIni::Write(const char* key, double value) {
  return impl_->WriteNumber(key, value, "%f");
}

int Kalvo_XIni::Write(const char* key, const char* text) { return impl_->WriteText(key, text); }

int Kalvo_XIni::Write(const char* key, const unsigned char* text) {
  return impl_->WriteText(key, reinterpret_cast<const char*>(text));
}
