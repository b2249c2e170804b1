# What not every C and C++ library has. A result can be given on the command line instead, for
# instance to test a fallback: -DKALVOBASE_HAS_CLOCKJOIN=OFF.
include(CheckCXXSourceCompiles)
include(CheckCXXSymbolExists)

set(CMAKE_REQUIRED_LIBRARIES Threads::Threads)
check_cxx_symbol_exists(pthread_clockjoin_np pthread.h KALVOBASE_HAS_CLOCKJOIN)
check_cxx_symbol_exists(pthread_mutex_clocklock pthread.h KALVOBASE_HAS_CLOCKLOCK)
check_cxx_source_compiles("#include <cxxabi.h>
int main() { try { } catch (const abi::__forced_unwind&) { throw; } }"
  KALVOBASE_HAS_FORCED_UNWIND)
unset(CMAKE_REQUIRED_LIBRARIES)

foreach(feature CLOCKJOIN CLOCKLOCK FORCED_UNWIND)
  list(APPEND kalvobase_system_definitions
    KALVOBASE_HAS_${feature}=$<BOOL:${KALVOBASE_HAS_${feature}}>)
endforeach()
