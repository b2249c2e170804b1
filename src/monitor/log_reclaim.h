// Making room on a volume that logs have filled.

#ifndef KALVOBASE_SRC_MONITOR_LOG_RECLAIM_H_
#define KALVOBASE_SRC_MONITOR_LOG_RECLAIM_H_

#include <string>

// Deletes the oldest day below the main directory of a log, or the oldest files of the last day
// that is left, if the volume has little room. Whether it has.
//
// Nothing outside the directory is touched, and symbolic links in it are neither counted nor
// followed.
bool ReclaimLogSpace(const std::string& mainDirectory);

#endif  // KALVOBASE_SRC_MONITOR_LOG_RECLAIM_H_
