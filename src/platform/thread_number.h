// Numbers by which a lock knows its owner.

#ifndef KALVOBASE_SRC_PLATFORM_THREAD_NUMBER_H_
#define KALVOBASE_SRC_PLATFORM_THREAD_NUMBER_H_

#include <atomic>
#include <cstdint>

namespace platform {

// The calling thread's number, never 0. It is given once, never again in this process or in
// one that is forked from it, so a lock that a thread left behind stays held. A forked child
// goes on as the thread that forked.
inline std::uint64_t thread_number() {
  static std::atomic<std::uint64_t> last{0};
  __attribute__((tls_model("initial-exec"))) static thread_local std::uint64_t number = 0;
  if (number == 0) number = last.fetch_add(1, std::memory_order_relaxed) + 1;
  return number;
}

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_THREAD_NUMBER_H_
