// Listing directories.

#include <gtest/gtest.h>
#include <unistd.h>
#include <utime.h>

#include <filesystem>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "files/wildcard.h"
#include "kalvobase/file.h"
#include "support/folder.h"
#include "support/stopwatch.h"

namespace {

// A matcher that tries everything.
bool Backtrack(const char* pattern, const char* name) {
  if (*pattern == '\0') return *name == '\0';
  if (*pattern == '*') {
    return Backtrack(pattern + 1, name) || (*name != '\0' && Backtrack(pattern, name + 1));
  }
  return *name != '\0' && (*pattern == '?' || *pattern == *name) &&
         Backtrack(pattern + 1, name + 1);
}

TEST(Wildcard, AgreesWithBacktracking) {
  std::mt19937 random(30);
  const auto text = [&random](const char* alphabet, unsigned letters, unsigned most) {
    std::string result;
    for (unsigned n = random() % (most + 1); n > 0; --n) result += alphabet[random() % letters];
    return result;
  };
  int matched = 0;
  for (int i = 0; i < 200000; ++i) {
    const std::string pattern = text("ab**?\xFF", 6, 8);
    const std::string name = text("ab\xFF", 3, 12);
    const bool expected = Backtrack(pattern.c_str(), name.c_str());
    ASSERT_EQ(Wildcard(pattern, true).Matches(name), expected) << pattern << " " << name;
    matched += expected ? 1 : 0;
  }
  EXPECT_GT(matched, 10000);
  EXPECT_TRUE(Wildcard("*.TXT", false).Matches("a.txt"));
  EXPECT_FALSE(Wildcard("*.TXT", true).Matches("a.txt"));
  EXPECT_FALSE(Wildcard("\xC4", false).Matches("\xE4"));

  std::string stars;  // what makes a matcher go back and forth without end
  for (int i = 0; i < 60; ++i) stars += "a*";
  const support::Stopwatch watch;
  EXPECT_FALSE(Wildcard(stars + "b", true).Matches(std::string(10000, 'a')));
  EXPECT_LT(watch.Milliseconds(), 5000);
}

std::set<std::string> Names(Kalvo_FindFiles* files) {
  std::set<std::string> names;
  while (Kalvo_FileItem* item = files->FindNext()) names.insert(item->GetName());
  return names;
}

TEST(FindFiles, ByPattern) {
  const support::Folder folder;
  for (const char* name : {"a.txt", "b.TXT", "plain", "back\\slash.txt", "line\nfeed.txt",
                           " blank .txt", "\xFF\xFE.txt", "sub.dir/inner.txt", "other/x"}) {
    folder.Write(name, "x");
  }
  std::filesystem::create_symlink("nowhere", folder.Path("dangling.txt"));
  std::filesystem::create_directory_symlink(folder.Path("other"), folder.Path("linked"));
  Kalvo_FindFiles files;
  using Set = std::set<std::string>;
  const Set directories = {"sub.dir", "other", "linked"};
  const auto with = [&directories](Set names) {
    names.insert(directories.begin(), directories.end());
    return names;
  };
  const Set dotted = with({"a.txt", "b.TXT", "back\\slash.txt", "line\nfeed.txt", " blank .txt",
                           "\xFF\xFE.txt", ""});  // the dangling link has no name
  for (const std::string& path : {folder.Path(), folder.Path() + "/", folder.Path() + "\\",
                                  folder.Path("*.*"), folder.Path() + "/other/..\\*.tx?"}) {
    EXPECT_EQ(files.Find(path.c_str()), dotted.size()) << path;
    EXPECT_EQ(Names(&files), dotted) << path;
  }
  EXPECT_EQ(files.Find(folder.Path("?.txt").c_str()), 5u);
  EXPECT_EQ(Names(&files), with({"a.txt", "b.TXT"}));
  EXPECT_EQ(files.Find(folder.Path("none").c_str()), 3u);
  EXPECT_EQ(files.Find(folder.Path("none/*").c_str()), 0u);
  EXPECT_EQ(files.FindFirst(), nullptr);
  EXPECT_EQ(files.Find(nullptr), 0u);

  // What was found can be worked on, whatever its name looks like.
  ASSERT_EQ(files.Find(folder.Path("back*").c_str()), 4u);
  for (Kalvo_FileItem* item = files.FindFirst(); item != nullptr; item = files.FindNext()) {
    if (item->IsDir() != 0) continue;
    EXPECT_EQ(item->GetFullPathName2(), folder.Path("back\\slash.txt"));
    EXPECT_EQ(item->GetPath(), folder.Path());
    EXPECT_STREQ(item->GetBaseName(), "back\\slash");
    EXPECT_EQ(item->IsModifiedSinceLastCheck(), 0);
    item->Delete();
  }
  EXPECT_FALSE(std::filesystem::exists(folder.Path("back\\slash.txt")));

  EXPECT_GT(files.Find("*"), 0u);  // the root
  EXPECT_EQ(files.FindFirst()->GetPath(), std::string());
  std::filesystem::create_directory(folder.Path("empty"));
  EXPECT_EQ(files.Find(folder.Path("empty").c_str()), 0u);
}

TEST(FindFiles, CursorAndSorts) {
  const support::Folder folder;
  const utimbuf old = {1, 100};
  const utimbuf older = {1, 50};
  folder.Write("b.x", "12");
  folder.Write("a.x", "123");
  folder.Write("B.x", "1");
  utime(folder.Path("a.x").c_str(), &old);
  utime(folder.Path("b.x").c_str(), &older);
  Kalvo_FindFiles files;
  ASSERT_EQ(files.Find(folder.Path().c_str()), 3u);
  const auto order = [&files] {
    std::string names;
    for (Kalvo_FileItem* item = files.FindFirst(); item != nullptr; item = files.FindNext()) {
      names += *item->GetName();
    }
    return names;
  };
  files.QSortByName();
  EXPECT_EQ(order(), "Bab");
  Kalvo_FileItem* first = files.FindFirst();
  files.QSortBysize();
  EXPECT_EQ(files.FindPrev(), nullptr);  // B is still where the cursor is, and still first
  EXPECT_EQ(order(), "Bba");
  files.QSortByModifyTime();
  EXPECT_EQ(order(), "baB");
  EXPECT_EQ(files.FindTail(), first);
  EXPECT_EQ(files.FindNext(), nullptr);
  EXPECT_STREQ(files.FindNext()->GetName(), "b.x");
  EXPECT_EQ(files.FindPrev(), nullptr);
  EXPECT_STREQ(files.FindPrev()->GetName(), "b.x");
  files.QSortByName();
  files.FindFirst()->AttachFile(folder.Path("b.x").c_str());
  files.QSortByName();  // sorted that way already
  EXPECT_EQ(order(), "bab");
  files.FindFree();
  EXPECT_EQ(files.GetResultCount(), 0u);
  EXPECT_EQ(files.FindNext(), nullptr);
  ASSERT_EQ(files.Find(folder.Path("?.x").c_str()), 3u);
  files.QSortByName();
  EXPECT_EQ(order(), "Bab");
}

}  // namespace
