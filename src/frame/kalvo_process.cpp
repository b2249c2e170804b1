#include "kalvobase/process.h"
#include "kalvobase/text.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "platform/process.h"

namespace {

// Stores a part of the executable's path in *s: all of it, or what lies before or behind
// its last separator.
enum class Part { kWhole, kDirectory, kName };

const char* StorePath(Kalvo_String* s, Part part) {
  if (s == nullptr) return "";
  s->strcpy(platform::executable_path().c_str());
  const int separator = s->FindLastChar(platform::kPathSeparator);
  if (part == Part::kDirectory) s->truncate(separator);
  if (part == Part::kName) s->Delete(0, separator + 1);
  return s->c_str();
}

}  // namespace

extern "C" const char* Kalvo_GetExeFullName(Kalvo_String* s) { return StorePath(s, Part::kWhole); }

extern "C" const char* Kalvo_GetExePath(Kalvo_String* s) { return StorePath(s, Part::kDirectory); }

extern "C" const char* Kalvo_GetExeBaseName(Kalvo_String* s) { return StorePath(s, Part::kName); }

extern "C" void Kalvo_Thread_Sleep(unsigned long ms) {
  platform::sleep_ms(static_cast<std::uint32_t>(ms));
}

extern "C" unsigned long Kalvo_THREAD_GetTickCount(void) { return platform::tick_count(); }
