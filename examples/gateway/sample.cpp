#include "sample.h"

#include <ctime>

#include "machine.h"

namespace {

constexpr double kBytesPerMib = 1024 * 1024;

void TakeLoad(Kalvo_KValueTable* load) {
  static const char* const kNames[] = {"1min", "5min", "15min"};
  Kalvo_String text = ReadText("/proc/loadavg");
  Kalvo_StringArray words;
  SplitWords(&text, &words);
  for (int i = 0; i < 3 && i < words.GetSize(); ++i)
    load->Insert(kNames[i])->Set(words[i]->ToFloat());
}

void TakeMemory(Kalvo_KValueTable* memory) {
  Kalvo_StringArray lines;
  lines.Split(ReadText("/proc/meminfo").c_str(), '\n', 1);
  for (int i = 0; i < lines.GetSize(); ++i) {
    Kalvo_StringArray words;
    SplitWords(lines[i], &words);
    if (words.GetSize() < 2) continue;
    const char* name = *words[0] == "MemTotal:"       ? "total"
                       : *words[0] == "MemAvailable:" ? "available"
                                                      : nullptr;
    if (name == nullptr) continue;
    const unsigned long mib = static_cast<unsigned long>(words[1]->ToFloat() / 1024);
    memory->Insert(name)->Set(mib);
  }
}

// "cpu0 user nice system idle iowait irq softirq steal ..."
void TakeProcessors(Kalvo_KValueTable* processors) {
  constexpr int kIdle = 4;
  constexpr int kWaiting = 5;
  constexpr int kColumns = 9;
  Kalvo_StringArray lines;
  lines.Split(ReadText("/proc/stat").c_str(), '\n', 1);
  for (int i = 0; i < lines.GetSize(); ++i) {
    Kalvo_StringArray words;
    SplitWords(lines[i], &words);
    if (words.GetSize() < kColumns || *words[0] == "cpu") continue;
    if (Kalvo_String(words[0]->c_str(), 3) != "cpu") continue;
    unsigned long total = 0;
    unsigned long idle = 0;
    for (int column = 1; column < kColumns; ++column) {
      const unsigned long ticks = static_cast<unsigned long>(words[column]->ToFloat());
      total += ticks;
      if (column == kIdle || column == kWaiting) idle += ticks;
    }
    Kalvo_KValueTable* processor = processors->InsertTable(words[0]->c_str());
    processor->Insert("busy")->Set(total - idle);
    processor->Insert("total")->Set(total);
  }
}

bool IsWatched(const Kalvo_String& interface, const Kalvo_StringArray& interfaces) {
  for (int i = 0; i < interfaces.GetSize(); ++i) {
    if (*interfaces[i] == interface) return true;
  }
  return interfaces.GetSize() == 0;
}

// "  eth0: received packets ... (8 numbers) sent packets ..."
void TakeNetwork(const Kalvo_StringArray& interfaces, Kalvo_KValueTable* network) {
  Kalvo_StringArray lines;
  lines.Split(ReadText("/proc/net/dev").c_str(), '\n', 1);
  for (int i = 0; i < lines.GetSize(); ++i) {
    int colon = 0;
    if (lines[i]->Find(0, ":", colon, 0) == nullptr) continue;  // the two heading lines
    Kalvo_String name(lines[i]->c_str(), colon);
    name.Trim();
    if (!IsWatched(name, interfaces)) continue;
    lines[i]->Delete(0, colon + 1);
    Kalvo_StringArray words;
    SplitWords(lines[i], &words);
    if (words.GetSize() < 9 || *words[0] == "0") continue;  // one that is not in use
    Kalvo_KValueTable* interface = network->InsertTable(name.c_str());
    interface->Insert("received")->Set(words[0]->ToFloat() / kBytesPerMib);
    interface->Insert("sent")->Set(words[8]->ToFloat() / kBytesPerMib);
  }
}

}  // namespace

const char* Sample::GetTypename(Kalvo_String* out) {
  return out != nullptr ? out->strcpy("sample")->c_str() : "sample";
}

void TakeSample(const Kalvo_StringArray& interfaces, Kalvo_KValueTable* values) {
  Kalvo_String host = ReadText("/proc/sys/kernel/hostname");
  host.replace_all(0, "\n", "");
  values->Set("host", host.c_str());
  values->Set("time", static_cast<long>(std::time(nullptr)));
  TakeLoad(values->InsertTable("load"));
  TakeMemory(values->InsertTable("memory"));
  TakeProcessors(values->InsertTable("processors"));
  TakeNetwork(interfaces, values->InsertTable("network"));
}
