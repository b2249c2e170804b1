#include "kalvobase/process.h"

#include "examples/example.h"
#include "kalvobase/text.h"

int main() {
  Redirect(stdout);
#include "process_1.inc"
  assert(passed >= 50);
  assert(Printed() == std::string("running from ") + dir.c_str() + "\n");
}
