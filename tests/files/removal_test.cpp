// Deleting by pattern and by tree.

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <set>
#include <string>
#include <thread>

#include "files/tree_removal.h"
#include "kalvobase/file.h"
#include "support/folder.h"
#include "support/processes.h"

namespace {

namespace fs = std::filesystem;

const char* const kOddNames[] = {"back\\slash", "..\\up",   "line\nfeed", "-rf",
                                 "  blanks  ",  "\xFF\xFE", "*",          "\\"};

// A tree full of odd names, with links out of it.
void Grow(const support::Folder& folder) {
  folder.Write("outside/kept.txt", "kept");
  folder.Write("up", "kept");
  for (const char* name : kOddNames) {
    folder.Write(std::string("tree/") + name, "x");
    folder.Write(std::string("tree/sub ") + name + "/" + name, "x");
  }
  fs::create_directory_symlink("..", folder.Path("tree/parent"));
  fs::create_directory_symlink(folder.Path("outside"), folder.Path("tree/sub -rf/out"));
  fs::create_symlink(folder.Path("outside/kept.txt"), folder.Path("tree/link.txt"));
  fs::create_symlink("nowhere", folder.Path("tree/dangling"));
  mkfifo(folder.Path("tree/pipe").c_str(), 0600);
}

void ExpectOutsideKept(const support::Folder& folder) {
  EXPECT_EQ(support::Content(folder.Path("outside/kept.txt")), "kept");
  EXPECT_EQ(support::Content(folder.Path("up")), "kept");
  struct stat status;
  ASSERT_EQ(stat(folder.Path("outside").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0555u);
}

TEST(Removal, NeverLeavesTheTree) {
  const support::Folder folder;
  const long before = support::OpenDescriptors();
  Grow(folder);
  chmod(folder.Path("outside").c_str(), 0555);
  const std::string tree = folder.Path("tree");

  EXPECT_EQ(Kalvo_FileItem::DeleteFiles(tree.c_str(), "*.txt", 0), 1);  // the link
  ExpectOutsideKept(folder);
  EXPECT_EQ(Kalvo_FileItem::DeleteFiles(tree.c_str(), "-*", 1), 2);
  for (const char* pattern :
       {"", ".", "..", "../*", "..\\up", "sub -rf", "sub -rf/", "/", "parent/*", "sub -rf/out/*",
        "./../up", "sub -rf/../../up", "sub -rf/.."}) {
    EXPECT_EQ(Kalvo_FileItem::DeleteFiles(tree.c_str(), pattern, 1), 0) << pattern;
  }
  EXPECT_EQ(Kalvo_FileItem::DeleteFiles(tree.c_str(), nullptr, 1), 0);
  ExpectOutsideKept(folder);
  folder.Write("tree/sub -rf/a.txt", "x");
  EXPECT_EQ(Kalvo_FileItem::DeleteFiles(tree.c_str(), "./sub -rf\\..//sub -rf/*.t?t", 0), 1);
  // Of 8 names in the tree and 8 below, two are gone; there are three links and the pipe.
  EXPECT_EQ(Kalvo_FileItem::DeleteFiles((tree + "/.\\").c_str(), "*", 1), 16 - 2 + 3 + 1);
  ExpectOutsideKept(folder);
  EXPECT_TRUE(fs::is_directory(folder.Path("tree/sub -rf")));

  Grow(folder);
  EXPECT_EQ(Kalvo_FileItem::DeleteTree((tree + "/").c_str()), 1);
  EXPECT_FALSE(fs::exists(tree));
  ExpectOutsideKept(folder);
  EXPECT_EQ(support::OpenDescriptors(), before);
}

// A pattern with a directory is looked for below each directory that it led to.
TEST(Removal, PatternsWithDirectories) {
  const support::Folder folder;
  for (const char* name : {"a/1.log", "a/b/2.log", "a/b/a/3.log", "c/a/4.log", "a/a/5.log"}) {
    folder.Write(name, "x");
  }
  EXPECT_EQ(Kalvo_FileItem::DeleteFiles(folder.Path().c_str(), "a/*.log", 1), 2);
  EXPECT_FALSE(fs::exists(folder.Path("a/1.log")));
  EXPECT_FALSE(fs::exists(folder.Path("a/b/a/3.log")));
  EXPECT_EQ(Kalvo_FileItem::DeleteFiles(folder.Path().c_str(), "none/*", 1), 0);
  EXPECT_EQ(support::Names(folder.Path("a")), (std::set<std::string>{"a", "b"}));
}

// The root of this test is a folder of its own.
TEST(Removal, RefusesTheRoot) {
  const support::Folder folder;
  fs::create_directory_symlink("/", folder.Path("root"));
  // Each of the two checks does without the other.
  const auto never = [](platform::Directory*) { return false; };
  for (const std::string& path : {std::string(), std::string("/"), std::string("//"),
                                  folder.Path("root"), std::string(".."), std::string("a/..")}) {
    EXPECT_EQ(OpenForRemoval(path, true, never), nullptr) << path;
  }
  EXPECT_NE(OpenForRemoval(folder.Path(), true, never), nullptr);
  EXPECT_EQ(OpenForRemoval(folder.Path(), true, [](platform::Directory*) { return true; }),
            nullptr);
  folder.Write("kept", "kept");
  folder.Write("tmp/kept", "kept");
  folder.Write("here/in/file", "x");
  support::Child child([&folder](support::Child&) {
    if (chroot(folder.Path().c_str()) != 0 || chdir("/here") != 0) _exit(77);
    int gone = 0;
    for (const char* path :
         {"/", "//", "\\", "\\..\\", "/here/..", "..", "../root", "/root/", "C:\\.."}) {
      gone += Kalvo_FileItem::DeleteTree(path) + Kalvo_FileItem::DeleteFiles(path, "*", 1);
    }
    // Nothing is taken for absolute when the current directory cannot be told.
    fs::create_directory("/gone");
    if (chdir("/gone") != 0) _exit(77);
    fs::remove("/gone");
    gone += Kalvo_FileItem::DeleteTree("tmp") + Kalvo_FileItem::DeleteTree(".");
    if (gone != 0) _exit(1);
    _exit(Kalvo_FileItem::DeleteTree("../here") == 1 ? 0 : 2);
  });
  const int result = child.Join();
  EXPECT_EQ(support::Content(folder.Path("kept")), "kept");
  EXPECT_EQ(support::Content(folder.Path("tmp/kept")), "kept");
  if (result == 77) GTEST_SKIP() << "no right to a root of its own";
  EXPECT_EQ(result, 0);
}

TEST(Removal, WhatElseIsRefused) {
  const support::Folder folder;
  folder.Write("target/file", "kept");
  fs::create_directory_symlink("target", folder.Path("link"));
  for (const std::string& path : {std::string(), folder.Path("link"), folder.Path("link/"),
                                  folder.Path("none"), folder.Path("target/file")}) {
    EXPECT_EQ(Kalvo_FileItem::DeleteTree(path.c_str()), 0) << path;
  }
  EXPECT_EQ(Kalvo_FileItem::DeleteTree(nullptr), 0);
  EXPECT_EQ(Kalvo_FileItem::DeleteFiles("", "*", 0), 0);
  EXPECT_EQ(support::Content(folder.Path("target/file")), "kept");
  EXPECT_TRUE(fs::is_symlink(folder.Path("link")));
  EXPECT_EQ(Kalvo_FileItem::DeleteFiles(folder.Path("link").c_str(), "file", 0), 1);

  fs::create_directory(folder.Path("empty"));
  EXPECT_EQ(Kalvo_FileItem::DeleteTree(folder.Path("empty").c_str()), 1);

  // A link that looks like a drive.
  ASSERT_EQ(chdir(folder.Path().c_str()), 0);
  folder.Write("target/file", "kept");
  fs::create_directory_symlink("target", folder.Path("C:"));
  EXPECT_EQ(Kalvo_FileItem::DeleteTree("C:"), 0);
  EXPECT_EQ(support::Content(folder.Path("target/file")), "kept");

  // What the current directory is called is its own affair.
  folder.Write("a\\b/sub/file", "mine");
  folder.Write("a/b/sub/file", "theirs");
  ASSERT_EQ(chdir(folder.Path("a\\b").c_str()), 0);
  Kalvo_FindFiles found;
  EXPECT_EQ(found.Find("sub\\*"), 1u);
  EXPECT_STREQ(found.FindFirst()->GetFullPathName2(), folder.Path("a\\b/sub/file").c_str());
  Kalvo_FileItem item;
  item.AttachFile("sub/file");
  item.Delete();
  EXPECT_EQ(Kalvo_FileItem::DeleteTree("sub"), 1);
  EXPECT_EQ(support::Content(folder.Path("a/b/sub/file")), "theirs");
  ASSERT_EQ(chdir("/"), 0);
}

// Directories without rights cost what is in them, and nothing else.
TEST(Removal, WithoutRights) {
  const support::Folder folder;
  chmod(folder.Path().c_str(), 0777);
  support::Child child([&folder](support::Child&) {
    if (setgid(65534) != 0 || setuid(65534) != 0) _exit(77);
    for (int i = 0; i < 8; ++i) folder.Write("tree/" + std::to_string(i) + "/f.tmp", "");
    chmod(folder.Path("tree/3").c_str(), 0444);
    if (Kalvo_FileItem::DeleteFiles(folder.Path("tree").c_str(), "*.tmp", 1) != 8) _exit(1);
    if (Kalvo_FileItem::DeleteTree(folder.Path("tree").c_str()) != 0) _exit(2);
    chmod(folder.Path("tree/3").c_str(), 0777);
    if (support::Names(folder.Path("tree")) != std::set<std::string>{"3"}) _exit(3);
    if (support::Names(folder.Path("tree/3")) != std::set<std::string>{"f.tmp"}) _exit(4);
    mkdir(folder.Path("empty").c_str(), 0);
    if (Kalvo_FileItem::DeleteTree(folder.Path("empty").c_str()) != 1) _exit(5);
  });
  const int result = child.Join();
  if (result == 77) GTEST_SKIP() << "no right to become somebody without rights";
  EXPECT_EQ(result, 0);
}

// Somebody swaps directories for links while the tree is deleted.
TEST(Removal, OfATreeThatChanges) {
  const support::Folder folder;
  folder.Write("outside/kept", "kept");
  std::atomic<bool> done{false};
  std::thread shuffler([&] {
    for (int i = 0; !done; ++i) {
      const std::string a = folder.Path("tree/" + std::to_string(i % 10));
      std::error_code ignored;
      fs::rename(a, folder.Path("tree/moved"), ignored);
      fs::create_directory_symlink(folder.Path("outside"), a, ignored);
      fs::rename(folder.Path("tree"), folder.Path("tree2"), ignored);
      fs::rename(folder.Path("tree2"), folder.Path("tree"), ignored);
    }
  });
  for (int round = 0; round < 50; ++round) {
    for (int i = 0; i < 100; ++i) {
      std::error_code ignored;
      fs::create_directories(folder.Path("tree/" + std::to_string(i % 10) + "/below"), ignored);
      close(open(folder.Path("tree/" + std::to_string(i % 10) + "/" + std::to_string(i)).c_str(),
                 O_CREAT | O_WRONLY | O_NOFOLLOW, 0644));
    }
    Kalvo_FileItem::DeleteTree(folder.Path("tree").c_str());
  }
  done = true;
  shuffler.join();
  EXPECT_EQ(support::Content(folder.Path("outside/kept")), "kept");
}

// A directory is moved elsewhere while it is emptied, and elsewhere others have the names of
// those that are still to come. They are left alone, and those in the tree are not.
TEST(Removal, OfADirectoryThatIsMovedAway) {
  const support::Folder folder;
  constexpr int kFiles = 3000;
  const char* const names[] = {"a", "b", "c", "d"};
  for (const std::string name : names) {
    folder.Write("other/" + name + "/kept", "kept");
    fs::create_directories(folder.Path("tree/" + name));
    for (int i = 0; i < kFiles; ++i) {
      const std::string file = folder.Path("tree/" + name + "/" + std::to_string(i));
      close(open(file.c_str(), O_CREAT | O_WRONLY, 0644));
    }
  }
  std::atomic<bool> done{false};
  std::thread mover([&] {
    while (!done) {
      for (const std::string name : names) {
        const std::string path = folder.Path("tree/" + name);
        std::error_code ignored;
        const auto links = std::distance(fs::directory_iterator(path, ignored), {});
        if (links == kFiles || ignored) continue;
        fs::rename(path, folder.Path("other/moved"), ignored);
        return;
      }
    }
  });
  Kalvo_FileItem::DeleteFiles(folder.Path("tree").c_str(), "*", 1);
  done = true;
  mover.join();
  for (const std::string name : names) {
    EXPECT_EQ(support::Content(folder.Path("other/" + name + "/kept")), "kept");
    if (fs::exists(folder.Path("tree/" + name))) {
      EXPECT_TRUE(fs::is_empty(folder.Path("tree/" + name)));
    }
  }
}

TEST(Removal, DeepTreesAndWideDirectories) {
  const support::Folder folder;
  fs::create_directory(folder.Path("deep"));
  int at = open(folder.Path("deep").c_str(), O_RDONLY | O_DIRECTORY);
  const std::string name(50, 'd');  // together longer than any path may be
  for (int level = 0; level < 2000; ++level) {
    ASSERT_EQ(mkdirat(at, name.c_str(), 0755), 0);
    close(openat(at, "file", O_CREAT | O_WRONLY, 0644));
    const int next = openat(at, name.c_str(), O_RDONLY | O_DIRECTORY);
    close(at);
    at = next;
  }
  close(at);
  for (int i = 0; i < 50000; ++i) {
    close(open(folder.Path("deep/" + std::to_string(i)).c_str(), O_CREAT | O_WRONLY, 0644));
  }
  Kalvo_FindFiles files;
  EXPECT_EQ(files.Find(folder.Path("deep/*").c_str()), 50002u);
  files.FindFree();
  EXPECT_EQ(Kalvo_FileItem::DeleteFiles(folder.Path("deep").c_str(), "f?le", 1), 2000);
  EXPECT_EQ(Kalvo_FileItem::DeleteTree(folder.Path("deep").c_str()), 1);
}

}  // namespace
