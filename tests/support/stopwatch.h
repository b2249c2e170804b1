// How long something took, on the clock that waits run on.

#ifndef KALVOBASE_TESTS_SUPPORT_STOPWATCH_H_
#define KALVOBASE_TESTS_SUPPORT_STOPWATCH_H_

#include <chrono>

namespace support {

class Stopwatch {
 public:
  long Milliseconds() const {
    const auto passed = std::chrono::steady_clock::now() - start_;
    return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(passed).count());
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_STOPWATCH_H_
