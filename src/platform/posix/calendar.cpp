#include "platform/calendar.h"

#include <time.h>

namespace platform {

bool local_time(long stamp, std::tm* out) {
  const time_t seconds = stamp;
  std::tm fields;
  tzset();  // localtime_r may go on with the zone that it saw first
  if (localtime_r(&seconds, &fields) == nullptr) return false;
  *out = fields;
  return true;
}

}  // namespace platform
