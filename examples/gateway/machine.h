// What the machine tells about itself.

#ifndef GATEWAY_MACHINE_H_
#define GATEWAY_MACHINE_H_

#include <kalvobase/kalvobase.h>

// The name of the operating system, from /etc/os-release.
Kalvo_String SystemName();

// Adds a sample for each metric that the machine has now to `queue`, which owns them then:
// the load averages, memory in use, and the traffic of each network interface. Returns
// their number.
int TakeSamples(Kalvo_Queue* queue);

#endif  // GATEWAY_MACHINE_H_
