#include "kalvobase/timer.h"

#include "examples/example.h"
#include "kalvobase/process.h"

namespace {

#include "timer_1.inc"

}  // namespace

int main() {
  Session session;
  Redirect(stdout);
  Kalvo_Thread_Sleep(1100);
  assert(Printed() == "ping 1 of 3\n");  // it goes while its timer runs
}
