// Paths, and making what they name.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "kalvobase/file.h"
#include "kalvobase/text.h"
#include "support/folder.h"

namespace {

std::string Real(const char* path) {
  Kalvo_String out;
  return Kalvo_FileItem::GetRealPathName(path, out);
}

TEST(Path, RealNames) {
  const support::Folder folder;
  const std::string here = folder.Path();
  ASSERT_EQ(chdir(here.c_str()), 0);
  struct Case {
    const char* path;
    std::string real;
  };
  for (const Case& c :
       {Case{"C:/a//b/", "C:\\a\\b"}, Case{"C:\\a\\.\\b\\..\\c", "C:\\a\\c"},
        Case{"C:\\..\\..\\a", "C:\\a"}, Case{"C:", "C:\\"},
        Case{"\\\\host\\share\\a\\..\\b\\", "\\\\host\\share\\b"}, Case{"/", "/"}, Case{"\\", "/"},
        Case{"/../..", "/"}, Case{"/a/./b//../c\\d/", "/a/c/d"}, Case{"\\a\\b", "/a/b"},
        Case{"...", here + "/..."}, Case{"x\\y/..", here + "/x"}, Case{".", here},
        Case{"1:x", here + "/1:x"}}) {
    EXPECT_EQ(Real(c.path), c.real) << c.path;
  }
  ASSERT_EQ(chdir("/"), 0);
  EXPECT_EQ(Real("x"), "/x");
  Kalvo_String out("kept ");
  EXPECT_STREQ(Kalvo_FileItem::GetRealPathName(nullptr, out), "kept ");
  EXPECT_STREQ(Kalvo_FileItem::GetRealPathName("", out), "kept ");
  EXPECT_STREQ(Kalvo_FileItem::GetRealPathName("C:\\a", out), "kept C:\\a");
  EXPECT_STREQ(Kalvo_FileItem::GetRealPathName("/a", out), "/a");
  EXPECT_STREQ(Kalvo_FileItem::GetRealPathName(out.c_str(), out), "/a");
}

TEST(Path, MakingDirectories) {
  const support::Folder folder;
  const auto isDirectory = [&folder](const char* name) {
    return std::filesystem::is_directory(folder.Path(name));
  };
  Kalvo_FileItem::CreateDir((folder.Path() + "\\x/y\\z").c_str(), 0);
  EXPECT_TRUE(isDirectory("x/y/z"));
  Kalvo_FileItem::CreateDir(folder.Path("x/y/z").c_str(), 0);
  Kalvo_FileItem::CreateDir(nullptr, 0);
  Kalvo_FileItem::CreateDir((folder.Write("file", "") + "/below/it").c_str(), 0);
  EXPECT_FALSE(isDirectory("file"));

  const int descriptor = Kalvo_FileItem::SafeOpenFile(folder.Path("p/q/f").c_str(), 0600);
  ASSERT_GE(descriptor, 0);
  EXPECT_EQ(write(descriptor, "x", 1), 1);
  struct stat status;
  fstat(descriptor, &status);
  EXPECT_EQ(status.st_mode & 0777u, 0600u);
  close(descriptor);
  EXPECT_LT(Kalvo_FileItem::SafeOpenFile("", 0600), 0);

  // Nothing in front of the first `$` of a network share is made.
  ASSERT_EQ(chdir(folder.Path().c_str()), 0);
  EXPECT_LT(Kalvo_FileItem::SafeOpenFile("\\\\host\\share\\f", 0600), 0);
  EXPECT_FALSE(std::filesystem::exists("/host"));
  ASSERT_EQ(chdir("/"), 0);
}

TEST(Path, DiskInfo) {
  long long block = 0;
  long long total = 0;
  long long free = 0;
  EXPECT_EQ(Kalvo_FileItem::GetDiskInfo("\\tmp", block, total, free), 1);
  EXPECT_EQ(block, 512);
  EXPECT_EQ(total, static_cast<long long>(std::filesystem::space("/tmp").capacity / 512));
  EXPECT_GE(total, free);
  EXPECT_EQ(Kalvo_FileItem::GetDiskInfo("/no/such/place", block, total, free), 0);
}

}  // namespace
