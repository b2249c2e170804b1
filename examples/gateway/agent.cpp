// The gateway's agent: watches the machine that it runs on.
//
//   agent [gateway.ini [host port]]
//   agent --draw        prints the machine of its metrics for Graphviz
//
// The file tells what to watch, and how often. Host and port are those of a receiver.
//
// One thread takes samples and puts them in a queue; another takes them out, reads metrics
// from them, which move through the states of a machine, sends them to a receiver if there is
// one, and keeps them in one table. At the end the table goes to a file and comes back, and
// what came back is printed.

#include <kalvobase/kalvobase.h>

#include <cstdio>
#include <ctime>
#include <thread>

#include "history.h"
#include "machine.h"
#include "metric.h"
#include "sample.h"
#include "settings.h"
#include "uplink.h"
#include "watch.h"

namespace {

constexpr long kPatienceMs = 100;

void Produce(Kalvo_Queue* queue, Kalvo_Counter* taken, const Settings& settings) {
  for (int round = 0; round < settings.rounds; ++round) {
    if (round > 0) Kalvo_Thread_Sleep(static_cast<unsigned long>(settings.intervalMs));
    Sample* sample = new Sample;
    TakeSample(settings.interfaces, &sample->values);
    queue->AddItemAtTail(sample);
    taken->Add(1);
  }
}

// Keeps samples under the numbers from 0 on until the producer is done and nothing is left.
void Collect(Kalvo_Queue* queue, Kalvo_Event* done, Watch* watch, Uplink* uplink,
             Kalvo_KValueTable* history) {
  for (;;) {
    const bool last = done->Wait(0) == 0;
    Kalvo_QueueObject* object = queue->RemoveItemAtHead(last ? 0 : kPatienceMs);
    if (object != nullptr) {
      Sample* sample = static_cast<Sample*>(object);
      watch->Look(&sample->values);
      uplink->Send(&sample->values);
      *history->InsertTable(history->GetCount()) = sample->values;
      delete sample;
    } else if (last) {
      watch->End();
      return;
    }
  }
}

}  // namespace

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

  Watch watch;
  if (!watch.Start(settings)) return 1;
  Uplink uplink;
  const bool sends = argc > 3;
  if (sends && !uplink.Connect(argv[2], static_cast<int>(Kalvo_String(argv[3]).ToInt(10))))
    return 1;
  Kalvo_Queue queue(1, 1);
  Kalvo_Event done(1, 0, nullptr);
  Kalvo_Counter taken;
  Kalvo_KValueTable history;
  std::thread collector(Collect, &queue, &done, &watch, &uplink, &history);
  Produce(&queue, &taken, settings);
  done.Set();
  collector.join();

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
  std::printf("\n%ld samples taken, %lu in %s, %s to those in memory\n", taken.Get(),
              stored.GetCount(), path.c_str(), equal ? "equal" : "not equal");
  return equal && taken.Get() == static_cast<long>(stored.GetCount()) ? 0 : 1;
}
