// The load entry: what the loader calls when the library comes and goes.
//
// The destructor function runs after the static objects of a host that is linked with
// the library are gone. At the end of a process it also runs after the library's own
// static objects, so nothing that klbase_fini touches may be a static object with a
// destructor. The priority, which is the earliest for the start and the latest for the stop,
// gives the same order to a host that has the static library.

#include "platform/posix/load_entry.h"

#include "kalvobase/lifecycle.h"

namespace platform {

__attribute__((constructor(101))) void process_attach() { klbase_init(); }

}  // namespace platform

namespace {

__attribute__((destructor(101))) void ProcessDetach() { klbase_fini(); }

}  // namespace
