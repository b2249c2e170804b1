#include "kalvobase/file.h"

#include <fcntl.h>
#include <utime.h>

#include "examples/example.h"

namespace {

void MakeFile(const char* path, long modified) {
  std::ofstream(path) << "x";
  const utimbuf times = {modified, modified};
  assert(utime(path, &times) == 0);
}

int Run() {
#include "file_1.inc"
  return 0;
}

}  // namespace

int main() {
  StayInOwnFolder();
  Kalvo_FileItem::DeleteTree("report");
  Kalvo_FileItem::CreateDir("log", 0);
  MakeFile("log/new.log", 2000);
  MakeFile("log/old.log", 1000);
  Redirect(stdout);
  assert(Run() == 0);
  assert(Content("report/today.txt") == "today: 12 files\n");
  assert(Printed() == "old.log\nnew.log\n");
}
