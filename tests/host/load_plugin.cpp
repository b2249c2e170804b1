// What a host loads and unloads together with the library: it leaves everything running.

#include <kalvobase/kalvobase.h>

#include <new>

#include "ping.h"

namespace {

class Ticker : public Kalvo_Timer {
 public:
  void OnTimer(unsigned long, unsigned long, unsigned long, unsigned long, unsigned long,
               const char*) override {
    ++ticks;
  }
  int ticks = 0;
};

// Never destroyed.
template <class T>
struct Kept {
  alignas(T) unsigned char memory[sizeof(T)];
  T* object() { return reinterpret_cast<T*>(memory); }
};
Kept<Kalvo_Thread> worker;
Kept<Kalvo_Thread> parked;
Kept<Kalvo_Thread> alone;
Kept<Kalvo_Log> journal;
Kept<Ticker> ticker;

unsigned long Work(void*) {
  while (worker.object()->Running()) Kalvo_Thread_Sleep(1);
  return 0;
}

// Destroys its own object and goes on.
unsigned long GoOn(void* self) {
  static_cast<Kalvo_Thread*>(self)->~Kalvo_Thread();
  Kalvo_Thread_Sleep(30);
  return 0;
}

}  // namespace

extern "C" void StartEverything(const char* directory) {
  new (worker.memory) Kalvo_Thread(Work, nullptr, 1, "worker", nullptr, 0);
  new (parked.memory) Kalvo_Thread(Work, nullptr, 0, "parked", nullptr, 0);
  new (alone.memory) Kalvo_Thread(GoOn, alone.memory, 1, "alone", nullptr, 0);
  new (journal.memory) Kalvo_Log(1);
  journal.object()->SetMainDir(directory);
  journal.object()->Init("load", 1);
  journal.object()->Trace(1, "loaded");
  journal.object()->Write("and not flushed");
  new (ticker.memory) Ticker;
  ticker.object()->SetRepeatTimer(0xFFFFFFFF, 1, 0, 0, 0, "text");
  ticker.object()->SetTimer(100000, 0, 0, 0, nullptr);
}

// Handlers are the host's, so these go with it, just before the library does.
extern "C" bool StartHandlers() {
  static Pong pong;
  pong.Start();
  for (int i = 0; i < 10000 && pong.client.count == 0; ++i) Kalvo_Thread_Sleep(1);
  return pong.client.count > 0;
}
