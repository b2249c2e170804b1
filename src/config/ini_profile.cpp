#include "config/ini_profile.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "config/mp_xini.h"

namespace ini {

int ReadProfileInt(const char* section, const char* key, int defaultValue, const char* file) {
  MP_XIni document;
  document.Read(file);
  document.MoveToPlain(section);
  int value = 0;
  return document.ReadInteger(key, &value) == MP_XIni::kFound ? value : defaultValue;
}

int ReadProfileString(const char* section, const char* key, const char* defaultValue, char* buf,
                      int size, const char* file) {
  const std::string fallback = defaultValue != nullptr ? defaultValue : "";  // it may be buf
  MP_XIni document;
  document.Read(file);
  document.MoveToPlain(section);
  const int n = document.ReadText(key, buf, size, 1);
  if (n >= 0 || buf == nullptr || size < 1) return std::max(n, 0);
  const std::size_t length = std::min(fallback.size(), static_cast<std::size_t>(size) - 1);
  std::memcpy(buf, fallback.c_str(), length);
  buf[length] = '\0';
  return static_cast<int>(length);
}

int WriteProfileInt(const char* section, const char* key, int value, const char* file) {
  return WriteProfileString(section, key, std::to_string(value).c_str(), file);
}

int WriteProfileString(const char* section, const char* key, const char* value, const char* file) {
  MP_XIni document;
  document.Read(file);
  document.MoveToFormatted("%s", section);
  if (document.WriteText(key, value) == 0) return 0;
  document.Dump(file);
  return 1;
}

}  // namespace ini
