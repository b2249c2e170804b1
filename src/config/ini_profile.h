// One value of one file, in one call. What the exported functions do, results included.

#ifndef KALVOBASE_SRC_CONFIG_INI_PROFILE_H_
#define KALVOBASE_SRC_CONFIG_INI_PROFILE_H_

namespace ini {

int ReadProfileInt(const char* section, const char* key, int defaultValue, const char* file);
int ReadProfileString(const char* section, const char* key, const char* defaultValue, char* buf,
                      int size, const char* file);
int WriteProfileInt(const char* section, const char* key, int value, const char* file);
int WriteProfileString(const char* section, const char* key, const char* value, const char* file);

}  // namespace ini

#endif  // KALVOBASE_SRC_CONFIG_INI_PROFILE_H_
