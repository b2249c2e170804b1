// Coming up and going down.
//
// A host calls neither of these: the library brings itself up when it is loaded
// and goes down when it is unloaded or when the process ends, after the host's
// own static objects have gone. They are exported for hosts that manage the
// library's life by hand, for instance around a fork.

#ifndef KALVOBASE_LIFECYCLE_H_
#define KALVOBASE_LIFECYCLE_H_

#include "kalvobase/types.h"

extern "C" {

// Makes the process-wide objects in their start order. Objects that exist
// already are left as they are, so a second call changes nothing.
// Call it from one thread at a time.
KALVO_API void klbase_init(void);

// Stops the library's threads and frees the process-wide objects in the reverse
// of their start order. A call without a klbase_init before it, a second call
// included, does nothing. Call it from one thread at a time, and only when no
// other thread uses the library. Takes about 20 ms.
KALVO_API void klbase_fini(void);
}

#endif  // KALVOBASE_LIFECYCLE_H_
