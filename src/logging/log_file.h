// LogFile: the file that a log writes to at the moment, and its place in the tree.

#ifndef KALVOBASE_SRC_LOGGING_LOG_FILE_H_
#define KALVOBASE_SRC_LOGGING_LOG_FILE_H_

#include <cstdint>
#include <ctime>
#include <string>

#include "files/mp_stream_writer.h"

// The directory of a day, below the main directory of a log.
std::string LogDayDirectory(const std::tm& time);

// One thread at a time.
class LogFile {
 public:
  LogFile() { SetMainDirectory(""); }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;
  ~LogFile() { Close(); }

  const std::string& baseName() const { return baseName_; }
  void SetBaseName(const char* name) { baseName_ = name != nullptr ? name : ""; }

  const std::string& mainDirectory() const { return mainDirectory_; }
  void SetMainDirectory(const char* directory);

  void SetSizeLimit(int bytes);

  // Makes the file the right one for a record of that time. Without one afterwards the record
  // is lost.
  void Roll(const std::tm& time);

  // Closes the file if it is not the right one for that time, and makes the directory of the
  // day.
  void Check(const std::tm& time);

  bool IsOpen() const { return writer_.descriptor() >= 0; }

  MP_StreamWriter* writer() { return &writer_; }

  // Counts what the writer says that was put into it.
  void Count(int put) {
    if (put < 0) torn_ = true;
    if (put > 0) byteCount_ += put;
  }

  // Writes out what is in the writer. If that fails, the file may end inside of a record.
  void Flush();

  // Begins a new line behind a torn one.
  void MendLine();

 private:
  struct Date {
    int year = 0;
    int month = 0;
    int day = 0;
  };

  bool IsToday(const std::tm& time) const;
  bool HasRoom() const { return IsOpen() && byteCount_ < sizeLimit_; }
  void StartDay(const std::tm& time);
  void ChooseName(const std::tm& time);
  void Open();
  void Close();
  void Link(const std::string& target, const std::string& path) const;
  void LinkDay() const;

  std::string baseName_;
  std::string mainDirectory_;
  std::string dayDirectory_;
  std::string fileName_;  // without the directory
  MP_StreamWriter writer_;
  Date date_;  // of the day directory
  std::int64_t byteCount_ = 0;
  std::int64_t sizeLimit_ = 0x200000;
  bool hasRecords_ = false;
  bool torn_ = false;
};

#endif  // KALVOBASE_SRC_LOGGING_LOG_FILE_H_
