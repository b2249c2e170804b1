#include "support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allocations{0};
thread_local int failures = 0;

}  // namespace

void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
  ++allocations;
  if (failures > 0) {
    --failures;
    return nullptr;
  }
  return std::malloc(n);
}
void* operator new(std::size_t n) {
  void* memory = operator new(n, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace support {

long Allocations() { return allocations; }
void FailAllocations(int count) { failures = count; }

}  // namespace support
