// Kalvo_Exception: an error level, an error code and a formatted message.
//
// For the host's own use: the library neither throws nor catches it.
//
//   try {
//     Kalvo_Exception error;
//     error.FormatMsg(3, 42, "cannot open %s", "gateway.ini");
//     throw error;
//   } catch (Kalvo_Exception& error) {
//     std::printf("%d: %s\n", error.getErrCode(), error.getMessage());
//   }
//
// Copy construction moves: it takes the state out of its source, so that an
// object that is thrown by value has one owner of its message at any time. The
// emptied source reads as level 0, code 0 and "" from then on, and its setters
// do nothing until something is assigned to it.
//
// One object belongs to one thread at a time.

#ifndef KALVOBASE_EXCEPTION_H_
#define KALVOBASE_EXCEPTION_H_

#include <cstdarg>

#include "kalvobase/types.h"

class MP_Exception;

class KALVO_API Kalvo_Exception {
 public:
  // Level 0, code 0, empty message.
  Kalvo_Exception();

  // Level 0, code 0, the message formatted as by Kalvo_String::sprintf.
  Kalvo_Exception(const char* format, ...);

  // The message is copied as it stands: it is no format. A null message is "".
  Kalvo_Exception(int code, const char* message);
  Kalvo_Exception(int level, int code, const char* message);

  // Takes level, code and message out of `other`, which is empty afterwards.
  Kalvo_Exception(const Kalvo_Exception& other);

  // Copies level, code and message; `other` stays as it was. Assigning an
  // emptied object changes nothing.
  Kalvo_Exception& operator=(const Kalvo_Exception& other);

  virtual ~Kalvo_Exception();

  int getErrCode() const;
  int getErrLevel() const;

  // Never null. Valid until the object is changed or destroyed.
  const char* getMessage() const;

  void setErrCode(int code);
  void setErrLevel(int level);

  // Replaces the message by the formatted text; level and code stay.
  void FormatMsg(const char* format, ...);
  void VFormatMsg(const char* format, va_list args);

  // Sets level and code too.
  void FormatMsg(int level, int code, const char* format, ...);
  void VFormatMsg(int level, int code, const char* format, va_list args);

 private:
  // Null in an object whose state was taken by a copy construction.
  MP_Exception* impl_;
};

#endif  // KALVOBASE_EXCEPTION_H_
