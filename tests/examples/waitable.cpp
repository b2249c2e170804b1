#include "kalvobase/waitable.h"

#include "examples/example.h"

int main() {
#include "waitable_1.inc"
  assert(result == 0);
  assert(ready.Wait(0) == 258);
}
