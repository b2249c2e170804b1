#include "logging/log_file.h"

#include <algorithm>
#include <cstdio>

#include "files/path.h"
#include "kalvobase/process.h"
#include "kalvobase/text.h"
#include "platform/file.h"

namespace {

constexpr int kMinSizeLimit = 0x100000;
constexpr int kMaxSequence = 999;
constexpr int kPermissions = 0660;

std::string System(const std::string& path) { return platform::system_path(path.c_str()); }

std::string WithoutDirectory(const std::string& path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

// The path of something in the directory of the program.
std::string BesideProgram(const std::string& name) {
  Kalvo_String path;
  const std::string directory = Kalvo_GetExePath(&path);
  return (directory.empty() ? "." : directory) + "/" + name;
}

}  // namespace

std::string LogDayDirectory(const std::tm& time) {
  const int year = time.tm_year + 1900;
  const int month = time.tm_mon + 1;
  Kalvo_String directory;
  directory.sprintf("logfiles-%04d/%02d/%4.4d-%2.2d-%2.2d", year, month, year, month, time.tm_mday);
  return directory.c_str();
}

void LogFile::SetMainDirectory(const char* directory) {
  std::string trimmed(directory);
  trimmed.erase(0, std::min(trimmed.find_first_not_of(" \t"), trimmed.size()));
  trimmed.erase(trimmed.find_last_not_of(" \t") + 1);
  if (trimmed.empty()) {
    mainDirectory_ = BesideProgram("log_files");
  } else if (platform::path_is_absolute(trimmed.c_str()) ||
             (trimmed.size() > 1 && trimmed[1] == ':')) {
    mainDirectory_ = directory;
  } else {
    mainDirectory_ = BesideProgram(trimmed);
  }
  // Nothing must appear in the directory from before.
  if (!hasRecords_) date_ = Date();
}

void LogFile::SetSizeLimit(int bytes) { sizeLimit_ = std::max(bytes, kMinSizeLimit); }

bool LogFile::IsToday(const std::tm& time) const {
  return time.tm_mday == date_.day && time.tm_mon + 1 == date_.month &&
         time.tm_year + 1900 == date_.year;
}

void LogFile::StartDay(const std::tm& time) {
  date_ = {time.tm_year + 1900, time.tm_mon + 1, time.tm_mday};
  dayDirectory_ = mainDirectory_ + "/" + LogDayDirectory(time);
}

void LogFile::Roll(const std::tm& time) {
  const bool today = IsToday(time);
  if (today && HasRoom()) return;
  if (!today) StartDay(time);
  Close();
  ChooseName(time);
  Open();
}

void LogFile::Check(const std::tm& time) {
  if (baseName_.empty()) return;
  const bool today = IsToday(time);
  if (today && HasRoom()) {
    if (!platform::file_is_nameless(writer_.descriptor())) return;
    fileName_.clear();  // the name is free again
  }
  if (!today) StartDay(time);
  Close();
  path::MakeDirectory(dayDirectory_.c_str());
  LinkDay();
}

// Takes the first name that is not that of the file that was full just now, and whose file has
// room. If there is none, it stays with the one that it has.
void LogFile::ChooseName(const std::tm& time) {
  Kalvo_String name;
  for (int sequence = 1; sequence <= kMaxSequence; ++sequence) {
    name.sprintf("%s_%04d-%02d-%02d %02d-%d[%03d].log", baseName_.c_str(), date_.year, date_.month,
                 date_.day, time.tm_hour, time.tm_min / 15 + 1, sequence);
    if (fileName_ == name.c_str()) continue;
    platform::FileStatus status;
    const bool exists = platform::file_status(System(dayDirectory_ + "/" + name.c_str()), &status);
    byteCount_ = exists ? status.size : 0;
    if (byteCount_ < sizeLimit_) {
      fileName_ = name.c_str();
      return;
    }
  }
}

void LogFile::Open() {
  const std::string path = dayDirectory_ + "/" + fileName_;
  const int descriptor = path::SafeOpen(
      path.c_str(), platform::kOpenCreate | platform::kOpenAppend | platform::kOpenReadWrite,
      kPermissions);
  if (descriptor < 0) return;  // and the next record tries again
  writer_.Attach(descriptor);
  hasRecords_ = true;
  LinkDay();
  Link(WithoutDirectory(fileName_), dayDirectory_ + "/" + baseName_ + ".log");
}

void LogFile::Close() {
  const int descriptor = writer_.descriptor();
  if (descriptor < 0) return;
  Flush();
  writer_.Detach();
  platform::file_close(descriptor);
}

// Links are for those who look at the logs; the library reads none.
void LogFile::Link(const std::string& target, const std::string& path) const {
  const std::string link = System(path);
  if (platform::link_target(link) == target) return;
  platform::file_remove(link);
  platform::link_make(target, link);
}

void LogFile::LinkDay() const {
  const std::string main = mainDirectory_ + "/";
  const bool inside = dayDirectory_.compare(0, main.size(), main) == 0;
  Link(System(inside ? dayDirectory_.substr(main.size()) : dayDirectory_), main + "current");
}

void LogFile::Flush() {
  if (writer_.Flush() < 0) torn_ = true;
}

void LogFile::MendLine() {
  if (!torn_) return;
  torn_ = false;
  char last = '\n';
  const int descriptor = writer_.descriptor();
  if (platform::file_seek(descriptor, -1, SEEK_END) >= 0 &&
      platform::file_read(descriptor, &last, 1) == 1 && last != '\n') {
    Count(writer_.WriteBlock("\n", 1));
  }
}
