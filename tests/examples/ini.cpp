#include "kalvobase/ini.h"

#include "examples/example.h"

int main() {
  StayInOwnFolder();
  std::ofstream("gateway.ini") << Content("ini.txt");
#include "ini_1.inc"
  assert(warning == 80);
  const std::string written = Content("gateway.ini");
  assert(written.find("# when to speak up") != std::string::npos);
  assert(written.find("percent") == std::string::npos);
  assert(Kalvo_Xini_GetPrivateProfileInt("thresholds.memory", "warning", 0, "gateway.ini") == 85);
}
