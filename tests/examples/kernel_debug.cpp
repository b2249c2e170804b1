#include "kalvobase/kernel_debug.h"

#include "examples/example.h"

namespace {

#include "kernel_debug_1.inc"

}  // namespace

int main() {
  Redirect(stderr);
#include "kernel_debug_2.inc"
  Kalvo_KernelDebugPrint(3, "shown %d\n", 3);
  Kalvo_KernelDebugPrint(4, "not shown\n");
  assert(Printed() == "shown 3\n");
}
