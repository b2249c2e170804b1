// The gateway's agent: watches the machine that it runs on.
//
//   agent [rounds [milliseconds between two rounds [file [host port]]]]
//   agent --draw        prints the machine of its metrics for Graphviz
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
#include "uplink.h"
#include "watch.h"

namespace {

constexpr long kPatienceMs = 100;

long Argument(int argc, char** argv, int i, long otherwise) {
  const long value = i < argc ? Kalvo_String(argv[i]).ToInt(10) : 0;
  return value > 0 ? value : otherwise;
}

void Produce(Kalvo_Queue* queue, Kalvo_Counter* taken, long rounds, unsigned long intervalMs) {
  for (long round = 0; round < rounds; ++round) {
    if (round > 0) Kalvo_Thread_Sleep(intervalMs);
    Sample* sample = new Sample;
    TakeSample(&sample->values);
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
    DrawMachine();
    return 0;
  }
  const long rounds = Argument(argc, argv, 1, 10);
  const long intervalMs = Argument(argc, argv, 2, 100);
  const char* path = argc > 3 ? argv[3] : "samples.form";

  Kalvo_String program;
  Kalvo_GetExeBaseName(&program);
  Kalvo_String title;
  title.FormatDate(std::time(nullptr), "yyyy-mm-dd hh:mi:ss");
  title.sprintf_append("  %s on %s: %d rounds, %d ms apart\n", program.c_str(),
                       SystemName().c_str(), static_cast<int>(rounds),
                       static_cast<int>(intervalMs));
  std::puts(title.c_str());

  Kalvo_FSMService machine;
  if (!BuildMachine(&machine)) return 1;
  Watch watch(&machine);
  Uplink uplink;
  if (argc > 5 && !uplink.Connect(argv[4], static_cast<int>(Argument(argc, argv, 5, 0)))) return 1;
  Kalvo_Queue queue(1, 1);
  Kalvo_Event done(1, 0, nullptr);
  Kalvo_Counter taken;
  Kalvo_KValueTable history;
  std::thread collector(Collect, &queue, &done, &watch, &uplink, &history);
  Produce(&queue, &taken, rounds, static_cast<unsigned long>(intervalMs));
  done.Set();
  collector.join();

  Kalvo_KValueTable stored;
  if (!SaveTable(&history, path) || !LoadTable(&stored, path)) {
    std::printf("%s cannot be written and read\n", path);
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
  DivideAll(&total, rounds);
  std::puts("\nOn average:");
  PrintTree(&total, 2);

  if (argc > 5) std::printf("\n%d samples sent\n", uplink.sent());
  const bool equal = stored == history;
  std::printf("\n%ld samples taken, %lu in %s, %s to those in memory\n", taken.Get(),
              stored.GetCount(), path, equal ? "equal" : "not equal");
  return equal && taken.Get() == static_cast<long>(stored.GetCount()) ? 0 : 1;
}
