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

// A tag without an end becomes a comment without its first byte, which may again be a tag
// without an end: so many saves it takes.
int BrokenTags(const std::string& text) {
  int most = 0;
  int run = 0;
  for (const char c : text) {
    if (c == '<' || c == '[') {
      most = std::max(most, ++run);
    } else if (c != ' ' && c != '\t' && c != '\r') {
      run = 0;
    }
  }
  return most;
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
  Use(&ini);
  const int rounds = BrokenTags(text) + 2;
  if (rounds > 10) return 0;
  std::string last;
  for (int i = 0; i < rounds; ++i) last = SaveAgain();
  const std::string next = SaveAgain();
  if (WithoutGrowth(last) != WithoutGrowth(next)) {
    std::fprintf(stderr, "not so: a save leaves what the last one left\n---\n%s---\n%s",
                 last.c_str(), next.c_str());
    std::abort();
  }
  std::remove(Path().c_str());
  return 0;
}
