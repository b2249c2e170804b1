// Time stamps as local calendar dates.

#ifndef KALVOBASE_SRC_PLATFORM_CALENDAR_H_
#define KALVOBASE_SRC_PLATFORM_CALENDAR_H_

#include <ctime>

namespace platform {

// The local date of a time stamp, by the time zone in force now. Safe from any thread.
// False, with *out untouched, if there is no such date.
bool local_time(long stamp, std::tm* out);

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_CALENDAR_H_
