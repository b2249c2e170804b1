// Logs: the tree, the records, rolling, and what happens when the disk fails.

#include "kalvobase/log.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "kalvobase/process.h"
#include "kalvobase/text.h"
#include "platform/clock.h"
#include "support/folder.h"
#include "support/log_tree.h"
#include "support/processes.h"

namespace {

using support::LogFiles;

// Logs in a directory of their own, at a local time of the test's choice.
class Log : public testing::Test {
 protected:
  Log() { SetZone("UTC"); }
  ~Log() override {
    platform::hold_wall_time_for_test(0);
    unsetenv("TZ");
    tzset();
  }

  static void SetZone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }

  static long At(int year, int month, int day, int hour, int minute, int second) {
    std::tm time = {};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    return static_cast<long>(timegm(&time));
  }

  // Makes it that time, in UTC.
  static void SetNow(long time) { platform::hold_wall_time_for_test(time); }

  std::unique_ptr<Kalvo_Log> Open(const char* name = "app", int level = 5) const {
    auto log = std::make_unique<Kalvo_Log>(1);
    log->SetMainDir(folder_.Path().c_str());
    log->Init(name, level);
    return log;
  }

  std::vector<std::string> Paths() const { return support::LogPaths(folder_.Path()); }

  std::string ContentOf(const std::string& path) const {
    return support::Content(folder_.Path(path));
  }

  support::Folder folder_;
};

constexpr char kDay[] = "logfiles-2024/07/2024-07-26/";

// A record without its prefix, of which only the shape is looked at.
std::string Bare(const std::string& content) {
  static const std::regex prefix(R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d \d{3} [0-9a-f]{4}\] )");
  return std::regex_replace(content, prefix, "> ");
}

TEST_F(Log, WritesRecordsOfEveryKind) {
  SetNow(At(2024, 7, 26, 7, 8, 9));
  const auto log = Open();
  log->Write("early");
  log->Trace(6, "above the level");
  EXPECT_TRUE(Paths().empty());
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("logfiles-2024")));
  log->Trace(5, "%s %5.1f", "text", 2.75);
  log->Trace(-4097, "ends in a line feed\n");
  log->Trace(1, "");
  log->HexLog(1, "\x01\xfe", 2, "two %d", 2);
  log->HexLog(1, std::string(32, 'a').c_str(), 32, nullptr);
  log->HexLog(1, std::string(33, 'b').c_str(), 33, "x\n");
  log->HexLog(1, nullptr, 5, "none");
  log->HexLog(9, "a", 1, "above the level");
  log->Write("a line\nand another\n");
  const std::string path = std::string(kDay) + "app_2024-07-26 07-1[001].log";
  ASSERT_EQ(Paths(), std::vector<std::string>{path});
  EXPECT_EQ(ContentOf(path).find("another"), std::string::npos);  // not flushed
  log->FFlush();
  const std::string indent(31, ' ');
  std::string as, bs;
  for (int i = 0; i < 32; ++i) {
    as += "61 ";
    bs += "62 ";
  }
  EXPECT_EQ(Bare(ContentOf(path)),
            indent + "early\n> text   2.8\n> ends in a line feed\n> \n> two 2\n01 FE \n> \n" + as +
                "\n\n> x\n" + bs + "\n62 \n> none\n\n" + indent + "a line\nand another\n");
  char id[20];
  std::snprintf(id, sizeof(id), "%04x", static_cast<unsigned>(gettid()));
  EXPECT_EQ(ContentOf(path).substr(6 + 31, 21), "[2024-07-26 07:08:09 ");
  EXPECT_EQ(ContentOf(path).substr(6 + 31 + 25, 6), std::string(id).substr(0, 4) + "] ");
  EXPECT_EQ(std::filesystem::read_symlink(folder_.Path("current")), "logfiles-2024/07/2024-07-26");
  EXPECT_EQ(std::filesystem::read_symlink(folder_.Path(std::string(kDay) + "app.log")),
            "app_2024-07-26 07-1[001].log");
}

TEST_F(Log, RollsBySizeQuarterAndDate) {
  SetNow(At(2024, 7, 26, 23, 29, 50));
  auto log = Open();
  log->SetSizeLimit(1000);  // which is 1 MiB
  const std::string big(600000, 'x');
  const auto record = [&] { log->Trace(1, "%s", big.c_str()); };
  record();
  record();  // beyond the limit by this one
  record();
  const std::string day = kDay;
  const std::string prefix = day + "app_2024-07-26 23-";
  std::vector<std::string> paths = {prefix + "2[001].log", prefix + "2[002].log"};
  EXPECT_EQ(Paths(), paths);
  EXPECT_EQ(ContentOf(paths[0]).size(), 2u * 600032);
  // A new quarter alone is no reason.
  SetNow(At(2024, 7, 26, 23, 30, 0));
  record();
  EXPECT_EQ(Paths(), paths);
  record();
  paths.push_back(prefix + "3[001].log");
  EXPECT_EQ(Paths(), paths);
  // Started again it goes on with what has room.
  log = Open();
  log->Trace(1, "again");
  EXPECT_EQ(Paths(), paths);
  EXPECT_EQ(Bare(ContentOf(paths[2]).substr(600032)), "> again\n");

  // Midnight: the monitor's check closes the file and makes the new day's directory.
  SetNow(At(2024, 7, 27, 0, 0, 0));
  log->CheckFile();
  EXPECT_EQ(std::filesystem::read_symlink(folder_.Path("current")), "logfiles-2024/07/2024-07-27");
  EXPECT_EQ(Paths(), paths);
  log->Trace(1, "new day");
  paths.push_back("logfiles-2024/07/2024-07-27/app_2024-07-27 00-1[001].log");
  EXPECT_EQ(Paths(), paths);
  // A record of another day goes there, and the next one comes back.
  log->Trace(At(1999, 12, 31, 23, 59, 59), 1, "long ago");
  log->Trace(1, "back");
  paths.insert(paths.begin(), "logfiles-1999/12/1999-12-31/app_1999-12-31 23-4[001].log");
  EXPECT_EQ(Paths(), paths);
  EXPECT_EQ(ContentOf(paths[0]).substr(0, 21), "[1999-12-31 23:59:59 ");
  EXPECT_EQ(Bare(ContentOf(paths[4])), "> new day\n> back\n");
}

TEST_F(Log, GoesOnWhenAllNumbersAreTaken) {
  SetNow(At(2024, 7, 26, 7, 0, 0));
  const auto log = Open();
  log->SetSizeLimit(0x100000);
  log->Trace(1, "first");
  for (int i = 1; i <= 999; ++i) {
    char name[60];
    std::snprintf(name, sizeof(name), "app_2024-07-26 07-1[%03d].log", i);
    const std::string path = folder_.Path(kDay + std::string(name));
    std::ofstream(path, std::ios::app).flush();
    std::filesystem::resize_file(path, 0x100000);
  }
  // The first of these fills the file that is open, which stays the one.
  const std::string record(0x100000, 'x');
  for (int i = 0; i < 3; ++i) log->Trace(1, "%s", record.c_str());
  EXPECT_EQ(Paths().size(), 999u);
  const std::string first = folder_.Path(std::string(kDay) + "app_2024-07-26 07-1[001].log");
  EXPECT_EQ(std::filesystem::file_size(first), 0x100000 + 3 * (0x100000u + 32));
}

TEST_F(Log, TellsLocalTimeOnBothSidesOfAChange) {
  SetZone("Europe/Berlin");
  const auto log = Open();
  const long spring = At(2024, 3, 31, 1, 0, 0);   // 02:00 becomes 03:00
  const long autumn = At(2024, 10, 27, 1, 0, 0);  // 03:00 becomes 02:00
  for (const long time : {spring - 1, spring, autumn - 1, autumn}) log->Trace(time, 1, "x");
  const auto files = LogFiles(folder_.Path());
  const auto content = [&](const std::string& path) {
    const auto file = files.find(path);
    return file != files.end() ? file->second : "none";
  };
  const std::string march = content("logfiles-2024/03/2024-03-31/app_2024-03-31 01-4[001].log");
  EXPECT_EQ(march.substr(0, 21), "[2024-03-31 01:59:59 ");
  EXPECT_EQ(march.substr(33, 21), "[2024-03-31 03:00:00 ");
  const std::string october = content("logfiles-2024/10/2024-10-27/app_2024-10-27 02-4[001].log");
  EXPECT_EQ(october.substr(0, 21), "[2024-10-27 02:59:59 ");
  EXPECT_EQ(october.substr(33, 21), "[2024-10-27 02:00:00 ");
  log->Trace(0x7FFFFFFFFFFFFFFF, 1, "a time that no calendar knows");
  EXPECT_EQ(LogFiles(folder_.Path()).size(), 3u);
}

TEST_F(Log, HasItsMainDirectoryWhereItIsTold) {
  Kalvo_String program;
  const std::string beside = std::string(Kalvo_GetExePath(&program)) + "/";
  Kalvo_Log log;
  EXPECT_EQ(log.GetDirInfo(), beside + "log_files");
  const std::vector<std::pair<const char*, std::string>> cases = {
      {"/absolute", "/absolute"},           {" /untrimmed ", " /untrimmed "},
      {" relative\t", beside + "relative"}, {"C:\\drive", "C:\\drive"},
      {" \t ", beside + "log_files"},       {"..", beside + ".."}};
  for (const auto& [directory, expected] : cases) {
    log.SetMainDir(directory);
    EXPECT_EQ(log.GetDirInfo(), expected);
  }
  log.SetMainDir(nullptr);
  EXPECT_EQ(log.GetDirInfo(), cases.back().second);
  // Without a name nothing appears, nor after a change of mind.
  log.SetMainDir(folder_.Path("first").c_str());
  log.CheckFile();
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("first")));
  log.Init("app", 1);
  log.CheckFile();
  log.SetMainDir(folder_.Path("second").c_str());
  log.Trace(1, "x");
  EXPECT_TRUE(LogFiles(folder_.Path("first")).empty());
  EXPECT_EQ(LogFiles(folder_.Path("second")).size(), 1u);
  // From then on with the next day.
  log.SetMainDir(folder_.Path("third").c_str());
  log.Trace(1, "x");
  EXPECT_EQ(LogFiles(folder_.Path("second")).size(), 1u);
  log.Trace(86400, 1, "x");
  EXPECT_EQ(LogFiles(folder_.Path("third")).size(), 1u);
  Kalvo_Log nameless;
  nameless.SetMainDir(folder_.Path("nameless").c_str());
  nameless.Trace(-4097, "before Init");
  EXPECT_FALSE(std::filesystem::exists(folder_.Path("nameless")));
}

TEST_F(Log, MixesNothingBetweenThreads) {
  constexpr int kThreads = 8;
  constexpr int kRecords = 2000;
  const auto log = Open();
  log->SetSizeLimit(0x100000);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&log, t] {
      for (int i = 0; i < kRecords; ++i) {
        log->Trace(1, "thread %d record %d %s", t, i, std::string(100, 'a' + t).c_str());
        if (i % 100 == 0) log->CheckFile();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::map<std::string, int> seen;
  for (const auto& file : LogFiles(folder_.Path())) {
    std::size_t from = 0;
    while (from < file.second.size()) {
      const std::size_t end = file.second.find('\n', from);
      ++seen[file.second.substr(from + 31, end - from - 31)];
      from = end + 1;
    }
  }
  ASSERT_EQ(seen.size(), std::size_t{kThreads * kRecords});
  for (int t = 0; t < kThreads; ++t) {
    const std::string last = "thread " + std::to_string(t) + " record " +
                             std::to_string(kRecords - 1) + " " + std::string(100, 'a' + t);
    EXPECT_EQ(seen[last], 1);
  }
}

TEST_F(Log, RecoversFromARemovedDirectory) {
  const auto log = Open();
  log->Trace(1, "before");
  for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
    std::filesystem::remove_all(entry.path());
  }
  log->Trace(1, "lost");
  log->CheckFile();  // as the monitor does
  log->Trace(1, "after");
  const auto files = LogFiles(folder_.Path());
  ASSERT_EQ(files.size(), 1u);
  const std::string content = Bare(files.begin()->second);  // the monitor may have been first
  EXPECT_TRUE(content == "> after\n" || content == "> lost\n> after\n") << content;
  EXPECT_NE(files.begin()->first.find("[001]"), std::string::npos);
}

// Something stands where the directory should be.
TEST_F(Log, RecoversFromADirectoryThatCannotBeMade) {
  SetNow(At(2024, 7, 26, 7, 0, 0));
  const std::string obstacle = folder_.Write("logfiles-2024", "in the way");
  const auto log = Open();
  for (int i = 0; i < 3; ++i) log->Trace(1, "lost");
  log->Write("kept for later");
  log->CheckFile();
  std::filesystem::remove(obstacle);
  log->Trace(1, "after");
  const auto files = LogFiles(folder_.Path());
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(Bare(files.begin()->second), std::string(31, ' ') + "kept for later\n> after\n");
}

// A volume in a test's directory, until the end.
class Volume {
 public:
  Volume(const std::string& path, const char* size)
      : path_(path), mounted_(mount("tmpfs", path.c_str(), "tmpfs", 0, size) == 0) {}
  Volume(const Volume&) = delete;
  Volume& operator=(const Volume&) = delete;
  ~Volume() {
    if (mounted_) umount(path_.c_str());
  }
  bool mounted() const { return mounted_; }

 private:
  const std::string path_;
  const bool mounted_;
};

TEST_F(Log, RecoversFromAFullDisk) {
  const Volume volume(folder_.Path(), "size=256k");
  if (!volume.mounted()) GTEST_SKIP() << "only root can mount a small file system";
  const auto log = Open();
  const std::string record(9999, 'x');
  for (int i = 0; i < 40; ++i) log->Trace(1, "%s", record.c_str());
  const auto full = LogFiles(folder_.Path());
  ASSERT_EQ(full.size(), 1u);
  const std::string& last = full.begin()->second;
  EXPECT_LE(last.size(), 256u * 1024);
  EXPECT_NE(last.back(), '\n');  // torn
  const std::string path = folder_.Path(full.begin()->first);
  EXPECT_EQ(truncate(path.c_str(), 5), 0);
  log->Write("mended");
  log->Trace(1, "after");
  const std::string mended = "\n" + std::string(31, ' ') + "mended\n> after\n";
  EXPECT_EQ(Bare(support::Content(path).substr(5)), mended);
}

// Whatever its size.
TEST_F(Log, WritesARecordInOnePiece) {
  constexpr int kProcesses = 3;
  constexpr int kRecords = 60;
  std::vector<std::unique_ptr<support::Child>> children;
  for (int p = 0; p < kProcesses; ++p) {
    children.push_back(std::make_unique<support::Child>([&](support::Child&) {
      const auto log = Open();
      log->SetSizeLimit(0x7FFFFFFF);
      const std::string record(100000, static_cast<char>('a' + p));
      for (int i = 0; i < kRecords; ++i) log->Trace(1, "%s\n%s", record.c_str(), record.c_str());
    }));
  }
  for (const auto& child : children) EXPECT_EQ(child->Join(), 0);
  std::size_t whole = 0;
  for (const auto& file : LogFiles(folder_.Path())) {
    std::size_t from = 0;
    for (; from < file.second.size(); from += 31 + 200002) {
      const char letter = file.second[from + 31];
      const std::string half(100000, letter);
      if (file.second.compare(from + 31, 200002, half + "\n" + half + "\n") == 0) ++whole;
    }
  }
  EXPECT_EQ(whole, std::size_t{kProcesses * kRecords});
}

}  // namespace
