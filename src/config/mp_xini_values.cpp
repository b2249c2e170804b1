// Values of keys: texts in the document, numbers and characters to the host.

#include <algorithm>
#include <climits>
#include <cstring>

#include "config/ini_text.h"
#include "config/mp_xini.h"
#include "text/mp_string.h"

namespace {

constexpr char kHexFormat[] = "0x%x";

void Format(MP_String* out, const char* format, ...) {
  va_list args;
  va_start(args, format);
  out->Format(format, args);
  va_end(args);
}

}  // namespace

int MP_XIni::Find(const char* key, const std::string** value) const {
  if (current_ == nullptr) return kNoSection;
  const IniEntry* entry = key != nullptr ? current_->entries.Find(key) : nullptr;
  if (entry == nullptr) return kNoKey;
  *value = &entry->text;
  return kFound;
}

int MP_XIni::ReadCharacter(const char* key, char* out) const {
  const std::string* value = nullptr;
  const int found = Find(key, &value);
  if (found == kFound && out != nullptr) *out = ini::ReadCharacter(*value);
  return found;
}

template <class Number>
int MP_XIni::ReadInteger(const char* key, Number* out) const {
  const std::string* value = nullptr;
  const int found = Find(key, &value);
  if (found == kFound && out != nullptr) *out = static_cast<Number>(ini::ReadInteger(*value));
  return found;
}

template int MP_XIni::ReadInteger(const char*, short*) const;
template int MP_XIni::ReadInteger(const char*, int*) const;

template <class Number>
int MP_XIni::ReadFloat(const char* key, Number* out) const {
  const std::string* value = nullptr;
  const int found = Find(key, &value);
  if (found == kFound && out != nullptr) *out = static_cast<Number>(ini::ReadFloat(*value));
  return found;
}

template int MP_XIni::ReadFloat(const char*, float*) const;
template int MP_XIni::ReadFloat(const char*, double*) const;

// A text of `size` - 1 bytes or more is cut to `size` - `spare`.
int MP_XIni::ReadText(const char* key, char* buf, int size, int spare) const {
  const std::string* value = nullptr;
  const int found = Find(key, &value);
  if (buf == nullptr || size < 1) return std::min(found, kNoKey);
  *buf = '\0';
  if (found != kFound) return found;
  const int length = static_cast<int>(std::min<std::size_t>(std::strlen(value->c_str()), INT_MAX));
  const int n = length < size - 1 ? length : std::max(size - spare, 0);
  std::memcpy(buf, value->c_str(), static_cast<std::size_t>(n));
  buf[n] = '\0';
  return n;
}

const char* MP_XIni::ReadString(const char* key, const char* defaultValue) const {
  const std::string* value = nullptr;
  return Find(key, &value) == kFound ? value->c_str() : defaultValue;
}

// Key and text may be texts of this document.
int MP_XIni::WriteText(const char* key, const char* text) {
  if (current_ == nullptr) return 0;
  const std::string value = text != nullptr ? text : "";
  if (key == nullptr || *key == '\0') {
    current_->entries.AddComment(value);
  } else {
    current_->entries.Set(key, value);
  }
  return 1;
}

int MP_XIni::WriteCharacter(const char* key, unsigned char c, std::uint32_t value) {
  return WriteText(key, ini::CharacterText(c, value).c_str());
}

template <class Number>
int MP_XIni::WriteNumber(const char* key, Number value, const char* format, int hex) {
  MP_String text;
  Format(&text, hex != 0 ? kHexFormat : format, value);
  return WriteText(key, text.Text());
}

template int MP_XIni::WriteNumber(const char*, int, const char*, int);
template int MP_XIni::WriteNumber(const char*, unsigned int, const char*, int);
template int MP_XIni::WriteNumber(const char*, double, const char*, int);
