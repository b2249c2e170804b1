// The load entry: what the loader calls when the library comes and goes.
//
// The destructor function runs after the static objects of a host that is linked with
// the library are gone. At the end of a process it also runs after the library's own
// static objects, so nothing that klbase_fini touches may be a static object with a
// destructor.

#include "platform/posix/load_entry.h"

#include "kalvobase/lifecycle.h"

// A host that has the static library gets the same order by a priority, the earliest for the start
// and the latest for the stop. The shared library has none: its own entries in the list of what
// runs at exit, which unloading runs, come after the stop.
#if defined(KALVOBASE_STATIC)
#define KALVOBASE_PRIORITY (101)
#else
#define KALVOBASE_PRIORITY
#endif

namespace platform {

__attribute__((constructor KALVOBASE_PRIORITY)) void process_attach() { klbase_init(); }

}  // namespace platform

namespace {

__attribute__((destructor KALVOBASE_PRIORITY)) void ProcessDetach() { klbase_fini(); }

}  // namespace
