// What the system tells about this process.

#ifndef KALVOBASE_SRC_PLATFORM_PROCESS_H_
#define KALVOBASE_SRC_PLATFORM_PROCESS_H_

#include <string>

namespace platform {

// The full path of the program's executable file; empty if the system does not tell.
std::string executable_path();

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_PROCESS_H_
