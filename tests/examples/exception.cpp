#include "kalvobase/exception.h"

#include "examples/example.h"

int main() {
  Redirect(stdout);
#include "exception_1.inc"
  assert(Printed() == "42: cannot open gateway.ini\n");
}
