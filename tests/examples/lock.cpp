#include "kalvobase/lock.h"

#include <thread>

#include "examples/example.h"

int main() {
#include "lock_1.inc"
  assert(served.Get() == 1);
  std::thread([&] { Kalvo_AutoLock released(&lock); }).join();
}
