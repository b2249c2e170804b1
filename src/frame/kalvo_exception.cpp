#include <new>
#include <utility>

#include "frame/mp_exception.h"
#include "kalvobase/exception.h"

namespace {

// Null if memory ran out: an exception that cannot be told must not become another one.
template <class... Arguments>
MP_Exception* Make(const Arguments&... arguments) {
  try {
    return new MP_Exception(arguments...);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace

Kalvo_Exception::Kalvo_Exception() : impl_(Make()) {}

Kalvo_Exception::Kalvo_Exception(const char* format, ...) : impl_(Make()) {
  va_list args;
  va_start(args, format);
  VFormatMsg(format, args);
  va_end(args);
}

Kalvo_Exception::Kalvo_Exception(int code, const char* message) : impl_(Make(0, code, message)) {}

Kalvo_Exception::Kalvo_Exception(int level, int code, const char* message)
    : impl_(Make(level, code, message)) {}

// The source keeps nothing: a thrown object that is copied has one owner at any time.
Kalvo_Exception::Kalvo_Exception(const Kalvo_Exception& other)
    : impl_(std::exchange(const_cast<Kalvo_Exception&>(other).impl_, nullptr)) {}

Kalvo_Exception& Kalvo_Exception::operator=(const Kalvo_Exception& other) {
  if (this == &other || other.impl_ == nullptr) return *this;
  if (impl_ == nullptr) impl_ = Make();
  if (impl_ != nullptr) *impl_ = *other.impl_;
  return *this;
}

Kalvo_Exception::~Kalvo_Exception() {
  delete impl_;
  impl_ = nullptr;
}

int Kalvo_Exception::getErrCode() const { return impl_ != nullptr ? impl_->code : 0; }

int Kalvo_Exception::getErrLevel() const { return impl_ != nullptr ? impl_->level : 0; }

const char* Kalvo_Exception::getMessage() const {
  return impl_ != nullptr ? impl_->message.c_str() : "";
}

void Kalvo_Exception::setErrCode(int code) {
  if (impl_ != nullptr) impl_->code = code;
}

void Kalvo_Exception::setErrLevel(int level) {
  if (impl_ != nullptr) impl_->level = level;
}

void Kalvo_Exception::FormatMsg(const char* format, ...) {
  va_list args;
  va_start(args, format);
  VFormatMsg(format, args);
  va_end(args);
}

void Kalvo_Exception::VFormatMsg(const char* format, va_list args) {
  if (impl_ != nullptr) impl_->Format(format, args);
}

void Kalvo_Exception::FormatMsg(int level, int code, const char* format, ...) {
  va_list args;
  va_start(args, format);
  VFormatMsg(level, code, format, args);
  va_end(args);
}

void Kalvo_Exception::VFormatMsg(int level, int code, const char* format, va_list args) {
  setErrLevel(level);
  setErrCode(code);
  VFormatMsg(format, args);
}
