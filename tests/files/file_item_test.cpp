// What is known of a file.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <filesystem>
#include <string>

#include "kalvobase/file.h"
#include "support/folder.h"

namespace {

TEST(FileItem, PartsOfNames) {
  const support::Folder folder;
  struct Case {
    const char* given;
    const char* name;
    const char* base;
    const char* suffix;
  };
  for (const Case& c :
       {Case{"dir/a.tar.gz", "a.tar.gz", "a.tar", "gz"}, Case{"dir\\plain", "plain", "plain", ""},
        Case{".profile", ".profile", "", "profile"}, Case{"a.b/c", "c", "c", ""},
        Case{"ends.", "ends.", "ends", ""},
        Case{"\xFF\xFE.\x80", "\xFF\xFE.\x80", "\xFF\xFE", "\x80"}}) {
    SCOPED_TRACE(c.given);
    std::string path = c.given;
    for (char& byte : path) byte = byte == '\\' ? '/' : byte;
    folder.Write(path, "content");
    const std::string given = folder.Path() + "/" + c.given;
    Kalvo_FileItem item;
    item.AttachFile((" \t" + given + " ").c_str());
    EXPECT_EQ(item.IsExist(), 1);
    EXPECT_EQ(item.IsDir(), 0);
    EXPECT_STREQ(item.GetFullPathName2(), given.c_str());
    EXPECT_EQ(item.GetPath(), given.substr(0, given.find_last_of("/\\")));
    EXPECT_STREQ(item.GetName(), c.name);
    EXPECT_STREQ(item.GetBaseName(), c.base);
    EXPECT_STREQ(item.GetSuffix(), c.suffix);
    EXPECT_EQ(item.GetFileSize(), 7);
  }
  ASSERT_EQ(chdir(folder.Path().c_str()), 0);
  Kalvo_FileItem item;
  item.AttachFile("a.b");
  EXPECT_EQ(item.IsDir(), 1);
  EXPECT_EQ(item.GetFullPathName2(), folder.Path("a.b"));
  item.AttachFile("none");
  EXPECT_EQ(item.IsExist(), 0);
  EXPECT_EQ(item.IsDir(), 0);
  for (const char* text : {item.GetFullPathName2(), item.GetPath(), item.GetName(),
                           item.GetBaseName(), item.GetSuffix()}) {
    EXPECT_STREQ(text, "");
  }
  EXPECT_EQ(item.GetFileSize(), -1);
  EXPECT_EQ(item.GetFileModifyTime(), -1);
  EXPECT_EQ(item.IsModifiedSinceLastCheck(), -1);
  item.RenewFileInfo();
  item.Delete();
  item.AttachFile(nullptr);
  EXPECT_EQ(item.IsExist(), 0);
  ASSERT_EQ(chdir("/"), 0);
}

TEST(FileItem, Status) {
  const support::Folder folder;
  const std::string path = folder.Write("file", "one");
  utimbuf times = {1000, 2000};
  utime(path.c_str(), &times);
  Kalvo_FileItem item;
  item.AttachFile(path.c_str());
  EXPECT_EQ(item.GetFileAccessTime(), 1000);
  EXPECT_EQ(item.GetFileModifyTime(), 2000);
  EXPECT_GT(item.GetFileCreateTime(), 2000);
  EXPECT_EQ(item.IsModifiedSinceLastCheck(), 0);
  times.modtime = 2001;
  utime(path.c_str(), &times);
  EXPECT_EQ(item.IsModifiedSinceLastCheck(), 1);
  EXPECT_EQ(item.IsModifiedSinceLastCheck(), 1);
  EXPECT_EQ(item.GetFileModifyTime(), 2000);
  item.RenewFileInfo();
  EXPECT_EQ(item.IsModifiedSinceLastCheck(), 0);
  EXPECT_EQ(item.GetFileModifyTime(), 2001);

  chmod(path.c_str(), 0);
  item.Delete();
  EXPECT_EQ(item.IsExist(), 1);  // as it was
  EXPECT_EQ(item.IsModifiedSinceLastCheck(), -1);
  EXPECT_EQ(item.IsExist(), 0);
  folder.Write("file", "again");
  item.RenewFileInfo();
  EXPECT_EQ(item.GetFileSize(), 5);
}

TEST(FileItem, DeletesLinksNotWhatTheyPointTo) {
  const support::Folder folder;
  folder.Write("dir/kept", "kept");
  std::filesystem::create_directory_symlink(folder.Path("dir"), folder.Path("link"));
  chmod(folder.Path("dir").c_str(), 0555);
  Kalvo_FileItem link;
  link.AttachFile(folder.Path("link").c_str());
  EXPECT_EQ(link.IsDir(), 1);
  link.Delete();
  EXPECT_FALSE(std::filesystem::is_symlink(folder.Path("link")));
  struct stat status;
  stat(folder.Path("dir").c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777u, 0555u);
  chmod(folder.Path("dir").c_str(), 0755);
  Kalvo_FileItem replaced;
  std::filesystem::create_directory(folder.Path("replaced"));
  replaced.AttachFile(folder.Path("replaced").c_str());
  std::filesystem::remove(folder.Path("replaced"));
  folder.Write("replaced", "a file now");
  replaced.Delete();  // it was a directory
  EXPECT_FALSE(std::filesystem::exists(folder.Path("replaced")));
  EXPECT_EQ(replaced.IsModifiedSinceLastCheck(), -1);
  folder.Write("replaced", "back");
  EXPECT_EQ(replaced.IsExist(), 0);
  replaced.Delete();
  EXPECT_FALSE(std::filesystem::exists(folder.Path("replaced")));
  Kalvo_FileItem dir;
  dir.AttachFile(folder.Path("dir").c_str());
  dir.Delete();  // it is not empty
  EXPECT_EQ(support::Content(folder.Path("dir/kept")), "kept");
}

}  // namespace
