// What gateway.ini says.

#ifndef GATEWAY_SETTINGS_H_
#define GATEWAY_SETTINGS_H_

#include <kalvobase/kalvobase.h>

#include "metric.h"

struct Settings {
  int rounds = 10;
  int intervalMs = 100;
  int beaconPort = 47701;
  Kalvo_String logDirectory{"."};
  int logLevel = 3;
  Kalvo_StringArray interfaces;  // empty: all of them
  Limits processor;
  Limits load;
  Limits memory;
};

// What the file does not tell stays as it is.
void LoadSettings(const char* path, Settings* settings);

// Counts one more run in the file and leaves all else in it alone. How many that makes; 0 if
// there is no such file.
int CountRun(const char* path);

#endif  // GATEWAY_SETTINGS_H_
