// The gateway's agent: watches the machine that it runs on.
//
//   agent [rounds [milliseconds between two rounds]]
//
// One thread takes samples and puts them in a queue; another takes them out, sorts them
// and prints a report at the end.

#include <kalvobase/kalvobase.h>

#include <cstdio>
#include <ctime>
#include <thread>

#include "machine.h"
#include "report.h"
#include "sample.h"

namespace {

constexpr long kPatienceMs = 100;

long Argument(int argc, char** argv, int i, long otherwise) {
  const long value = i < argc ? Kalvo_String(argv[i]).ToInt(10) : 0;
  return value > 0 ? value : otherwise;
}

void Produce(Kalvo_Queue* queue, Kalvo_Counter* taken, long rounds, unsigned long intervalMs) {
  for (long round = 0; round < rounds; ++round) {
    if (round > 0) Kalvo_Thread_Sleep(intervalMs);
    taken->Add(TakeSamples(queue));
  }
}

// Moves samples to `collected` until the producer is done and nothing is left.
void Collect(Kalvo_Queue* queue, Kalvo_Event* done, Kalvo_Queue* collected) {
  for (;;) {
    const bool last = done->Wait(0) == 0;
    if (Kalvo_QueueObject* sample = queue->RemoveItemAtHead(last ? 0 : kPatienceMs)) {
      collected->AddItemAtTail(sample);
    } else if (last) {
      return;
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const long rounds = Argument(argc, argv, 1, 10);
  const long intervalMs = Argument(argc, argv, 2, 100);

  Kalvo_String program;
  Kalvo_GetExeBaseName(&program);
  Kalvo_String title;
  title.FormatDate(std::time(nullptr), "yyyy-mm-dd hh:mi:ss");
  title.sprintf_append("  %s on %s: %d rounds, %d ms apart\n", program.c_str(),
                       SystemName().c_str(), static_cast<int>(rounds),
                       static_cast<int>(intervalMs));
  std::puts(title.c_str());

  Kalvo_Queue queue(1, 1);
  Kalvo_Queue collected(0, 0);
  Kalvo_Event done(1, 0, nullptr);
  Kalvo_Counter taken;
  const unsigned long started = Kalvo_THREAD_GetTickCount();
  std::thread collector(Collect, &queue, &done, &collected);
  Produce(&queue, &taken, rounds, static_cast<unsigned long>(intervalMs));
  done.Set();
  collector.join();

  collected.QSort(Sample::ByMetric, nullptr);
  PrintReport(&collected);
  const unsigned long passed = (Kalvo_THREAD_GetTickCount() - started) & 0xFFFFFFFFul;
  Kalvo_String summary;
  summary.sprintf("\n%d samples taken, %u reported, in %u ms", static_cast<int>(taken.Get()),
                  static_cast<unsigned int>(collected.GetItemCount()),
                  static_cast<unsigned int>(passed));
  std::puts(summary.c_str());
  return taken.Get() == static_cast<long>(collected.GetItemCount()) ? 0 : 1;
}
