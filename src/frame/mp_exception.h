#ifndef KALVOBASE_SRC_FRAME_MP_EXCEPTION_H_
#define KALVOBASE_SRC_FRAME_MP_EXCEPTION_H_

#include <cstdarg>

#include "kalvobase/text.h"

class MP_Exception {
 public:
  MP_Exception() = default;
  MP_Exception(int errorLevel, int errorCode, const char* text)
      : level(errorLevel), code(errorCode), message(text) {}

  void Format(const char* format, va_list args) { message.vsprintf(format, args); }

  int level = 0;
  int code = 0;
  Kalvo_String message;
};

#endif  // KALVOBASE_SRC_FRAME_MP_EXCEPTION_H_
