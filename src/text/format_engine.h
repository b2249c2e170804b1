// The printf of the library: it serves strings and streams alike.

#ifndef KALVOBASE_SRC_TEXT_FORMAT_ENGINE_H_
#define KALVOBASE_SRC_TEXT_FORMAT_ENGINE_H_

#include <cstdarg>
#include <functional>

#include "files/mp_stream_core.h"

namespace text {

// Appends the formatted text to `core` and writes no terminator. Returns the number of
// bytes, or -1 if they could not be stored; what came before the failure stays. Line feeds
// of the format go through the core's line hook, those of the arguments do not. `args` is
// left as it was. Neither format nor arguments may lie in the core's own buffer.
int Format(MP_StreamCore* core, const char* format, va_list args);

// The same, and `ended` is called for each '.' of the format itself that is no part of a
// conversion, before it is stored. If it gives false the formatting ends there with -1.
int FormatSegments(MP_StreamCore* core, const char* format, va_list args,
                   const std::function<bool()>& ended);

}  // namespace text

#endif  // KALVOBASE_SRC_TEXT_FORMAT_ENGINE_H_
