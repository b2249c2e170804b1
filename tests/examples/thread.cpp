#include "kalvobase/thread.h"

#include <atomic>

#include "examples/example.h"
#include "kalvobase/process.h"

namespace {

std::atomic<int> steps(0);

#include "thread_1.inc"

void Meter::Step() {
  steps = ++readings_;
  Kalvo_Thread_Sleep(1);
}

}  // namespace

int main() {
  {
    Meter meter;
    while (steps < 3) Kalvo_Thread_Sleep(1);
  }
  const int last = steps;
  Kalvo_Thread_Sleep(50);
  assert(steps == last);
}
