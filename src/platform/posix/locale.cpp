#include "platform/locale.h"

#include <langinfo.h>

namespace platform {

const char* decimal_point() { return nl_langinfo(RADIXCHAR); }

}  // namespace platform
