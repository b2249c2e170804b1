// Hosts that end in the middle of something: exit is called from a thread or callback of the
// library's, or with everything running. The test's time-out is what must not be needed.

#include <dlfcn.h>
#include <kalvobase/kalvobase.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ping.h"

namespace {

std::atomic<bool> threadsForbidden{false};

}  // namespace

// In the place of the C library's, for the library too.
#if !defined(KALVOBASE_SANITIZED)
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*routine)(void*), void* argument) {
  if (threadsForbidden) _exit(9);
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  return create(thread, attributes, routine, argument);
}
#endif

namespace {

class Leaver : public Kalvo_Timer {
 public:
  explicit Leaver(bool stay) : stay_(stay) {}
  void OnTimer(unsigned long, unsigned long, unsigned long, unsigned long, unsigned long,
               const char*) override {
    if (!stay_) std::exit(0);
    for (;;) pause();
  }

 private:
  const bool stay_;
};

void LeaveFromCallback(int, const char* format, va_list args) {
  char line[200];
  std::vsnprintf(line, sizeof(line), format, args);
  if (std::strstr(line, "(spin) runing") != nullptr) std::exit(0);
}

unsigned long Leave(void*) { std::exit(0); }

unsigned long Work(void* thread) {
  while ((*static_cast<Kalvo_Thread**>(thread))->Running()) Kalvo_Thread_Sleep(1);
  return 0;
}

// Uses what the library takes down.
unsigned long Use(void* thread) {
  static Kalvo_Log& log = *new Kalvo_Log;
  Kalvo_Timer timer;
  Kalvo_Thread* const self = *static_cast<Kalvo_Thread**>(thread);
  while (self->Running()) {
    log.Trace(1, "nothing passes");
    timer.ClearTimer(timer.SetTimer(1000, 0, 0, 0, nullptr));
  }
  return 0;
}

// Lives in what static objects of the host hold, and must not be called when they are gone.
std::vector<std::string>& Lines() {
  static std::vector<std::string> lines;
  return lines;
}

void Collect(int, const char* format, va_list args) {
  static std::mutex lock;
  char line[200];
  std::vsnprintf(line, sizeof(line), format, args);
  const std::lock_guard<std::mutex> guard(lock);
  Lines().push_back(line + std::string(100, '.'));
}

// Has a static object of its own, which its first call makes.
void CollectAlso(int, const char* format, va_list) {
  static std::vector<std::string> own;
  static std::mutex lock;
  const std::lock_guard<std::mutex> guard(lock);
  own.push_back(format + std::string(100, '.'));
}

unsigned long Chatter(void* thread) {
  Kalvo_Thread* const self = *static_cast<Kalvo_Thread**>(thread);
  while (self->Running()) {
    Kalvo_KernelDebugLog(1, "chatter");
    Kalvo_KernelDebugPrint(1, "chatter");
  }
  return 0;
}

Pong* pong = nullptr;

// Sends through an engine that is taken down.
unsigned long Send(void* thread) {
  Kalvo_Thread* const self = *static_cast<Kalvo_Thread**>(thread);
  while (self->Running()) pong->client.SendData("p", 1);
  return 0;
}

bool Plays(Pong* game) {
  const int before = game->client.count;
  for (int i = 0; i < 10000 && game->client.count == before; ++i) Kalvo_Thread_Sleep(1);
  return game->client.count != before;
}

unsigned long Spin(void*) {
  for (;;) {
    asm volatile("");
  }
}

unsigned long GoOnAlone(void* thread) {
  delete *static_cast<Kalvo_Thread**>(thread);
  return Spin(nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  const char* const how = argc > 1 ? argv[1] : "";
  if (std::strcmp(how, "timer") == 0) {
    static Leaver leaver(false);
    leaver.SetTimer(5, 0, 0, 0, nullptr);
    for (;;) pause();
  }
  if (std::strcmp(how, "callback") == 0) {
    SetKalvo_KernelDebugPrintFunction(LeaveFromCallback);
    new Kalvo_Thread(Spin, nullptr, 1, "spin", nullptr, 0);
    for (;;) pause();
  }
  if (std::strcmp(how, "thread") == 0) {
    new Kalvo_Thread(Leave, nullptr, 1, "leave", nullptr, 0);
    for (;;) pause();
  }
  if (std::strcmp(how, "network") == 0) {
    pong = new Pong;
    pong->client.onData = [] { std::exit(0); };
    pong->Start();
    for (;;) pause();
  }
  if (std::strcmp(how, "fork") == 0) {
    pong = new Pong;
    pong->Start();
    if (!Plays(pong)) return 2;
    const pid_t child = fork();
    if (child == 0) {
      // What the parent has goes on there; here everything can be made anew.
      if (pong->client.SendData("x", 1) != 0) std::_Exit(3);
      pong->client.Close();
      pong->Close();
      pong->Start();
      std::exit(Plays(pong) ? 0 : 4);
    }
    int status = -1;
    waitpid(child, &status, 0);
    if (status != 0) return 5;
    return Plays(pong) && Plays(pong) ? 0 : 6;
  }
  if (std::strcmp(how, "sending") == 0) {
    pong = new Pong;
    pong->Start();
    static Kalvo_Thread* threads[2];
    for (Kalvo_Thread*& thread : threads) {
      thread = new Kalvo_Thread(Send, &thread, 0, "send", nullptr, 0);
      thread->Resume();
    }
    // These the library does not know.
    for (int i = 0; i < 2; ++i) {
      std::thread([] {
        for (;;) {
          Ping client;
          client.Connect("127.0.0.1", pong->GetLocalAddr()->GetPort());
          pong->client.SendData("p", 1);
        }
      }).detach();
    }
    Kalvo_Thread_Sleep(200);
    return 0;
  }
  if (std::strcmp(how, "busy") == 0) {
    static Kalvo_Thread* threads[3];
    for (Kalvo_Thread*& thread : threads) {
      thread = new Kalvo_Thread(Use, &thread, 0, "use", nullptr, 0);
      thread->Resume();
    }
    Kalvo_Thread_Sleep(50);
    return 0;
  }
  if (std::strcmp(how, "statics") == 0) {
    SetKalvo_KernelDebugPrintFunction(CollectAlso);
    Lines();
    SetKalvo_KernelDebugLogFunction(Collect);
    SetKalvo_KernelDebugErrLogFunction(Collect);
    static Kalvo_Thread* thread = nullptr;
    thread = new Kalvo_Thread(Chatter, &thread, 0, "chatter", nullptr, 0);
    thread->Resume();
    pong = new Pong;
    pong->Start();
    Kalvo_Thread_Sleep(20);
    return 0;
  }
  if (std::strcmp(how, "string") == 0) {
    Kalvo_String text;
    text.sprintf("%d", 7);
    threadsForbidden = true;  // to the stop of the library
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return text == "7" && std::distance(begin(tasks), end(tasks)) == 1 ? 0 : 8;
  }
  if (std::strcmp(how, "living") == 0) {
    static Kalvo_Thread* threads[4];
    threads[0] = new Kalvo_Thread(Work, &threads[0], 0, "work", nullptr, 0);
    threads[0]->Resume();
    threads[1] = new Kalvo_Thread(Spin, nullptr, 1, "spin", nullptr, 0);
    threads[2] = new Kalvo_Thread(Spin, nullptr, 0, "parked", nullptr, 0);
    threads[3] = new Kalvo_Thread(GoOnAlone, &threads[3], 0, "alone", nullptr, 0);
    threads[3]->Resume();
#if !defined(__SANITIZE_THREAD__)  // which does not see what a killed thread has done before
    static Leaver* const leaver = new Leaver(true);
    leaver->SetTimer(1, 0, 0, 0, nullptr);
#endif
    Kalvo_Thread_Sleep(50);
    threads[1]->Suspend();
    return 0;
  }
  return 1;
}
