// What an INI document holds.

#ifndef KALVOBASE_TESTS_SUPPORT_INI_VALUES_H_
#define KALVOBASE_TESTS_SUPPORT_INI_VALUES_H_

#include <map>
#include <string>
#include <utility>

#include "kalvobase/ini.h"
#include "kalvobase/text.h"

namespace support {

// All values and what stands behind them, by where they are.
using IniValues = std::map<std::string, std::pair<std::string, std::string>>;

inline void Collect(Kalvo_XIni* ini, const std::string& path, IniValues* values) {
  const int entries = ini->GetKVCount();
  for (int i = 0; i < entries; ++i) {
    const char* key = i == 0 ? ini->GetFirstKeyName() : ini->GetNextKeyName();
    if (key == nullptr) continue;
    (*values)[path + "/" + key] = {ini->ReadString(key, nullptr),
                                   ini->GetTailComment(key)->c_str()};
  }
  const int groups = ini->GetChildSectionCount(nullptr);
  for (int group = 0; group < groups; ++group) {
    const std::string name = ini->GetChildSectionName(group);
    const int sections = ini->GetChildSectionCount(name.c_str());
    for (int i = 0; i < sections; ++i) {
      ini->ToChildSection(name.c_str(), i);
      Collect(ini, path + "/" + name + "[" + std::to_string(i) + "]", values);
      ini->ToParentSection();
    }
  }
}

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_INI_VALUES_H_
