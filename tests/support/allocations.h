// Counts what this program and the library under test allocate.

#ifndef KALVOBASE_TESTS_SUPPORT_ALLOCATIONS_H_
#define KALVOBASE_TESTS_SUPPORT_ALLOCATIONS_H_

namespace support {

// Calls of operator new so far, in all threads.
long Allocations();

// The next `count` of them in the calling thread fail.
void FailAllocations(int count);

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_ALLOCATIONS_H_
