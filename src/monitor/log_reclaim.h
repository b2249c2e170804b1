// Making room on a volume that logs have filled.

#ifndef KALVOBASE_SRC_MONITOR_LOG_RECLAIM_H_
#define KALVOBASE_SRC_MONITOR_LOG_RECLAIM_H_

#include <ctime>
#include <string>

// If the volume has little room, deletes the oldest day below the main directory of a log, or the
// oldest files of the last day that is left. Returns whether the volume has little room.
//
// Nothing outside the directory is touched, nor the directory of `today` removed. Symbolic links
// are neither counted nor followed.
bool ReclaimLogSpace(const std::string& mainDirectory, const std::tm& today);

#endif  // KALVOBASE_SRC_MONITOR_LOG_RECLAIM_H_
