// Copying and moving with a check, on real file systems, full ones included.

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "kalvobase/file.h"
#include "support/folder.h"

namespace {

namespace fs = std::filesystem;
using support::Content;

int Copy(const std::string& from, const std::string& to, int mode) {
  return Kalvo_FileSafeCopy(from.c_str(), to.c_str(), mode);
}

int Rename(const std::string& from, const std::string& to, int mode) {
  return Kalvo_FileSafeRename(from.c_str(), to.c_str(), mode);
}

TEST(FileCopy, Modes) {
  const support::Folder folder;
  const long before = support::OpenDescriptors();
  const std::string source = folder.Write("source", std::string(10000, 's') + "\n");
  chmod(source.c_str(), 06640);  // the owner's identity is not for copies
  const std::string copy = folder.Path("new/place/copy");
  EXPECT_EQ(Copy(folder.Path("none"), folder.Path("made/copy"), 1), -9);
  EXPECT_TRUE(fs::is_directory(folder.Path("made")));
  EXPECT_EQ(Copy(source, copy, 0), 10001);
  EXPECT_EQ(Content(copy), Content(source));
  struct stat status;
  stat(copy.c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777u, 0640u);
  folder.Write("new/place/copy", "old");
  EXPECT_EQ(Copy(source, copy, 0), -1);
  EXPECT_EQ(Content(copy), "old");
  EXPECT_EQ(Copy(source, copy, 2), 10001);
  EXPECT_EQ(Content(copy), "old" + Content(source));
  EXPECT_EQ(Copy(source, copy, 1), 10001);
  EXPECT_EQ(Content(copy), Content(source));
  EXPECT_EQ(Copy(folder.Write("empty", ""), folder.Path("empty2"), 0), 0);
  EXPECT_TRUE(fs::exists(folder.Path("empty2")));
  EXPECT_EQ(Kalvo_FileSafeCopy(nullptr, nullptr, 0), -9);

  // One file under two names.
  fs::create_hard_link(source, folder.Path("hard"));
  fs::create_symlink("source", folder.Path("soft"));
  for (const char* other : {"source", "hard", "soft"}) {
    for (const int mode : {0, 1, 2}) EXPECT_EQ(Copy(source, folder.Path(other), mode), -1);
  }
  EXPECT_EQ(Content(source).size(), 10001u);
  EXPECT_EQ(support::OpenDescriptors(), before);
}

TEST(FileCopy, ShortCopiesDoNotStay) {
  const support::Folder folder;
  // A source that has more than it says.
  EXPECT_EQ(Copy("/proc/self/status", folder.Path("status"), 0), -2);
  EXPECT_FALSE(fs::exists(folder.Path("status")));
  folder.Write("log", "before");
  EXPECT_EQ(Copy("/proc/self/status", folder.Path("log"), 2), -2);
  EXPECT_FALSE(fs::exists(folder.Path("log")));
  // What cannot be opened leaves all as it was.
  folder.Write("log", "before");
  fs::create_directories(folder.Path("dir/in"));
  EXPECT_EQ(Copy(folder.Path("dir"), folder.Path("log"), 1), -2);
  EXPECT_EQ(Rename(folder.Path("dir"), folder.Path("log"), 2), -5);
  EXPECT_EQ(Content(folder.Path("log")), "before");
  // A link stays, the half copy behind it does not; a device and a pipe are no copies.
  folder.Write("target", "");
  fs::create_symlink("target", folder.Path("link"));
  EXPECT_EQ(Copy("/proc/self/status", folder.Path("link"), 1), -2);
  EXPECT_FALSE(fs::exists(folder.Path("target")));
  EXPECT_TRUE(fs::is_symlink(folder.Path("link")));
  mkfifo(folder.Path("pipe").c_str(), 0600);
  EXPECT_EQ(Rename(folder.Path("log"), folder.Path("pipe"), 2), -5);
  EXPECT_EQ(Content(folder.Path("log")), "before");
  if (mknod(folder.Path("full").c_str(), S_IFCHR | 0600, makedev(1, 7)) == 0) {
    EXPECT_EQ(Copy(folder.Path("log"), folder.Path("full"), 1), -2);
    EXPECT_TRUE(fs::exists(folder.Path("full")));
    EXPECT_EQ(Copy("/dev/zero", folder.Path("zeros"), 0), -2);
  }
  EXPECT_EQ(Copy(folder.Path("log"), folder.Path("dir"), 1), -2);
  EXPECT_TRUE(fs::is_directory(folder.Path("dir/in")));
}

TEST(FileRename, Modes) {
  const support::Folder folder;
  const std::string source = folder.Write("source", "12345");
  chmod(source.c_str(), 0444);
  EXPECT_EQ(Rename(folder.Path("none"), folder.Path("x/y"), 0), -9);
  EXPECT_FALSE(fs::exists(folder.Path("x")));
  EXPECT_EQ(Rename(source, folder.Path("a\\b/moved"), 0), 5);
  EXPECT_FALSE(fs::exists(source));
  const std::string moved = folder.Path("a/b/moved");
  struct stat status;
  stat(moved.c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777u, 0444u);

  folder.Write("source", "678");
  EXPECT_EQ(Rename(source, moved, 0), -1);
  EXPECT_EQ(Rename(source, moved, 1), 3);  // the old one could only be read
  EXPECT_EQ(Content(moved), "678");
  folder.Write("source", "9");
  EXPECT_EQ(Rename(source, moved, -1), 1);
  EXPECT_EQ(Content(moved), "6789");
  EXPECT_FALSE(fs::exists(source));
  folder.Write("source", "kept");
  fs::create_directories(folder.Path("dir/in"));
  fs::create_symlink("source", folder.Path("link"));
  EXPECT_EQ(Rename(folder.Path("link"), folder.Path("dir/link"), 0), 4);  // dangles there
  EXPECT_EQ(Rename(source, folder.Path("dir"), 1), -2);
  EXPECT_EQ(Rename(source, folder.Path("source/below"), 0), -3);
  EXPECT_EQ(Content(source), "kept");
}

// Renaming onto another name of the same file replaces that name.
TEST(FileRename, OntoTheSameFile) {
  const support::Folder folder;
  const std::string file = folder.Path("file");
  fs::create_directory(folder.Path("dir"));
  fs::create_directory_symlink("dir", folder.Path("other"));
  for (const int mode : {0, 1, 2}) {
    folder.Write("file", "kept");
    folder.Write("dir/file", "kept");
    fs::create_symlink("file", folder.Path("soft"));
    fs::create_symlink("soft", folder.Path("softer"));
    // The same name, and sources that lead to the destination.
    for (const char* from : {"dir", "dir/", "other", "other/"}) {
      EXPECT_EQ(Rename(folder.Path(from), folder.Path("dir"), mode), -1) << from;
      EXPECT_EQ(Rename(folder.Path(from), folder.Path("dir/"), mode), -1) << from;
    }
    for (const char* from : {"file", "dir/../file", "soft", "softer"}) {
      EXPECT_EQ(Rename(folder.Path(from), file, mode), -1) << from;
    }
    EXPECT_EQ(Rename(folder.Path("softer"), folder.Path("soft"), mode), -1);
    EXPECT_EQ(Rename(folder.Path("dir/file"), folder.Path("other/file"), mode), -1);
    EXPECT_EQ(Content(folder.Path("dir/file")), "kept");
    for (const char* name : {"dir/hard", "softer", "soft"}) {
      const std::string to = folder.Path(name);
      if (!fs::exists(to)) fs::create_hard_link(file, to);
      EXPECT_EQ(Rename(file, to, mode), mode == 0 ? -1 : 4) << name;
      if (mode == 0) continue;
      EXPECT_FALSE(fs::exists(file));
      EXPECT_FALSE(fs::is_symlink(to));
      EXPECT_EQ(Content(to), "kept") << name;
      fs::rename(to, file);
    }
    fs::remove(folder.Path("soft"));
    fs::remove(folder.Path("softer"));
    fs::remove(folder.Path("dir/hard"));
  }
}

TEST(FileCopy, AFullVolume) {
  const support::Folder folder;
  fs::create_directory(folder.Path("small"));
  if (mount("tmpfs", folder.Path("small").c_str(), "tmpfs", 0, "size=64k") != 0) {
    GTEST_SKIP() << "no right to mount a small volume";
  }
  const std::string large = folder.Write("large", std::string(100000, 'l'));
  const std::string little = folder.Write("little", std::string(6000, 'l'));
  EXPECT_EQ(Copy(large, folder.Path("small/copy"), 0), -2);
  EXPECT_FALSE(fs::exists(folder.Path("small/copy")));
  EXPECT_EQ(Copy(little, folder.Path("small/copy"), 0), 6000);
  EXPECT_EQ(Rename(large, folder.Path("small/copy"), 2), -5);
  EXPECT_FALSE(fs::exists(folder.Path("small/copy")));
  EXPECT_EQ(Content(large).size(), 100000u);
  // What the buffer took and the volume did not: nothing of it may be taken for copied.
  folder.Write("small/filler", std::string(60000, 'f'));
  EXPECT_EQ(Copy(little, folder.Path("small/copy"), 0), -2);
  folder.Write("small/copy", "");
  EXPECT_EQ(Rename(little, folder.Path("small/copy"), 2), -5);
  EXPECT_EQ(Content(little).size(), 6000u);
  // From one volume to another nothing is renamed.
  EXPECT_EQ(Rename(little, folder.Path("small/new"), 0), -3);
  EXPECT_EQ(Rename(little, folder.Path("small/filler"), 1), -2);
  EXPECT_FALSE(fs::exists(folder.Path("small/filler")));
  EXPECT_EQ(Content(little).size(), 6000u);
  EXPECT_EQ(umount(folder.Path("small").c_str()), 0);
}

}  // namespace
