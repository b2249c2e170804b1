// What the host's locale does to numbers.

#ifndef KALVOBASE_SRC_PLATFORM_LOCALE_H_
#define KALVOBASE_SRC_PLATFORM_LOCALE_H_

namespace platform {

// The text between whole and fractional digits that the runtime library prints now.
const char* decimal_point();

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_LOCALE_H_
