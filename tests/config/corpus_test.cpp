// Documents as people have them: read, changed and saved, with all that was not changed kept.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>

#include "kalvobase/ini.h"
#include "support/folder.h"
#include "support/ini_values.h"

namespace {

// The lines that are comments, without the blanks in front.
std::multiset<std::string> Comments(const std::string& text) {
  std::multiset<std::string> comments;
  std::istringstream lines(text);
  bool inBlock = false;
  for (std::string line; std::getline(lines, line);) {
    line.erase(0, line.find_first_not_of(" \t"));
    line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
    if (line.rfind("/*", 0) == 0) inBlock = true;
    const bool isKey = line.find('=') != std::string::npos && line[0] != '#' && line[0] != ';';
    if (inBlock || (!isKey && line[0] != '[' && line[0] != '<')) comments.insert(line);
    if (line.rfind("*/", 0) == 0) inBlock = false;
  }
  return comments;
}

TEST(IniCorpus, WhatIsNotTouchedStays) {
  const support::Folder folder;
  const std::string saved = folder.Path("saved.ini");
  int documents = 0;
  for (const auto& file : std::filesystem::directory_iterator(KALVOBASE_INI_CORPUS)) {
    SCOPED_TRACE(file.path().filename().string());
    ++documents;
    Kalvo_XIni ini(file.path().c_str());
    support::IniValues before;
    support::Collect(&ini, "", &before);
    EXPECT_GE(before.size(), 2u);

    const std::string section = ini.GetChildSectionName(0);
    ini.ToChildSection(section.c_str(), 0);
    const std::string key = ini.GetFirstKeyName();
    EXPECT_EQ(ini.Write(key.c_str(), "changed"), 1);
    EXPECT_EQ(ini.Write("added by the test", 42, 0), 1);
    ASSERT_EQ(ini.Dump(saved.c_str()), 1);

    before["/" + section + "[0]/" + key] = {"changed", ""};
    before["/" + section + "[0]/added by the test"] = {"42", ""};
    support::IniValues after;
    Kalvo_XIni again(saved.c_str());
    support::Collect(&again, "", &after);
    EXPECT_EQ(after, before);
    EXPECT_EQ(Comments(support::Content(saved)), Comments(support::Content(file.path())));
  }
  EXPECT_EQ(documents, 7);
}

}  // namespace
