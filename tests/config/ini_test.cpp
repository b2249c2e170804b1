// INI documents: what they hold, how one moves in them, and what a save leaves.

#include "kalvobase/ini.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <climits>
#include <cstdarg>
#include <cstring>
#include <string>
#include <vector>

#include "kalvobase/text.h"
#include "support/folder.h"
#include "support/stopwatch.h"

namespace {

using namespace std::string_literals;
using support::Content;

class Ini : public testing::Test {
 protected:
  // Reads a document from a text.
  void Load(const std::string& text) {
    ASSERT_EQ(ini.Read(folder.Write("in.ini", text).c_str()), 1);
  }

  std::string Saved() {
    EXPECT_EQ(ini.Dump(folder.Path("out.ini").c_str()), 1);
    return Content(folder.Path("out.ini"));
  }

  std::string Value(const char* key) { return ini.ReadString(key, "(none)"); }
  std::string Tail(const char* key) {
    Kalvo_String* tail = ini.GetTailComment(key);
    return tail != nullptr ? tail->c_str() : "(none)";
  }

  support::Folder folder;
  Kalvo_XIni ini;
};

TEST_F(Ini, Lines) {
  struct Case {
    const char* line;
    const char* key;  // null: a comment line
    const char* value;
    const char* tail;
    const char* saved;
  };
  for (const Case& c : {Case{"key=value", "key", "value", "", "key = value"},
                        Case{" \ta b \t= c d\t ", "a b", "c d", "", "a b = c d"},
                        Case{"a = b = c", "a", "b = c", "", "a = b = c"},
                        Case{"a =", "a", "", "", "a = "},
                        Case{"= x", nullptr, "", "", "= x"},
                        Case{"no sign", nullptr, "", "", "no sign"},
                        Case{"  # a = 1", nullptr, "", "", "# a = 1"},
                        Case{"; b", nullptr, "", "", "; b"},
                        Case{"// c", nullptr, "", "", "// c"},
                        Case{"/ d = 1", "/ d", "1", "", "/ d = 1"},
                        Case{"k = a//b", "k", "a", "//b", "k = a//b"},
                        Case{"k = 1  // x  ", "k", "1", "// x", "k = 1// x"},
                        Case{"k = /x/ // c", "k", "/x/", "// c", "k = /x/ // c"},
                        Case{"k = \"a b\" tail", "k", "a b", " tail", "k = \"a b\" tail"},
                        Case{"k = \"a\" b \"c\"", "k", "a\" b \"c", "", "k = \"a\" b \"c\""},
                        Case{"k = \" // \"", "k", " // ", "", "k = \" // \""},
                        Case{"k = \"abc // x", "k", "\"abc // x", "", "k = \"abc // x"},
                        Case{"k = \"", "k", "\"", "", "k = \""},
                        Case{"[abc", nullptr, "", "", "abc"},
                        Case{"[ ]", nullptr, "", "", " ]"},
                        Case{"< >x", nullptr, "", "", " >x"}}) {
    SCOPED_TRACE(c.line);
    Load(c.line);
    EXPECT_EQ(ini.GetKVCount(), 1);
    EXPECT_STREQ(ini.GetFirstKeyName(), c.key);
    if (c.key != nullptr) {
      EXPECT_EQ(Value(c.key), c.value);
      EXPECT_EQ(Tail(c.key), c.tail);
    }
    EXPECT_EQ(Saved(), std::string(c.saved) + "\n");
  }
  Load("");
  EXPECT_EQ(ini.GetKVCount(), 0);
  Load("\r\n");
  EXPECT_EQ(ini.GetKVCount(), 1);
  Load("k = 1 // x\nl = 2\nk = \"3\"\r\nk\r=\r4");
  EXPECT_EQ(ini.GetKVCount(), 2);
  EXPECT_EQ(Value("k"), "4");
  EXPECT_EQ(Tail("k"), "");
  EXPECT_EQ(Saved(), "k = 4\nl = 2\n");
  Load("a\0b = 1\nc = d\0e\n;\0f\n[g\0h]"s);  // kept, whatever it is
  EXPECT_STREQ(ini.GetNextKeyName(), nullptr);
  EXPECT_EQ(Saved(), "a\0b = 1\nc = d\0e\n;\0f\ng\0h]\n"s);
}

TEST_F(Ini, SectionsAndBlockComments) {
  Load(
      "top = 1\n"
      "[a] first\n"
      "x = 1\n"
      "<in> // opens\n"
      "y = 2\n"
      "/* a = comment */\n"
      "z = 3\n"
      "  */ over\n"
      "</whatever> closes\n"
      "# behind\n"
      "[a]\n"
      "x = 2\n"
      "</a>\n"
      "top2 = 2\n"
      "</stray>\n"
      "</stray>\n"
      "top3 = 3\n");
  EXPECT_EQ(ini.GetChildSectionCount("a"), 2);
  EXPECT_EQ(ini.GetChildSectionCount(nullptr), 1);
  EXPECT_EQ(Value("top2") + Value("top3"), "23");
  EXPECT_STREQ(ini.ToChildSection("a", 1), ".a[1]");
  EXPECT_EQ(Value("x"), "2");
  EXPECT_STREQ(ini.SetSectionName("a.in"), "a.in");
  EXPECT_EQ(ini.GetKVCount(), 4);
  EXPECT_EQ(Value("z"), "(none)");
  const std::string saved = Saved();
  EXPECT_EQ(saved,
            "top = 1\n"
            "top2 = 2\n"
            "top3 = 3\n"
            "[a]  first\n"
            "\t\tx = 1\n"
            "# behind\n"
            "\t\t<in>  // opens\n"
            "\t\t\ty = 2\n"
            "/* a = comment */\n"
            "z = 3\n"
            "*/ over\n"
            "\t\t</in>  closes\n"
            "[a] \n"
            "\t\tx = 2\n");
  Load(saved);
  EXPECT_EQ(Saved().size(), saved.size() + 3);  // a blank for each comment of a tag
}

// What is written reads back as what it was, also where the plain lines would not.
TEST_F(Ini, SavedDocumentsMeanTheSame) {
  Load("<t>\nx = 1\n</t>\n/* never closed\nlost = 1\n");
  EXPECT_EQ(Saved(), "/* never closed\nlost = 1\n*/\n\t<t> \n\t\tx = 1\n\t</t> \n");
  Load("/* never closed");
  EXPECT_EQ(Saved(), "/* never closed\n");
  EXPECT_EQ(ini.Write("new", 1, 0), 1);
  EXPECT_EQ(Saved(), "/* never closed\n*/\nnew = 1\n");

  Load("a = 1\n[ /* note\n[b]\nk = 1\n");
  ini.Write(nullptr, "line\n /* of a host");
  for (int i = 0; i < 3; ++i) {
    Load(Saved());
    ASSERT_NE(ini.SetSectionName("b"), nullptr);
  }
  EXPECT_EQ(Value("k"), "1");

  // The parser drops carriage returns.
  Load("");
  ini.Write(nullptr, "/\r* a");
  ini.Write("k", 1, 0);
  Load(Saved());
  EXPECT_EQ(Value("k"), "1");
  // Block comments that begin in what is no comment.
  for (int where = 0; where < 3; ++where) {
    Load("");
    ini.Write(where == 0 ? "/\r* x" : "x", where == 1 ? "v\n/* b" : "v");
    if (where == 2) ini.GetTailComment("x")->strcpy("// a\n/* b");
    ini.Write("k", 1, 0);
    Load(Saved());
    EXPECT_EQ(Value("k"), "1") << where;
  }
  struct Row {
    const char* value;
    const char* tail;
    const char* line;
  };
  for (const Row& t : {Row{"a/", "//t", "k = a/ //t\n"}, Row{"a/", " //t", "k = a/ //t\n"},
                       Row{"a/\r", "\r//t", "k = a/\r \r//t\n"}, Row{"a", "//t", "k = a//t\n"}}) {
    Load("");
    ini.Write("k", t.value);
    ini.GetTailComment("k")->strcpy(t.tail);
    EXPECT_EQ(Saved(), t.line);
    Load(Saved());
    EXPECT_EQ(Value("k"), t.value[1] == '/' ? "a/" : "a");
    EXPECT_EQ(Tail("k"), "//t");
  }

  Load("[a]\nx = 1\n</a> the end\n<b>\ny = 2\n</b>\n");
  const std::string saved = Saved();
  EXPECT_EQ(saved, "[a] \n\t\tx = 1\n</a>  the end\n\t<b> \n\t\ty = 2\n\t</b> \n");
  Load(saved);
  EXPECT_NE(ini.SetSectionName("b"), nullptr);
  EXPECT_EQ(Value("y"), "2");
  Load("[a]\n");
  ini.AddSection("b");
  Load(Saved());
  EXPECT_NE(ini.SetSectionName("b"), nullptr);
}

TEST_F(Ini, Paths) {
  Load("[a]\n<b>\n</b>\n<b>\n<c>\nk = here\n</c>\n</b>\n[srv3]\n<port>\n[x.y]\nk = dotted\n");
  struct Case {
    const char* path;
    bool found;
    const char* now;  // null: no current section
  };
  for (const Case& c :
       {Case{"a.b[1].c", true, "a.b[1].c"}, Case{"a.b[99].c", true, "a.b[99].c"},
        Case{"a.b[-1].c", true, "a.b[-1].c"}, Case{"a. b [ 1x.c.", true, "a. b [ 1x.c."},
        Case{"a.b.c", false, "a.b"}, Case{"none", false, nullptr}, Case{".a", false, nullptr},
        Case{"a..b", false, "a"}, Case{"", true, ""}}) {
    EXPECT_EQ(ini.SetSectionName(c.path) != nullptr, c.found) << c.path;
    ini.ToChildSection("nowhere", 0);  // changes nothing
    EXPECT_EQ(ini.GetSectionName() == nullptr, c.now == nullptr) << c.path;
    if (!c.found) continue;
    EXPECT_STREQ(ini.GetSectionName(), c.now);
    EXPECT_EQ(Value("k"), *c.path != '\0' ? "here" : "(none)");
  }
  EXPECT_STREQ(ini.SetSectionName("srv%d.port", 3), "srv3.port");
  EXPECT_STREQ(ini.SetSectionName("%s", "x.y"), "x.y");
  EXPECT_EQ(Value("k"), "dotted");
  EXPECT_EQ(ini.SetSectionName("x.y"), nullptr);
  EXPECT_STREQ(ini.SetSectionName("a.b[%d].%s%.1s", 1, "", "cd"), "a.b[1].c");
  EXPECT_STREQ(ini.SetSectionName(ini.GetSectionName()), "a.b[1].c");
  ini.ToParentSection();
  EXPECT_STREQ(ini.GetSectionName(), "a.b[1]");
  EXPECT_STREQ(ini.ToChildSection("c", 0), "a.b[1].c");
  ini.ToParentSection();
  ini.ToParentSection();
  EXPECT_STREQ(ini.GetSectionName(), "a");
  ini.ToParentSection();
  EXPECT_STREQ(ini.GetSectionName(), "");
  EXPECT_STREQ(ini.ToChildSection("a", 0), ".a");
  EXPECT_STREQ(ini.ToChildSection("b", 1), ".a.b[1]");
  EXPECT_EQ(ini.ToChildSection("b", 1), nullptr);
  ini.ToParentSection();
  EXPECT_STREQ(ini.GetSectionName(), ".a");
  ini.SetSectionName("a.b[1].none");
  ini.ToParentSection();
  EXPECT_STREQ(ini.GetSectionName(), "a");
  ini.ToTopSection();
  EXPECT_STREQ(ini.GetSectionName(), "");
  ini.ToParentSection();
  EXPECT_EQ(ini.GetSectionName(), nullptr);
  ini.ToParentSection();
  EXPECT_STREQ(ini.GetSectionName(), "");
  const std::string longName(100, 'n');
  Load("<" + longName + ">\n<" + longName + ">\n");
  EXPECT_NE(ini.ToChildSection(ini.SetSectionName(longName.c_str()), 0), nullptr);
  EXPECT_EQ(ini.GetSectionName(), longName + "." + longName);
  EXPECT_STREQ(ini.SetSectionName(nullptr), "");
  EXPECT_EQ(ini.GetSectionName(), nullptr);
}

TEST_F(Ini, Structure) {
  Load("k = top\n[a]\nk = a0\n[b]\n[a]\nk = a1\n<in>\nk = in\n");
  ini.SetSectionName("a[1].in");
  ini.ToParentSection();
  ini.RemoveSection();  // the one that the cursor is on
  EXPECT_EQ(ini.GetSectionName(), nullptr);
  EXPECT_EQ(ini.GetChildSectionCount("a"), 1);
  ini.SetSectionName("a");
  EXPECT_EQ(Value("k"), "a0");
  ini.RemoveKey("k");  // here and at the top
  EXPECT_EQ(Value("k"), "(none)");
  ini.ToTopSection();
  EXPECT_EQ(Value("k"), "(none)");
  EXPECT_STREQ(ini.GetChildSectionName(0), "a");
  for (const int i : {1, 7, -1, INT_MIN}) EXPECT_STREQ(ini.GetChildSectionName(i), "b");
  ini.RemoveSection();  // the top stays
  ini.AddSection("c");
  ini.AddSection("c");
  EXPECT_EQ(ini.GetChildSectionCount("c"), 2);
  ini.SetSectionName("c[1]");
  ini.AddSection("d");
  ini.AddSection(nullptr);
  ini.Write("x", 1, 0);
  ini.RemoveChildSection("none", 0);
  ini.SetSectionName(nullptr);
  ini.RemoveChildSection("c", 0);
  ini.RemoveChildSection("b", -1);
  EXPECT_EQ(Saved(), "[a] \n[c] \n\t\tx = 1\n\t\t<d> \n\t\t</d> \n");
  EXPECT_EQ(ini.GetChildSectionName(0), std::string("a"));
  ini.SetSectionName("c.d");
  EXPECT_EQ(ini.GetChildSectionName(0), nullptr);

  Load("# one\na = 1\nb = 2\nc = 3\nd = 4\n");
  EXPECT_EQ(ini.GetFirstKeyName(), nullptr);
  EXPECT_STREQ(ini.GetNextKeyName(), "a");
  ini.RemoveKey(ini.GetNextKeyName());
  EXPECT_STREQ(ini.GetNextKeyName(), "d");  // the walk had moved on to c
  EXPECT_EQ(ini.GetKVCount(), 4);

  Kalvo_XIni copy;
  Load("k = \"1\" // t\n# c\n<a> o\n</a> c\n[b]\n");
  copy = ini;
  EXPECT_STREQ(copy.GetFileName(), folder.Path("in.ini").c_str());
  const std::string saved = Saved();
  ini.Read(ini.GetFileName());
  EXPECT_EQ(Saved(), saved);
  ini = copy;
  ini = *&ini;
  EXPECT_EQ(Saved(), saved);
}

TEST_F(Ini, ReadingValues) {
  Load(
      "hex = 0x10\noct = 010\nzero = 0\ndec = -12x\nbig = 4294967295\nlong = 123456789\n"
      "float = -1.5e1\nempty =\nA = 0x41\nnl = \\n\nsp = \\space\nbs = \\\\\nx = xyz\n"
      "text = 0123456789\n");
  struct Case {
    const char* key;
    int number;
    char character;
  };
  for (const Case& c : {Case{"hex", 16, 16}, Case{"oct", 16, 16}, Case{"zero", 0, 0},
                        Case{"dec", -12, '-'}, Case{"big", -1, '4'}, Case{"empty", 0, 0},
                        Case{"A", 65, 'A'}, Case{"nl", 0, '\n'}, Case{"sp", 0, ' '},
                        Case{"bs", 0, '\\'}, Case{"x", 0, 'x'}, Case{"text", 0x23456789, '\x89'}}) {
    int number = -7;
    char character = '?';
    unsigned char byte = '?';
    EXPECT_EQ(ini.Read(c.key, &number), 1) << c.key;
    EXPECT_EQ(number, c.number) << c.key;
    EXPECT_EQ(ini.Read(c.key, &character), 1);
    EXPECT_EQ(character, c.character) << c.key;
    EXPECT_EQ(ini.Read(c.key, &byte), 1);
    EXPECT_EQ(byte, static_cast<unsigned char>(c.character)) << c.key;
  }
  short small = 0;
  float f = 0;
  double d = 0;
  EXPECT_EQ(ini.Read("long", &small), 1);
  EXPECT_EQ(small, static_cast<short>(123456789 & 0xFFFF));
  EXPECT_EQ(ini.Read("float", &f), 1);
  EXPECT_EQ(f, -15.0f);
  EXPECT_EQ(ini.Read("x", &d), 1);
  EXPECT_EQ(d, 0);
  EXPECT_EQ(Value("empty"), "");

  char buf[16] = "????";
  unsigned char bytes[16];
  EXPECT_EQ(ini.Read("text", buf, 4), 3);
  EXPECT_STREQ(buf, "012");
  EXPECT_EQ(ini.Read("text", buf, 11), 10);
  EXPECT_EQ(ini.Read("text", bytes, 4), 2);
  EXPECT_EQ(ini.Read("text", bytes, 11), 9);
  EXPECT_EQ(ini.Read("text", bytes, 12), 10);
  EXPECT_EQ(ini.Read("text", bytes, 1), 0);
  EXPECT_EQ(ini.Read("text", buf, 1), 0);
  buf[0] = '?';
  EXPECT_EQ(ini.Read("text", buf, 0), 0);
  EXPECT_EQ(ini.Read("text", buf, -5), 0);
  EXPECT_EQ(buf[0], '?');
  EXPECT_EQ(ini.Read("none", buf, 9), 0);
  EXPECT_EQ(buf[0], '\0');
  EXPECT_EQ(ini.Read(nullptr, &small), 0);
  ini.SetSectionName(nullptr);
  buf[0] = '?';
  EXPECT_EQ(ini.Read("text", buf, 9), -1);
  EXPECT_EQ(buf[0], '\0');
  EXPECT_EQ(ini.Read("hex", &d), -1);
  EXPECT_EQ(Value("text"), "(none)");
  EXPECT_EQ(ini.GetTailComment("text"), nullptr);
}

TEST_F(Ini, WritingValues) {
  for (int c = 0; c < 256; ++c) {
    EXPECT_EQ(ini.Write("c", static_cast<char>(c)), 1);
    char back = '?';
    ini.Read("c", &back);
    EXPECT_EQ(back, c == '0' ? '\0' : static_cast<char>(c));
  }
  const auto written = [this] { return Value("k"); };
  ini.Write("k", '\\');
  EXPECT_EQ(written(), "\\\\");
  ini.Write("k", ' ');
  EXPECT_EQ(written(), "\\space");
  ini.Write("k", '\xFF');
  EXPECT_EQ(written(), "0xffffffff");
  ini.Write("k", static_cast<unsigned char>(0xFF));
  EXPECT_EQ(written(), "0xff");
  ini.Write("k", static_cast<short>(-1), 1);
  EXPECT_EQ(written(), "0xffffffff");
  ini.Write("k", static_cast<unsigned short>(65535), 0);
  EXPECT_EQ(written(), "65535");
  ini.Write("k", -5L, 0);
  EXPECT_EQ(written(), "-5");
  ini.Write("k", 0xFFFFFFFFFFUL, 0);
  EXPECT_EQ(written(), "4294967295");
  ini.Write("k", 255, 1);
  EXPECT_EQ(written(), "0xff");
  ini.Write("k", 1.5f);
  EXPECT_EQ(written(), "1.500000");
  ini.Write("k", 1e-7);
  EXPECT_EQ(written(), "0.000000");

  Load("a = \"1\" // gone\nb = 2 // kept\n");
  EXPECT_EQ(ini.Write("a", "x y"), 1);
  EXPECT_EQ(ini.Write("c", reinterpret_cast<const unsigned char*>("z")), 1);
  EXPECT_EQ(ini.Write("d", ini.ReadString("b", "")), 1);
  EXPECT_EQ(ini.Write(nullptr, "# a comment"), 1);
  EXPECT_EQ(ini.Write("", static_cast<const char*>(nullptr)), 1);
  ini.GetTailComment("d")->strcpy(" // new");
  EXPECT_EQ(Saved(), "a = x y\nb = 2// kept\nc = z\nd = 2 // new\n# a comment\n\n");
  ini.SetSectionName("none");
  EXPECT_EQ(ini.Write("a", "no"), 0);
  EXPECT_EQ(ini.Write("a", 1, 0), 0);
}

TEST_F(Ini, Files) {
  EXPECT_EQ(ini.Write("kept", 1, 0), 1);
  EXPECT_EQ(ini.Dump(folder.Path("no/such/place").c_str()), -1);
  EXPECT_EQ(ini.Dump(nullptr), -1);
  EXPECT_EQ(ini.Dump("/dev/full"), 1);
  EXPECT_EQ(Saved(), "kept = 1\n");
  struct stat status;
  stat(folder.Path("out.ini").c_str(), &status);
  EXPECT_EQ(status.st_mode & 0117u, 0u);
  EXPECT_STREQ(ini.GetFileName(), "");
  EXPECT_EQ(ini.Read(folder.Path().c_str()), -1);
  EXPECT_STREQ(ini.GetFileName(), folder.Path().c_str());
  EXPECT_EQ(ini.GetSectionName(), nullptr);
  EXPECT_EQ(ini.GetKVCount(), 0);
  EXPECT_EQ(ini.Read(static_cast<const char*>(nullptr)), -1);
  EXPECT_EQ(Kalvo_XIni(folder.Path("none").c_str()).GetSectionName(), nullptr);
}

TEST_F(Ini, Profiles) {
  const std::string path =
      folder.Write("p.ini", "top = 5\n[a]\nn = 010\nt = text\n<b>\nn = 7\n[x.y]\nn = 9\n");
  const char* file = path.c_str();
  EXPECT_EQ(Kalvo_Xini_GetPrivateProfileInt("a", "n", -1, file), 16);
  EXPECT_EQ(Kalvo_Xini_GetPrivateProfileInt("a.b", "n", -1, file), 7);
  EXPECT_EQ(Kalvo_Xini_GetPrivateProfileInt("", "top", -1, file), 5);
  EXPECT_EQ(Kalvo_Xini_GetPrivateProfileInt(nullptr, "top", -1, file), -1);
  for (const char* section : {"none", "a.none", "%s%n", "x.y"}) {
    EXPECT_EQ(Kalvo_Xini_GetPrivateProfileInt(section, "n", -1, file), -1) << section;
  }
  EXPECT_EQ(Kalvo_Xini_GetPrivateProfileInt("a", "none", -1, file), -1);
  EXPECT_EQ(Kalvo_Xini_GetPrivateProfileInt("a", "n", -1, nullptr), -1);

  char buf[8];
  const auto text = [&buf](const char* section, const char* key, const char* other, int size,
                           const char* from) {
    std::memset(buf, '?', sizeof(buf));
    return Kalvo_Xini_GetPrivateProfileString(section, key, other, buf, size, from);
  };
  EXPECT_EQ(text("a", "t", "other", 8, file), 4);
  EXPECT_STREQ(buf, "text");
  EXPECT_EQ(text("a", "t", "other", 3, file), 2);
  EXPECT_EQ(text("a", "none", "other", 8, file), 0);
  EXPECT_STREQ(buf, "");
  EXPECT_EQ(text("none", "t", "other", 8, file), 5);
  EXPECT_EQ(text("none", "t", "too long for it", 8, file), 7);
  EXPECT_EQ(text("none", "t", nullptr, 8, file), 0);
  EXPECT_EQ(buf[1], '?');
  EXPECT_EQ(text("none", "t", "other", INT_MIN, file), 0);
  std::strcpy(buf, "own");
  EXPECT_EQ(Kalvo_Xini_GetPrivateProfileString("none", "t", buf, buf, 8, file), 3);
  EXPECT_STREQ(buf, "own");
  EXPECT_EQ(text("none", "t", "other", 0, file), 0);
  EXPECT_EQ(buf[0], '?');

  EXPECT_EQ(Kalvo_Xini_WritePrivateProfileInt("a", "n", -3, file), 1);
  EXPECT_EQ(Kalvo_Xini_WritePrivateProfileString("x.y", "s", "new", file), 1);
  for (const char* section : {"none", "", "a.b", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(Kalvo_Xini_WritePrivateProfileInt(section, "n", 1, file), 0);
  }
  EXPECT_EQ(Kalvo_Xini_WritePrivateProfileInt("a", "n", 1, folder.Path("new.ini").c_str()), 0);
  EXPECT_EQ(Content(folder.Path("new.ini")), "");
  EXPECT_EQ(Content(path),
            "top = 5\n[a] \n\t\tn = -3\n\t\tt = text\n\t\t<b> \n\t\t\tn = 7\n\t\t</b> \n"
            "[x.y] \n\t\tn = 9\n\t\ts = new\n");
}

// Neither depth, nor length, nor number costs more than its share.
TEST_F(Ini, ExtremeDocuments) {
  constexpr int kDepth = 100000;
  const support::Stopwatch watch;
  std::string deep;
  for (int i = 0; i < kDepth; ++i) deep += "<d>\n";
  Load(deep + "k = bottom\n");
  Kalvo_XIni copy;
  copy = ini;
  int depth = 0;
  while (copy.ToChildSection("d", 0) != nullptr) ++depth;
  EXPECT_EQ(depth, kDepth);
  EXPECT_STREQ(copy.ReadString("k", ""), "bottom");
  while (copy.GetSectionName() != nullptr) copy.ToParentSection();
  Load(Saved());
  EXPECT_EQ(ini.GetChildSectionCount("d"), 1);
  ini.RemoveChildSection("d", 0);

  const std::string line(10 << 20, 'x');
  Load("a = " + line + "\n; " + line + "\n[" + line + "]\n" + line + " = 1\n<" + line);
  EXPECT_EQ(Value("a").size(), line.size());
  EXPECT_EQ(Saved().size(), 5 * line.size() + 5 + 3 + 4 + 7 + 1);

  std::string wide;
  for (int i = 0; i < 100000; ++i)
    wide += "key" + std::to_string(i) + " = " + "\n<s" + std::to_string(i) + ">\n</s>\n";
  Load(wide);
  for (int i = 0; i < 100000; ++i) {
    EXPECT_EQ(ini.ReadString(("key" + std::to_string(i)).c_str(), "none")[0], '\0');
    ini.RemoveKey(("key" + std::to_string(i)).c_str());
  }
  EXPECT_EQ(ini.GetKVCount(), 0);
  for (int i = 0; i < 50000; ++i) {
    ini.RemoveChildSection(ini.GetChildSectionName(0), -1);
    ini.RemoveChildSection(ini.GetChildSectionName(-1), 0);
    if (i % 100 == 0) ini.RemoveChildSection(ini.GetChildSectionName(1000), 0);
  }
  EXPECT_EQ(ini.GetChildSectionCount(nullptr), 0);
  for (int i = 0; i < 100000; ++i) ini.AddSection("same");
  for (int i = 0; i < 100000; ++i) {
    ini.ToChildSection("same", i % 2 == 0 ? 0 : -1);
    ini.RemoveSection();
  }
  EXPECT_EQ(ini.GetChildSectionCount("same"), 0);
  EXPECT_LT(watch.Milliseconds(), 60000);
}

}  // namespace
