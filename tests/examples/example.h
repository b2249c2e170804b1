// What the programs around the examples share.

#ifndef KALVOBASE_TESTS_EXAMPLES_EXAMPLE_H_
#define KALVOBASE_TESTS_EXAMPLES_EXAMPLE_H_

#undef NDEBUG  // assert works in every build
#include <cassert>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

inline std::string Content(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Sends what is printed from now on to a file.
inline void Redirect(std::FILE* stream) { assert(std::freopen("printed.txt", "w", stream)); }

inline std::string Printed() {
  std::fflush(nullptr);
  return Content("printed.txt");
}

#endif  // KALVOBASE_TESTS_EXAMPLES_EXAMPLE_H_
