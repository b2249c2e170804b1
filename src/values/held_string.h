// A Kalvo_String that has its implementation inside itself, so that it is one block of memory.

#ifndef KALVOBASE_SRC_VALUES_HELD_STRING_H_
#define KALVOBASE_SRC_VALUES_HELD_STRING_H_

#include "kalvobase/text.h"
#include "text/mp_string.h"

struct MP_HeldStringBody {
  MP_String body;
};

class MP_HeldString final : private MP_HeldStringBody, public Kalvo_String {
 public:
  MP_HeldString() : Kalvo_String(MP_HeldStringBody::body) {}
  MP_HeldString(const MP_HeldString&) = delete;
  MP_HeldString& operator=(const MP_HeldString&) = delete;
  ~MP_HeldString() override { cursor_ = nullptr; }  // for which there is nothing to delete

  MP_String& body() { return MP_HeldStringBody::body; }
};

#endif  // KALVOBASE_SRC_VALUES_HELD_STRING_H_
