#include "machine.h"

#include <cstdio>
#include <ctime>

#include "sample.h"

namespace {

constexpr double kKibPerMib = 1024;
constexpr double kBytesPerMib = 1024 * 1024;

// The whole text of a file; empty if it cannot be read.
Kalvo_String ReadText(const char* path) {
  Kalvo_String text;
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr) return text;
  char block[4096];
  while (const std::size_t n = std::fread(block, 1, sizeof(block), file)) {
    text.memcat(block, static_cast<int>(n));
  }
  std::fclose(file);
  return text;
}

// The words of a line, however many blanks stand between and in front of them.
void SplitWords(Kalvo_String* line, Kalvo_StringArray* words) {
  line->replace('\t', ' ');
  line->Trim();
  words->Split(line->c_str(), ' ', 1);
}

class Sampler {
 public:
  explicit Sampler(Kalvo_Queue* queue) : queue_(queue), now_(std::time(nullptr)) {}

  void Load() {
    static const char* const kNames[] = {"load.1min", "load.5min", "load.15min"};
    Kalvo_String text = ReadText("/proc/loadavg");
    Kalvo_StringArray words;
    SplitWords(&text, &words);
    for (int i = 0; i < 3 && i < words.GetSize(); ++i) Add(kNames[i], words[i]->ToFloat(), "");
  }

  void Memory() {
    Kalvo_StringArray lines;
    lines.Split(ReadText("/proc/meminfo").c_str(), '\n', 1);
    double total = 0;
    double available = 0;
    for (int i = 0; i < lines.GetSize(); ++i) {
      Kalvo_StringArray words;
      SplitWords(lines[i], &words);
      if (words.GetSize() < 2) continue;
      if (*words[0] == "MemTotal:") total = words[1]->ToFloat() / kKibPerMib;
      if (*words[0] == "MemAvailable:") available = words[1]->ToFloat() / kKibPerMib;
    }
    if (total <= 0) return;
    Add("memory.total", total, "MiB");
    Add("memory.used", total - available, "MiB");
    Add("memory.used.share", (total - available) / total * 100, "%");
  }

  // "  eth0: received packets ... (8 numbers) sent packets ..."
  void Network() {
    Kalvo_StringArray lines;
    lines.Split(ReadText("/proc/net/dev").c_str(), '\n', 1);
    for (int i = 0; i < lines.GetSize(); ++i) {
      int colon = 0;
      if (lines[i]->Find(0, ":", colon, 0) == nullptr) continue;  // the two heading lines
      Kalvo_String interface(lines[i]->c_str(), colon);
      interface.Trim();
      lines[i]->Delete(0, colon + 1);
      Kalvo_StringArray words;
      SplitWords(lines[i], &words);
      if (words.GetSize() < 9) continue;
      Kalvo_String name;
      name.sprintf("net.%s.received", interface.c_str());
      Add(name.c_str(), words[0]->ToFloat() / kBytesPerMib, "MiB");
      name.sprintf("net.%s.sent", interface.c_str());
      Add(name.c_str(), words[8]->ToFloat() / kBytesPerMib, "MiB");
    }
  }

  int count() const { return count_; }

 private:
  void Add(const char* name, double value, const char* unit) {
    queue_->AddItemAtTail(new Sample(name, value, unit, now_));
    ++count_;
  }

  Kalvo_Queue* queue_;
  long now_;
  int count_ = 0;
};

}  // namespace

Kalvo_String SystemName() {
  Kalvo_StringArray lines;
  lines.Split(ReadText("/etc/os-release").c_str(), '\n', 1);
  for (int i = 0; i < lines.GetSize(); ++i) {
    Kalvo_StringArray parts;
    parts.Split(lines[i], '=', 0);
    if (parts.GetSize() != 2 || *parts[0] != "PRETTY_NAME") continue;
    parts[1]->replace_all(0, "\"", "");
    return *parts[1];
  }
  return Kalvo_String("an unknown system");
}

int TakeSamples(Kalvo_Queue* queue) {
  Sampler sampler(queue);
  sampler.Load();
  sampler.Memory();
  sampler.Network();
  return sampler.count();
}
