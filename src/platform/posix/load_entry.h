// Included in front of every source file of the static library: each object refers to the load
// entry, so that a host that links any of them has the start and the stop.

#ifndef KALVOBASE_SRC_PLATFORM_POSIX_LOAD_ENTRY_H_
#define KALVOBASE_SRC_PLATFORM_POSIX_LOAD_ENTRY_H_

namespace platform {

void process_attach();

__attribute__((used)) constexpr void (*load_entry)() = process_attach;

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_POSIX_LOAD_ENTRY_H_
