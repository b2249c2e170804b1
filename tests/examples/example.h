// What the programs around the examples share.

#ifndef KALVOBASE_TESTS_EXAMPLES_EXAMPLE_H_
#define KALVOBASE_TESTS_EXAMPLES_EXAMPLE_H_

#undef NDEBUG  // assert works in every build
#include <unistd.h>

#include <cassert>
#include <climits>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "kalvobase/process.h"
#include "kalvobase/text.h"

// The result of a program that cannot work on this machine.
inline int NotHere(const char* why) {
  std::printf("skipped: %s\n", why);
  return 77;
}

// For programs that make or remove files: they work in the folder that is made for each of them,
// where nothing of the user's can be.
inline void StayInOwnFolder() {
  char here[PATH_MAX];
  Kalvo_String own;
  assert(getcwd(here, sizeof(here)) != nullptr);
  assert(std::string(Kalvo_GetExePath(&own)) == here);
}

inline std::string Content(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Sends what is printed from now on to a file.
inline void Redirect(std::FILE* stream) {
  StayInOwnFolder();
  assert(std::freopen("printed.txt", "w", stream));
}

inline std::string Printed() {
  std::fflush(nullptr);
  return Content("printed.txt");
}

#endif  // KALVOBASE_TESTS_EXAMPLES_EXAMPLE_H_
