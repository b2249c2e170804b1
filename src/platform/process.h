// What the system tells about this process.

#ifndef KALVOBASE_SRC_PLATFORM_PROCESS_H_
#define KALVOBASE_SRC_PLATFORM_PROCESS_H_

#include <cstdint>
#include <string>

namespace platform {

// The full path of the program's executable file; empty if the system does not tell.
std::string executable_path();

std::uint32_t process_id();

// How often this process and those that it comes from have been forked, as far as is known.
std::uint32_t fork_count();

// Has functions called around every fork: `before` and then `after` in the thread that forks,
// `inChild` instead of that in the child. For as long as the library is loaded.
void watch_forks(void (*before)(), void (*after)(), void (*inChild)());

// Null if there is no such variable. The text is the system's.
const char* environment_variable(const char* name);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_PROCESS_H_
