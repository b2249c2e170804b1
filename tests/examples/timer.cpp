#include "kalvobase/timer.h"

#include "examples/example.h"
#include "kalvobase/process.h"

namespace {

#include "timer_1.inc"

}  // namespace

int main() {
  Session session;
  Kalvo_Thread_Sleep(50);  // it goes while its timer runs
}
