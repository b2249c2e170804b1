#include "settings.h"

#include "machine.h"

namespace {

void ReadPositive(Kalvo_XIni* ini, const char* key, int* number) {
  int value = 0;
  if (ini->Read(key, &value) > 0 && value > 0) *number = value;
}

void ReadLimits(Kalvo_XIni* ini, const char* metric, Limits* limits) {
  if (ini->SetSectionName("thresholds.%s", metric) == nullptr) return;
  Limits read = *limits;
  ReadPositive(ini, "warning", &read.warning);
  ReadPositive(ini, "critical", &read.critical);
  if (read.AreSound()) *limits = read;
}

}  // namespace

void LoadSettings(const char* path, Settings* settings) {
  Kalvo_XIni ini(path);
  ini.SetSectionName("agent");
  ReadPositive(&ini, "rounds", &settings->rounds);
  ReadPositive(&ini, "interval", &settings->intervalMs);
  ini.SetSectionName("gateway");
  ReadPositive(&ini, "beacon", &settings->beaconPort);
  ini.SetSectionName("log");
  settings->logDirectory = ini.ReadString("directory", settings->logDirectory.c_str());
  ini.Read("level", &settings->logLevel);
  ini.SetSectionName("interfaces");
  Kalvo_String names(ini.ReadString("names", ""));
  SplitWords(&names, &settings->interfaces);
  ReadLimits(&ini, "processor", &settings->processor);
  ReadLimits(&ini, "load", &settings->load);
  ReadLimits(&ini, "memory", &settings->memory);
}

int CountRun(const char* path) {
  Kalvo_XIni ini;
  int runs = 0;
  if (ini.Read(path) < 0 || ini.SetSectionName("gateway") == nullptr) return 0;
  ini.Read("runs", &runs);
  Kalvo_String* comment = ini.GetTailComment("runs");
  const Kalvo_String kept(comment != nullptr ? comment->c_str() : "");
  ini.Write("runs", runs + 1, 0);  // which drops the comment
  *ini.GetTailComment("runs") = kept;
  return ini.Dump(path) > 0 ? runs + 1 : 0;
}
