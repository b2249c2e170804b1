// The gateway's agent: tells what the machine is doing that it runs on.
//
//   agent gateway.ini NAME
//
// The file tells what to sample, and how often. The gateway is found by its beacon.
//
// A timer takes samples and puts them in a queue; a thread takes them out, sends them to the
// gateway and keeps them in one table. What happens is logged. At the end the table goes to a
// file and comes back, and what came back is printed.

#include <kalvobase/kalvobase.h>

#include <cstdio>
#include <ctime>

#include "collector.h"
#include "history.h"
#include "journal.h"
#include "machine.h"
#include "sampler.h"
#include "settings.h"
#include "uplink.h"

namespace {

constexpr unsigned long kPatienceMs = 10000;

// What was kept, as it comes back from a file.
bool PrintHistory(Kalvo_KValueTable* history, const char* path) {
  Kalvo_KValueTable stored;
  if (!SaveTable(history, path) || !LoadTable(&stored, path)) {
    std::printf("%s cannot be written and read\n", path);
    return false;
  }
  std::puts("\nThe last sample:");
  PrintTree(stored.GetAt(-1)->GetValueTable(), 2);

  Kalvo_KValueTable total;
  Kalvo_Key* key = nullptr;
  for (Kalvo_Value* sample = stored.GetFirst(key); sample != nullptr;
       sample = stored.GetNext(key)) {
    AddUp(&total, sample->GetValueTable());
  }
  // Counters since the system's start: their average says nothing.
  total.Remove("processors");
  total.Remove("network");
  DivideAll(&total, static_cast<long>(stored.GetCount()));
  std::puts("\nOn average:");
  PrintTree(&total, 2);

  const bool equal = stored == *history;
  std::printf("\n%lu samples in %s, %s to those in memory\n", stored.GetCount(), path,
              equal ? "equal" : "not equal");
  return equal;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::puts("usage: agent gateway.ini NAME");
    return 2;
  }
  const char* ini = argv[1];
  const char* name = argv[2];
  Settings settings;
  LoadSettings(ini, &settings);
  Kalvo_String path(settings.logDirectory);
  path.sprintf_append("/%s.form", name);

  Kalvo_String program;
  Kalvo_GetExeBaseName(&program);
  Kalvo_String title;
  title.FormatDate(std::time(nullptr), "yyyy-mm-dd hh:mi:ss");
  title.sprintf_append("  %s %s on %s: %d rounds, %d ms apart", program.c_str(), name,
                       SystemName().c_str(), settings.rounds, settings.intervalMs);
  std::puts(title.c_str());

  Journal journal(settings.logDirectory, name, settings.logLevel);
  journal.log()->Trace(1, "%s", title.c_str());
  Uplink uplink(journal.log());
  if (!uplink.Start(settings.beaconPort) || !uplink.WaitUntilConnected(kPatienceMs)) {
    std::puts("there is no gateway");
    return 1;
  }
  Kalvo_Queue queue(1, 1);
  Kalvo_KValueTable history;
  Collector collector(name, &queue, &uplink, &history, journal.log());
  Sampler sampler(&queue, settings);
  collector.Start();
  sampler.Run();
  collector.Finish();
  const bool answered = uplink.WaitForAnswers(kPatienceMs);

  const bool kept = PrintHistory(&history, path);
  std::printf("%ld tables sent over %ld connection(s), %ld answered\n", uplink.sent(),
              uplink.connections(), uplink.answered());
  return answered && kept && sampler.taken() == static_cast<long>(history.GetCount()) ? 0 : 1;
}
