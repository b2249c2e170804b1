// The object monitor: reports on quiet threads, and room on a full disk.

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <filesystem>
#include <string>
#include <vector>

#include "frame/messages.h"
#include "logging/mp_log.h"
#include "monitor/mp_kobj_manager.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "support/channel.h"
#include "support/folder.h"
#include "support/log_tree.h"

namespace {

namespace fs = std::filesystem;

unsigned long Nothing(void*) { return 0; }

std::string Report(const char* format, const MP_Thread* thread, int seconds, const char* stack) {
  char text[300];
  std::snprintf(text, sizeof(text), format, thread->id(), thread->name(), seconds,
                messages::kThreadParked, stack);
  return text;
}

TEST(Monitor, ReportsThreadsThatGiveNoSignOfLife) {
  support::Channel channel;
  MP_KObjManager monitor;  // whose own thread stays parked
  const long start = platform::wall_time().seconds;
  platform::hold_wall_time_for_test(start);
  MP_Thread* const plain = monitor.NewThread(Nothing, nullptr, false, "plain", nullptr);
  MP_Thread* const told = monitor.NewThread(Nothing, nullptr, false, "told", "what it does");
  struct Case {
    int seconds;
    int level;
  };
  for (const Case& quiet : {Case{4, 0}, Case{5, 3}, Case{120, 3}, Case{121, -4097}}) {
    channel.Logged();  // what was said before
    channel.Printed();
    platform::hold_wall_time_for_test(start + quiet.seconds);
    monitor.RunPass(false);
    EXPECT_TRUE(channel.Logged("!!!!!!!").empty());
    monitor.RunPass(true);
    std::vector<std::string> lines;
    if (quiet.level != 0) {
      lines = {Report(messages::kMonitorHung, plain, quiet.seconds, ""),
               Report(messages::kMonitorHungWithStack, told, quiet.seconds, "what it does")};
    }
    const std::vector<std::string> logged = channel.Logged("!!!!!!!");
    const std::vector<std::string> printed = channel.Printed("!!!!!!!");
    ASSERT_EQ(logged.size(), lines.size()) << quiet.seconds;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      EXPECT_EQ(logged[i], std::to_string(quiet.level) + " " + lines[i]);
      EXPECT_EQ(printed.at(i), "3 " + lines[i]);
    }
  }
  platform::hold_wall_time_for_test(0);
  monitor.DeleteThread(plain);
  monitor.DeleteThread(plain);  // nothing any more
  monitor.DeleteThread(nullptr);
}

void Print(MP_Log* log, const char* format, ...) {
  va_list args;
  va_start(args, format);
  log->Print(1, format, args);
  va_end(args);
}

TEST(Monitor, StopsAndClosesWhatIsLeft) {
  const support::Folder folder;
  std::atomic<bool> ended{false};
  struct Worker {
    std::atomic<bool>* ended;
    std::atomic<MP_Thread*> thread{nullptr};
    std::atomic<bool> begun{false};
  } worker{&ended};
  {
    MP_KObjManager monitor;
    monitor.EnsureRunning();
    worker.thread = monitor.NewThread(
        [](void* context) {
          Worker* const self = static_cast<Worker*>(context);
          self->begun = true;
          while (self->thread == nullptr || self->thread.load()->Running() != 0) usleep(1000);
          *self->ended = true;
          return 0ul;
        },
        &worker, true, "worker", nullptr);
    worker.thread.load()->Start();
    MP_Log* const log = monitor.NewLog();
    log->SetMainDirectory(folder.Path().c_str());
    log->Init("app", 1);
    Print(log, "flushed");
    log->Write("not flushed");
    while (!worker.begun) usleep(1000);
  }
  EXPECT_TRUE(ended);
  const auto files = support::LogFiles(folder.Path());
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(files.begin()->second.substr(31), "flushed\n" + std::string(31, ' ') + "not flushed\n");
}

// A log's tree on a volume of 16 MiB, which is always short of room.
class Reclaim : public testing::Test {
 protected:
  explicit Reclaim(const char* kind = "tmpfs") : kind_(kind) {}

  void SetUp() override {
    if (mount(kind_, folder_.Path().c_str(), kind_, 0, "size=16m") != 0) {
      GTEST_SKIP() << "only root can mount a small file system";
    }
    mounted_ = true;
    log_ = monitor_.NewLog();
    log_->SetMainDirectory(Main().c_str());
  }
  void TearDown() override {
    if (log_ != nullptr) monitor_.DeleteLog(log_);
    if (mounted_) {
      EXPECT_EQ(umount(folder_.Path().c_str()), 0);
    }
  }

  std::string Main() const { return folder_.Path("logs"); }

  // Makes files in a directory below the main directory.
  void Fill(const std::string& directory, int files) {
    fs::create_directories(Main() + "/" + directory);
    for (int i = 0; i < files; ++i) {
      char name[20];
      std::snprintf(name, sizeof(name), "/f%03d.log", i);
      folder_.Write("logs/" + directory + name, "x");
    }
  }

  std::size_t Count(const std::string& directory) const {
    return support::Names(Main() + "/" + directory).size();
  }
  // Lets time pass until what is made now is younger than that directory. Some systems count
  // in steps of several milliseconds.
  void OutliveBirthOf(const std::string& directory) const {
    platform::FileStatus old;
    platform::FileStatus now;
    ASSERT_TRUE(platform::file_status(Main() + "/" + directory, &old));
    do {
      usleep(1000);
      fs::create_directory(folder_.Path("probe"));
      ASSERT_TRUE(platform::file_status(folder_.Path("probe"), &now));
      fs::remove(folder_.Path("probe"));
    } while (now.created == old.created && now.createdNanoseconds == old.createdNanoseconds);
  }
  bool Exists(const std::string& path) const { return fs::exists(Main() + "/" + path); }

  // One pass, and the paths that it tells as deleted.
  std::vector<std::string> Pass() {
    support::Channel channel;
    monitor_.RunPass(false);
    const std::vector<std::string> printed = channel.Printed(Main());
    std::vector<std::string> paths;
    for (const std::string& line : channel.Logged(Main())) {
      const std::size_t from = line.find(Main());
      EXPECT_EQ(line.substr(0, 6), "-4097 ");
      EXPECT_EQ(printed.at(paths.size()), "3 " + line.substr(6));
      const std::string path = line.substr(from + Main().size() + 1);
      paths.push_back(path.substr(0, path.find(" !!!!!!!")));
    }
    return paths;
  }

  const char* const kind_;
  support::Folder folder_;
  MP_KObjManager monitor_;
  MP_Log* log_ = nullptr;
  bool mounted_ = false;
};

using Paths = std::vector<std::string>;

TEST_F(Reclaim, TakesTheOldestDayFirst) {
  Fill("logfiles-2024/05/2024-05-09", 3);
  OutliveBirthOf("logfiles-2024/05/2024-05-09");
  Fill("logfiles-2024/05/2024-05-02", 3);  // made later, so it is not the oldest
  Fill("logfiles-2025/01/2025-01-01", 3);
  EXPECT_EQ(Pass(), Paths{"logfiles-2024/05/2024-05-09"});
  EXPECT_FALSE(Exists("logfiles-2024/05/2024-05-09"));
  EXPECT_EQ(Pass(), Paths{"logfiles-2024/05/2024-05-02"});
  // What is empty goes without a word.
  EXPECT_EQ(Pass(), Paths());
  EXPECT_FALSE(Exists("logfiles-2024/05"));
  EXPECT_EQ(Pass(), Paths());
  EXPECT_FALSE(Exists("logfiles-2024"));
  EXPECT_EQ(Pass(), Paths());
  EXPECT_EQ(Count("logfiles-2025/01/2025-01-01"), 3u);
}

TEST_F(Reclaim, KeepsTheLastFilesOfTheLastDay) {
  const std::string day = "logfiles-2025/01/2025-01-01";
  Fill(day, 60);
  fs::create_symlink("f059.log", Main() + "/" + day + "/app.log");
  for (int pass = 0; pass < 2; ++pass) {
    const Paths deleted = Pass();
    ASSERT_EQ(deleted.size(), 10u);
    EXPECT_EQ(deleted.front(), day + (pass == 0 ? "/f000.log" : "/f010.log"));
  }
  EXPECT_EQ(Pass(), Paths());
  EXPECT_EQ(Count(day), 41u);
  EXPECT_TRUE(fs::is_symlink(Main() + "/" + day + "/app.log"));
}

TEST_F(Reclaim, NeverFollowsALinkNorTakesWhatIsNoDay) {
  folder_.Write("elsewhere/05/day/kept.log", "x");
  folder_.Write("elsewhere/kept.log", "x");
  Fill("", 0);
  fs::create_directory_symlink(folder_.Path("elsewhere"), Main() + "/logfiles-2000");
  fs::create_directories(Main() + "/logfiles-2001");
  fs::create_directory_symlink(folder_.Path("elsewhere/05"), Main() + "/logfiles-2001/01");
  folder_.Write("logs/notes/README", "x");
  Fill("logfiles-2024/05/2024-05-09", 3);
  Fill("logfiles-2024/05/2024-05-10", 3);
  fs::create_directory_symlink(folder_.Path("elsewhere"),
                               Main() + "/logfiles-2024/05/2024-05-09/l");
  EXPECT_EQ(Pass(), Paths{"logfiles-2024/05/2024-05-09"});
  for (int pass = 0; pass < 5; ++pass) EXPECT_EQ(Pass(), Paths());
  EXPECT_TRUE(fs::exists(folder_.Path("elsewhere/05/day/kept.log")));
  EXPECT_TRUE(fs::exists(folder_.Path("elsewhere/kept.log")));
  EXPECT_TRUE(Exists("notes/README"));
  EXPECT_TRUE(Exists("logfiles-2001/01"));
}

TEST_F(Reclaim, GivesLogsTheirTurn) {
  MP_Log* const other = monitor_.NewLog();
  other->SetMainDirectory(folder_.Path("logs/../others").c_str());
  Fill("logfiles-2024/05/2024-05-01", 1);
  Fill("logfiles-2024/05/2024-05-02", 1);
  for (const char* day : {"1", "2"}) {
    folder_.Write(std::string("others/logfiles-2024/05/2024-05-0") + day + "/x.log", "x");
  }
  EXPECT_EQ(Pass().size(), 1u);
  EXPECT_TRUE(fs::exists(folder_.Path("others/logfiles-2024/05/2024-05-01")));
  EXPECT_EQ(Pass().size(), 0u);  // of this log's
  EXPECT_FALSE(fs::exists(folder_.Path("others/logfiles-2024/05/2024-05-01")));
  monitor_.DeleteLog(other);
}

// A volume whose files have no birth time.
class ReclaimByName : public Reclaim {
 protected:
  ReclaimByName() : Reclaim("ramfs") {}
  ~ReclaimByName() override { platform::hold_wall_time_for_test(0); }
};

TEST_F(ReclaimByName, GoesByTheDatesAndSparesToday) {
  const std::string month = "logfiles-2024/05/";
  Fill(month + "2024-05-01", 3);
  Fill(month + "2024-05-02", 0);
  Fill(month + "2024-05-10", 0);
  for (int i = 0; i < 60; ++i) {
    const std::string base = i % 2 == 0 ? "a" : "z_9";
    const std::string hour = std::to_string(10 + i / 4);
    folder_.Write("logs/" + month + "2024-05-02/" + base + "_2024-05-02 " + hour + "-" +
                      std::to_string(i % 4 + 1) + "[001].log",
                  "x");
  }
  platform::FileStatus status;
  ASSERT_TRUE(platform::file_status(Main(), &status));
  if (status.birthKnown) GTEST_SKIP() << "this system knows birth times everywhere";
  std::tm date = {};
  date.tm_year = 124;
  date.tm_mon = 4;
  date.tm_mday = 2;
  date.tm_hour = 12;
  platform::hold_wall_time_for_test(std::mktime(&date));
  // The change of a directory does not make it young.
  EXPECT_EQ(Pass(), Paths{month + "2024-05-01"});
  EXPECT_EQ(Pass(), Paths{month + "2024-05-10"});
  const Paths files = Pass();
  ASSERT_EQ(files.size(), 10u);
  EXPECT_EQ(files[0], month + "2024-05-02/a_2024-05-02 10-1[001].log");
  EXPECT_EQ(files[1], month + "2024-05-02/z_9_2024-05-02 10-2[001].log");
  EXPECT_EQ(files[9], month + "2024-05-02/z_9_2024-05-02 12-2[001].log");
}

TEST(Volume, TheAdministratorMayUseTheReserve) {
  platform::VolumeSpace space;
  struct statvfs volume;
  ASSERT_TRUE(platform::volume_space(".", &space));
  ASSERT_EQ(statvfs(".", &volume), 0);
  const auto reserve = std::uint64_t{volume.f_bfree - volume.f_bavail} * volume.f_frsize;
  if (reserve == 0) GTEST_SKIP() << "this volume has no reserve";
  const std::uint64_t withheld = space.free - space.available;
  EXPECT_NEAR(static_cast<double>(withheld), geteuid() == 0 ? 0 : static_cast<double>(reserve),
              1e7);
}

}  // namespace
