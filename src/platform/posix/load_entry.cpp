// The load entry: what the loader calls when the library comes and goes.
//
// The destructor function runs after the static objects of a host that is linked with
// the library are gone. At the end of a process it also runs after the library's own
// static objects, so nothing that klbase_fini touches may be a static object with a
// destructor.

#include "kalvobase/lifecycle.h"

namespace {

__attribute__((constructor)) void ProcessAttach() { klbase_init(); }

__attribute__((destructor)) void ProcessDetach() { klbase_fini(); }

}  // namespace
