#include <string>

#include "kalvobase/process.h"
#include "kalvobase/text.h"
#include "platform/clock.h"
#include "platform/process.h"

namespace {

const char* Store(Kalvo_String* s, const std::string& text) {
  if (s == nullptr) return "";
  s->memcpy(text.data(), static_cast<int>(text.size()));
  return s->c_str();
}

}  // namespace

extern "C" const char* Kalvo_GetExeFullName(Kalvo_String* s) {
  return Store(s, platform::executable_path());
}

extern "C" const char* Kalvo_GetExePath(Kalvo_String* s) {
  const std::string path = platform::executable_path();
  return Store(s, path.substr(0, path.rfind(platform::kPathSeparator)));
}

extern "C" const char* Kalvo_GetExeBaseName(Kalvo_String* s) {
  const std::string path = platform::executable_path();
  return Store(s, path.substr(path.rfind(platform::kPathSeparator) + 1));
}

extern "C" void Kalvo_Thread_Sleep(unsigned long ms) {
  platform::sleep_ms(static_cast<std::uint32_t>(ms));
}

extern "C" unsigned long Kalvo_THREAD_GetTickCount(void) { return platform::tick_count(); }
