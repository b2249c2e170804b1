// Log files that look after themselves.
//
//   Kalvo_Log log(1);
//   log.SetMainDir("log");  // in the directory of the program
//   log.Init("host", 3);    // records of level 3 and below
//   log.Trace(1, "%s: %d items", "today", 12);
//   log.HexLog(3, packet, length, "from %s", peer);
//
// writes to log/logfiles-2024/07/2024-07-26/host_2024-07-26 07-1[001].log:
//
//  [2024-07-26 07:08:09 123 0abc] today: 12 items
//
// The prefix has the local time, milliseconds and the first four hexadecimal digits of the
// number of the writing thread. In a file's name stand the hour, the quarter of the hour, and a
// number. The next file starts when the size limit is reached and with each day. A file is
// closed soon after midnight also if nothing more is written, and when 500 MiB or less are free
// on its volume, a thread of the library deletes the oldest days below the main directory; keep
// nothing else there. Where the system has symbolic links, `current` in the main directory leads
// to the day that was written to last, and `host.log` in a day's directory to its last file.
//
// A record is flushed at once, in one write. Records that cannot be written are lost: nothing
// here reports a failure, and logging goes on when the trouble has ended.
//
// Every operation may be called from any thread, also of a log that was made without locking.
// Formats are those of Kalvo_String::sprintf.

#ifndef KALVOBASE_LOG_H_
#define KALVOBASE_LOG_H_

#include <cstdarg>

#include "kalvobase/types.h"

class MP_Log;

// A copy writes to the same log with no count of users: of the handles that share one exactly
// one may be destroyed, and after that the others must not be used.
class KALVO_API Kalvo_Log {
 public:
  // Without a file. `locked` 0 promises that one thread at a time uses the log.
  Kalvo_Log(int locked = 1);
  Kalvo_Log(const Kalvo_Log& other);
  Kalvo_Log& operator=(const Kalvo_Log& other);

  // Writes out what is in the buffer and closes the file.
  virtual ~Kalvo_Log();

  // Sets the first part of all file names, and the highest level that passes, which is the
  // lowest number before.
  void Init(const char* name, int level);

  // Sets the main directory, which is made when it is needed. An absolute path, or one with a
  // drive letter, counts as it is; any other lies in the directory of the program, blanks and
  // tabs around it left out; an empty one is "log_files" there, which is also the default. Null
  // changes nothing. Once there is a record it takes effect with the next day.
  void SetMainDir(const char* dir);

  void changeLevel(int level);

  // Sets the size in bytes at which the next file starts, at least 1 MiB; the default is
  // 2 MiB. A file may be larger by one record.
  void SetSizeLimit(int bytes);

  // Accepted for old hosts; no file ends by its number of lines.
  void SetLineLimit(int lines);

  // Write a record if `level` is not above the level of the log: with the current time, or
  // with `time` in seconds since 1970, in the file of that day.
  void Trace(int level, const char* format, ...);
  void Trace(long time, int level, const char* format, ...);
  void print(int level, const char* format, va_list args);
  void print(long time, int level, const char* format, va_list args);

  // Write a record that shows `length` bytes in hexadecimal below its message, 32 in a line.
  // `format` may be null.
  void HexLog(int level, const char* data, int length, const char* format, ...);
  void HexPrint(int level, const char* data, int length, const char* format, va_list args);

  // Puts a line without a prefix, indented by its width, whatever the level. It is not flushed:
  // the next record or FFlush does that.
  void Write(const char* text);

  void FFlush();

  // Closes the file if its day is over, its size limit is reached or it has been removed, and
  // makes the directory of the day. The library does this once a second.
  void CheckFile();

  // The main directory. The text is good until the next SetMainDir, which must not run at the
  // same time.
  const char* GetDirInfo();

 private:
  MP_Log* impl_;
};

#endif  // KALVOBASE_LOG_H_
