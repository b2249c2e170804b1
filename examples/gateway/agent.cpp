// The gateway's agent: watches the machine that it runs on.
//
//   agent [gateway.ini [host port]]
//   agent --draw        prints the machine of its metrics for Graphviz
//
// The file tells what to watch, and how often. Host and port are those of a receiver.
//
// A timer takes samples and puts them in a queue; a thread takes them out, reads metrics from
// them, which move through the states of a machine, sends them to a receiver if there is one,
// and keeps them in one table. What happens is logged. At the end the table goes to a file and
// comes back, and what came back is printed.

#include <kalvobase/kalvobase.h>

#include <cstdio>
#include <ctime>

#include "collector.h"
#include "history.h"
#include "journal.h"
#include "machine.h"
#include "metric.h"
#include "sampler.h"
#include "settings.h"
#include "uplink.h"
#include "watch.h"

int main(int argc, char** argv) {
  if (argc > 1 && Kalvo_String(argv[1]) == "--draw") {
    DrawMachine(Limits());
    return 0;
  }
  const char* ini = argc > 1 ? argv[1] : "gateway.ini";
  Settings settings;
  LoadSettings(ini, &settings);
  Kalvo_String path(settings.logDirectory);
  path.strcat("/samples.form");

  Kalvo_String program;
  Kalvo_GetExeBaseName(&program);
  Kalvo_String title;
  title.FormatDate(std::time(nullptr), "yyyy-mm-dd hh:mi:ss");
  title.sprintf_append("  %s on %s: run %d, %d rounds, %d ms apart\n", program.c_str(),
                       SystemName().c_str(), CountRun(ini), settings.rounds, settings.intervalMs);
  std::puts(title.c_str());

  Journal journal(settings.logDirectory, settings.logLevel);
  journal.log()->Trace(1, "%s", title.c_str());
  Watch watch;
  if (!watch.Start(settings)) return 1;
  Uplink uplink;
  const bool sends = argc > 3;
  if (sends && !uplink.Connect(argv[2], static_cast<int>(Kalvo_String(argv[3]).ToInt(10))))
    return 1;
  Kalvo_Queue queue(1, 1);
  Kalvo_KValueTable history;
  Collector collector(&queue, &watch, &uplink, &history, journal.log());
  Sampler sampler(&queue, settings);
  collector.Start();
  sampler.Run();
  collector.Finish();

  Kalvo_KValueTable stored;
  if (!SaveTable(&history, path) || !LoadTable(&stored, path)) {
    std::printf("%s cannot be written and read\n", path.c_str());
    return 1;
  }
  std::puts("");
  watch.Print();
  std::puts("\nThe last sample:");
  PrintTree(stored.GetAt(-1)->GetValueTable(), 2);

  Kalvo_KValueTable total;
  Kalvo_Key* key = nullptr;
  for (Kalvo_Value* sample = stored.GetFirst(key); sample != nullptr;
       sample = stored.GetNext(key)) {
    AddUp(&total, sample->GetValueTable());
  }
  DivideAll(&total, settings.rounds);
  std::puts("\nOn average:");
  PrintTree(&total, 2);

  if (sends) std::printf("\n%d samples sent\n", uplink.sent());
  const bool equal = stored == history;
  std::printf("\n%ld samples taken, %lu in %s, %s to those in memory\n", sampler.taken(),
              stored.GetCount(), path.c_str(), equal ? "equal" : "not equal");
  return equal && sampler.taken() == static_cast<long>(stored.GetCount()) ? 0 : 1;
}
