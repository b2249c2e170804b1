#include "config/ini_profile.h"
#include "kalvobase/ini.h"

extern "C" {

int Kalvo_Xini_GetPrivateProfileInt(const char* section, const char* key, int defaultValue,
                                    const char* file) {
  return ini::ReadProfileInt(section, key, defaultValue, file);
}

int Kalvo_Xini_GetPrivateProfileString(const char* section, const char* key,
                                       const char* defaultValue, char* buf, int size,
                                       const char* file) {
  return ini::ReadProfileString(section, key, defaultValue, buf, size, file);
}

int Kalvo_Xini_WritePrivateProfileInt(const char* section, const char* key, int value,
                                      const char* file) {
  return ini::WriteProfileInt(section, key, value, file);
}

int Kalvo_Xini_WritePrivateProfileString(const char* section, const char* key, const char* value,
                                         const char* file) {
  return ini::WriteProfileString(section, key, value, file);
}
}
