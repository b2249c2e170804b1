#include "kalvobase/log.h"

#include <fnmatch.h>

#include <climits>
#include <cstdlib>

#include "examples/example.h"
#include "kalvobase/file.h"

int main() {
  StayInOwnFolder();
  Kalvo_FileItem::DeleteTree("log");
  const char packet[] = {1, 2, 3};
  const int length = 3;
  const char* peer = "10.0.0.7";
#include "log_1.inc"
  char path[PATH_MAX];
  assert(realpath("log/current/host.log", path) != nullptr);
  assert(fnmatch("*/log/logfiles-*/*/*-*-*/host_*-*-* *-*[[]001].log", path, 0) == 0);
  const char* records = "[[]*-*-* *:*:* * *] today: 12 items\n[[]*] from 10.0.0.7*01 02 03*";
  assert(fnmatch(records, Content(path).c_str(), 0) == 0);
}
