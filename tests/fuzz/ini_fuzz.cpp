// Any bytes are an INI document, and a save soon leaves what the next one leaves.

#include <kalvobase/kalvobase.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "support/ini_values.h"

namespace {

const std::string& Path() {
  static const std::string path = "/dev/shm/kalvobase_ini_fuzz." + std::to_string(getpid());
  return path;
}

std::string Content() {
  std::ifstream file(Path(), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// A save of what a read of the last one gave.
std::string SaveAgain() {
  Kalvo_XIni ini;
  if (ini.Read(Path().c_str()) != 1 || ini.Dump(Path().c_str()) != 1) std::abort();
  return Content();
}

// The same text without the blanks that comments of tags grow by.
std::string WithoutGrowth(const std::string& text) {
  std::string result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t start = std::min(line.find_first_not_of('\t'), line.size());
    const char open = start < line.size() ? line[start] : ' ';
    const std::size_t end = line.find(open == '[' ? ']' : '>', start);
    if ((open == '[' || open == '<') && end != std::string::npos) {
      const std::size_t comment = line.find_first_not_of(' ', end + 1);
      line = line.substr(0, end + 1) + (comment != std::string::npos ? line.substr(comment) : "");
    }
    result += line + "\n";
  }
  return result;
}

// A tag without an end, or without a name, becomes a comment without its first byte, which may
// again be such a tag: so many saves it takes until all stays as it is.
int BrokenTags(const std::string& text) {
  int most = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
    for (int broken = 1;; ++broken) {
      const std::size_t start = std::min(line.find_first_not_of(" \t"), line.size());
      line.erase(0, start);
      if (line.empty() || (line[0] != '<' && line[0] != '[')) break;
      const std::string name = line.substr(1, line.find(line[0] == '[' ? ']' : '>') - 1);
      const bool ends = name.size() + 1 < line.size();
      const bool named = name.find_first_not_of(" \t") != std::string::npos;
      if (ends && named && name.find('\0') == std::string::npos) break;
      most = std::max(most, broken);
      line.erase(0, 1);
    }
  }
  return most;
}

void Require(bool condition, const char* what, const std::string& before,
             const std::string& after) {
  if (condition) return;
  std::fprintf(stderr, "not so: %s\n---\n%s---\n%s", what, before.c_str(), after.c_str());
  std::abort();
}

void Use(Kalvo_XIni* ini) {
  int number = 0;
  char text[8];
  ini->SetSectionName("a[%d].b", 1);
  for (int i = ini->GetKVCount(); i > 0; --i) {
    const char* key = ini->GetNextKeyName();
    ini->Read(key, &number);
    ini->Read(key, text, sizeof(text));
    ini->Write(key, "new");
  }
  ini->RemoveSection();
  Kalvo_XIni copy;
  copy = *ini;
  copy.RemoveChildSection(copy.GetChildSectionName(0), -1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::ofstream(Path(), std::ios::binary) << text;
  Kalvo_XIni ini(Path().c_str());
  support::IniValues values;
  support::Collect(&ini, "", &values);
  Use(&ini);
  const int broken = BrokenTags(text);
  if (broken > 8) return 0;
  std::string last = SaveAgain();
  if (broken == 0) {
    Kalvo_XIni again(Path().c_str());
    support::IniValues kept;
    support::Collect(&again, "", &kept);
    Require(kept == values, "a save keeps all values", text, last);
  }
  for (int i = 0; i <= broken; ++i) last = SaveAgain();
  const std::string next = SaveAgain();
  Require(WithoutGrowth(last) == WithoutGrowth(next), "a save leaves what the last one left", last,
          next);
  std::remove(Path().c_str());
  return 0;
}
