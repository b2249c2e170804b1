#include "kalvobase/log.h"
#include "logging/mp_log.h"
#include "monitor/kalvo_kobj_manager.h"

Kalvo_Log::Kalvo_Log(int) : impl_(nullptr) {
  if (Kalvo_KObjManager* monitor = Kalvo_KObjManager::Get()) impl_ = monitor->NewLog();
}
Kalvo_Log::Kalvo_Log(const Kalvo_Log& other) = default;
Kalvo_Log& Kalvo_Log::operator=(const Kalvo_Log& other) = default;
Kalvo_Log::~Kalvo_Log() {
  if (Kalvo_KObjManager* monitor = Kalvo_KObjManager::Find()) monitor->DeleteLog(impl_);
}

void Kalvo_Log::Init(const char* name, int level) {
  if (impl_ != nullptr) impl_->Init(name, level);
}
void Kalvo_Log::SetMainDir(const char* dir) {
  if (impl_ != nullptr) impl_->SetMainDirectory(dir);
}
void Kalvo_Log::changeLevel(int level) {
  if (impl_ != nullptr) impl_->ChangeLevel(level);
}
void Kalvo_Log::SetSizeLimit(int bytes) {
  if (impl_ != nullptr) impl_->SetSizeLimit(bytes);
}
void Kalvo_Log::SetLineLimit(int) {}

void Kalvo_Log::Trace(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  print(level, format, args);
  va_end(args);
}
void Kalvo_Log::Trace(long time, int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  print(time, level, format, args);
  va_end(args);
}
void Kalvo_Log::print(int level, const char* format, va_list args) {
  if (impl_ != nullptr) impl_->Print(level, format, args);
}
void Kalvo_Log::print(long time, int level, const char* format, va_list args) {
  if (impl_ != nullptr) impl_->Print(time, level, format, args);
}
void Kalvo_Log::HexLog(int level, const char* data, int length, const char* format, ...) {
  va_list args;
  va_start(args, format);
  HexPrint(level, data, length, format, args);
  va_end(args);
}
void Kalvo_Log::HexPrint(int level, const char* data, int length, const char* format,
                         va_list args) {
  if (impl_ != nullptr) impl_->HexPrint(level, data, length, format, args);
}
void Kalvo_Log::Write(const char* text) {
  if (impl_ != nullptr) impl_->Write(text);
}
void Kalvo_Log::FFlush() {
  if (impl_ != nullptr) impl_->Flush();
}
void Kalvo_Log::CheckFile() {
  if (impl_ != nullptr) impl_->CheckFile();
}
const char* Kalvo_Log::GetDirInfo() { return impl_ != nullptr ? impl_->GetDirInfo() : ""; }
