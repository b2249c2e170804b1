#include <new>

#include "frame/mp_exception.h"
#include "kalvobase/exception.h"

Kalvo_Exception::Kalvo_Exception() : impl_(new (std::nothrow) MP_Exception) {}

Kalvo_Exception::Kalvo_Exception(const char* format, ...) : impl_(new (std::nothrow) MP_Exception) {
  va_list args;
  va_start(args, format);
  VFormatMsg(format, args);
  va_end(args);
}

Kalvo_Exception::Kalvo_Exception(int code, const char* message)
    : impl_(new (std::nothrow) MP_Exception(0, code, message)) {}

Kalvo_Exception::Kalvo_Exception(int level, int code, const char* message)
    : impl_(new (std::nothrow) MP_Exception(level, code, message)) {}

// Ends the source by its destructor, which leaves it with a null impl_, as a thrown object
// that is copied and then destroyed must be. Its own storage is the caller's.
Kalvo_Exception::Kalvo_Exception(const Kalvo_Exception& other)
    : impl_(other.impl_ != nullptr ? new (std::nothrow) MP_Exception(*other.impl_)
                                   : new (std::nothrow) MP_Exception) {
  Kalvo_Exception& source = const_cast<Kalvo_Exception&>(other);
  delete source.impl_;
  source.impl_ = nullptr;
}

Kalvo_Exception& Kalvo_Exception::operator=(const Kalvo_Exception& other) {
  if (this == &other || other.impl_ == nullptr) return *this;
  if (impl_ == nullptr) impl_ = new (std::nothrow) MP_Exception;
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
