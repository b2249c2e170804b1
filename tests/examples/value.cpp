#include "kalvobase/value.h"

#include "examples/example.h"
#include "kalvobase/text.h"

int main() {
  Redirect(stdout);
#include "value_1.inc"
  assert(Printed() == "1024\n");
  assert(std::string(copy.GetValue("host")->GetString()->c_str()) == "gate-7");
  assert(copy.GetValue("load")->GetDouble() == 0.25);
}
