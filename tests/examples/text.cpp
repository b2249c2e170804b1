#include "kalvobase/text.h"

#include "examples/example.h"

int main() {
#include "text_1.inc"
  assert(std::string(line.c_str()) == "load       0.25 ");
  assert(words.GetSize() == 2);
  assert(std::string(words[0]->c_str()) == "load" && std::string(words[1]->c_str()) == "0.25");
}
