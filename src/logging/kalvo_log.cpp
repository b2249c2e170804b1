#include <new>

#include "kalvobase/log.h"
#include "logging/mp_log.h"
#include "monitor/kalvo_kobj_manager.h"

// What handles that are copies of each other share.
struct MP_LogHolder {
  MP_Log* log;
};

namespace {

// Of a handle for which there was no memory, too.
MP_Log* LogOf(const MP_LogHolder* holder) { return holder != nullptr ? holder->log : nullptr; }

}  // namespace

Kalvo_Log::Kalvo_Log(int) : impl_(new (std::nothrow) MP_LogHolder{nullptr}) {
  Kalvo_KObjManager* const monitor = Kalvo_KObjManager::Get();
  if (impl_ != nullptr && monitor != nullptr) impl_->log = monitor->NewLog();
}
Kalvo_Log::Kalvo_Log(const Kalvo_Log& other) = default;
Kalvo_Log& Kalvo_Log::operator=(const Kalvo_Log& other) = default;
Kalvo_Log::~Kalvo_Log() {
  Kalvo_KObjManager* const monitor = Kalvo_KObjManager::Get();
  if (monitor != nullptr) monitor->DeleteLog(LogOf(impl_));
  delete impl_;
}

void Kalvo_Log::Init(const char* name, int level) {
  if (MP_Log* log = LogOf(impl_)) log->Init(name, level);
}
void Kalvo_Log::SetMainDir(const char* dir) {
  if (MP_Log* log = LogOf(impl_)) log->SetMainDirectory(dir);
}
void Kalvo_Log::changeLevel(int level) {
  if (MP_Log* log = LogOf(impl_)) log->ChangeLevel(level);
}
void Kalvo_Log::SetSizeLimit(int bytes) {
  if (MP_Log* log = LogOf(impl_)) log->SetSizeLimit(bytes);
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
  if (MP_Log* log = LogOf(impl_)) log->Print(level, format, args);
}
void Kalvo_Log::print(long time, int level, const char* format, va_list args) {
  if (MP_Log* log = LogOf(impl_)) log->Print(time, level, format, args);
}
void Kalvo_Log::HexLog(int level, const char* data, int length, const char* format, ...) {
  va_list args;
  va_start(args, format);
  HexPrint(level, data, length, format, args);
  va_end(args);
}
void Kalvo_Log::HexPrint(int level, const char* data, int length, const char* format,
                         va_list args) {
  if (MP_Log* log = LogOf(impl_)) log->HexPrint(level, data, length, format, args);
}
void Kalvo_Log::Write(const char* text) {
  if (MP_Log* log = LogOf(impl_)) log->Write(text);
}
void Kalvo_Log::FFlush() {
  if (MP_Log* log = LogOf(impl_)) log->Flush();
}
void Kalvo_Log::CheckFile() {
  if (MP_Log* log = LogOf(impl_)) log->CheckFile();
}
const char* Kalvo_Log::GetDirInfo() {
  MP_Log* const log = LogOf(impl_);
  return log != nullptr ? log->GetDirInfo() : "";
}
