#include "kalvobase/bytes.h"

#include "examples/example.h"

int main() {
#include "bytes_1.inc"
  assert(std::string(buffer, 4) == "\x12\x34\x56\x78");
  assert(value == 0x12345678);
}
