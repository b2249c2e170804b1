// Buffered streams on files and pipes.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "files/mp_stream_reader.h"
#include "kalvobase/file.h"
#include "support/folder.h"

namespace {

using support::Content;

constexpr int kMake = O_RDWR | O_CREAT | O_TRUNC;

TEST(FileStream, WithoutAFile) {
  Kalvo_FileStream stream;
  char c = 'x';
  int number = 7;
  EXPECT_EQ(stream.IsOpen(), 0);
  EXPECT_EQ(stream.GetHandle(), -1);
  EXPECT_EQ(stream.Read(c), -2);
  EXPECT_EQ(stream.Read(number), -2);
  EXPECT_EQ(stream.Read(&c, 1), -2);
  EXPECT_EQ(stream.ReadLine(1, -1), nullptr);
  EXPECT_EQ(stream.Write(number), -2);
  EXPECT_EQ(stream.Write('c', 1), -2);
  EXPECT_EQ(stream.Write("abc", 3), -2);
  EXPECT_EQ(stream.Write(), -1);
  EXPECT_EQ(stream.Printf("%d", 1), -1);
  EXPECT_EQ(stream.GetLastWriteChar(), 0);
  EXPECT_EQ(stream.Seek(0, SEEK_SET), -1);
  stream.Detach();
  stream.Close();
  EXPECT_EQ(c, 'x');
  EXPECT_EQ(number, 7);
}

TEST(FileStream, NumbersLieAsInMemory) {
  const support::Folder folder;
  const std::string path = folder.Path("numbers");
  Kalvo_FileStream out;
  ASSERT_GE(out.Open(path.c_str(), kMake, 0644), 0);
  EXPECT_EQ(out.Write(static_cast<short>(0x0102)), 2);
  EXPECT_EQ(out.Write(0x01020304), 4);
  EXPECT_EQ(out.Write(-5L), 4);
  EXPECT_EQ(out.Write(0xFFFFFFFFUL), 4);
  EXPECT_EQ(out.Write(1.5f), 4);
  EXPECT_EQ(out.Write(-2.25), 8);
  EXPECT_EQ(out.Write(3.5L), 8);
  EXPECT_EQ(out.Write('\xFF', 1), 1);
  EXPECT_EQ(out.Write("\x01\x02", 2), 2);
  EXPECT_EQ(out.GetLastWriteChar(), 2);
  out.Close();
  const short first = 0x0102;
  EXPECT_EQ(Content(path).substr(0, 2), std::string(reinterpret_cast<const char*>(&first), 2));

  Kalvo_FileStream in;
  ASSERT_GE(in.Open(path.c_str(), O_RDONLY, 0), 0);
  short s = 0;
  int i = 0;
  long l = 0x123456789;
  unsigned long u = 0;
  float f = 0;
  double d = 0;
  long double ld = 0;
  unsigned char c = 0;
  EXPECT_EQ(in.Read(s), 2);
  EXPECT_EQ(in.Read(i), 4);
  EXPECT_EQ(in.Read(l), 4);
  EXPECT_EQ(in.Read(u), 4);
  EXPECT_EQ(in.Read(f), 4);
  EXPECT_EQ(in.Read(d), 8);
  EXPECT_EQ(in.Read(ld), 8);
  EXPECT_EQ(in.Read(c), 256);
  EXPECT_EQ(s, 0x0102);
  EXPECT_EQ(i, 0x01020304);
  EXPECT_EQ(l, -5);
  EXPECT_EQ(u, 0xFFFFFFFFu);
  EXPECT_EQ(f, 1.5f);
  EXPECT_EQ(d, -2.25);
  EXPECT_EQ(ld, 3.5L);
  EXPECT_EQ(in.Read(i), -1);  // two bytes are left
  EXPECT_EQ(in.Read(c), -1);  // the end was met: there is no descriptor any more
  EXPECT_EQ(in.Write(1), -2);
  EXPECT_EQ(in.Seek(-1, SEEK_END), 36);
  EXPECT_EQ(in.Read(c), 3);
  EXPECT_EQ(in.Read(c), 0);
}

TEST(FileStream, WhatGoesOutWhen) {
  const support::Folder folder;
  const std::string path = folder.Path("out");
  Kalvo_FileStream out;
  ASSERT_GE(out.Open(path.c_str(), kMake, 0644), 0);
  const auto size = [&path] { return Content(path).size(); };
  EXPECT_EQ(out.Write("a\nb", 3), 3);
  EXPECT_EQ(size(), 0u);
  EXPECT_EQ(out.Printf("%s%c", "x\n", '\n'), 3);
  EXPECT_EQ(size(), 0u);
  EXPECT_EQ(out.Printf("\nrest"), 5);
  EXPECT_EQ(size(), 7u);
  EXPECT_EQ(out.Write('\n', 2), 1);
  EXPECT_EQ(size(), 13u);
  EXPECT_EQ(out.Write(static_cast<short>(0x0A0A)), 2);  // two line feeds, for what it knows
  EXPECT_EQ(size(), 15u);
  EXPECT_EQ(out.Write('x', 0), 0);
  EXPECT_EQ(out.Write('x', -1), -1);
  EXPECT_EQ(out.GetLastWriteChar(), '\n');
  EXPECT_EQ(out.Write(std::string(8192, 'y').c_str(), 8192), 8192);
  EXPECT_EQ(size(), 15u);
  EXPECT_EQ(out.Write('z', 1), 1);
  EXPECT_EQ(size(), 15u + 8192);
  EXPECT_EQ(out.Write(), 8192);
  EXPECT_EQ(out.GetLastWriteChar(), 'z');
  EXPECT_EQ(out.Write(static_cast<const char*>(nullptr), 3), 0);
  EXPECT_EQ(out.Write("text", -1), 4);
  EXPECT_EQ(out.Seek(0, SEEK_CUR), 15 + 8193 + 4);
  // A conversion that does not fit makes the buffer larger, but not for ever.
  EXPECT_EQ(out.Printf("%10000d", 1), 10000);
  EXPECT_EQ(size(), 15u + 8193 + 4);
  EXPECT_EQ(out.Printf("%d", 1), 1);
  EXPECT_EQ(size(), 15u + 8193 + 4 + 10000);
  EXPECT_EQ(out.Printf(""), 0);
  EXPECT_EQ(out.GetLastWriteChar(), 0);
}

TEST(FileStream, DestructorWritesOutAndOpenMakesDirectories) {
  const support::Folder folder;
  const long before = support::OpenDescriptors();
  {
    Kalvo_FileStream out;
    // The flag for binary files stands for nothing here.
    ASSERT_GE(out.Open((folder.Path() + "\\a/b\\c").c_str(), kMake | 0x8000, 0644), 0);
    EXPECT_NE(fcntl(out.GetHandle(), F_GETFD) & FD_CLOEXEC, 0);
    out.Write("kept", -1);
  }
  EXPECT_EQ(Content(folder.Path("a/b/c")), "kept");

  const int descriptor = open(folder.Path("a/b/c").c_str(), O_RDWR);
  Kalvo_FileStream stream;
  stream.Attach(descriptor, 0);
  EXPECT_STREQ(stream.ReadLine(1, -1), "kept");
  EXPECT_EQ(stream.Write("x", 1), -2);
  stream.Seek(0, SEEK_SET);
  stream.Attach(descriptor, 1);
  EXPECT_EQ(stream.ReadLine(1, -1), nullptr);
  EXPECT_EQ(stream.Write("sw", 2), 2);
  stream.Detach();
  EXPECT_EQ(stream.IsOpen(), 0);
  EXPECT_EQ(Content(folder.Path("a/b/c")), "swpt");
  close(descriptor);
  EXPECT_EQ(support::OpenDescriptors(), before);
}

TEST(FileStream, Lines) {
  const support::Folder folder;
  struct Case {
    const char* content;
    int strip;
    int most;
    std::vector<const char*> lines;  // up to the first null
  };
  for (const Case& c :
       {Case{"a\r\nb", 1, -1, {"a", "b", nullptr}}, Case{"a\r\nb", 0, -1, {"a\r\n", "b", nullptr}},
        Case{"\n", 1, -1, {"", nullptr}}, Case{"\r\r\n", 1, -1, {"", nullptr}},
        Case{"\r", 1, -1, {nullptr}}, Case{"a\rb\rc\n", 1, 3, {"abc", nullptr}},
        Case{"a\rb\rc\n", 0, 3, {"a\rb\rc\n", nullptr}},
        Case{"abc\nabcd\nx", 1, 3, {"abc", nullptr, "", "x", nullptr}},
        Case{"abcdef\n", 1, 3, {nullptr, "ef", nullptr}}, Case{"x\n", 1, 0, {nullptr, "", nullptr}},
        Case{"x\n\n", 1, -7, {nullptr, "", "", nullptr}}}) {
    SCOPED_TRACE(c.content);
    Kalvo_FileStream in;
    ASSERT_GE(in.Open(folder.Write("lines", c.content).c_str(), O_RDONLY, 0), 0);
    for (const char* expected : c.lines) EXPECT_STREQ(in.ReadLine(c.strip, c.most), expected);
  }
}

// What lines must be, byte by byte.
class LineModel {
 public:
  explicit LineModel(const std::string& text) : text_(text) {}

  bool Take(bool strip, int most, std::string* line) {
    line->clear();
    int count = 0;
    bool any = false;
    while (at < text_.size()) {
      const char c = text_[at++];
      any = true;
      if (c == '\n') {
        if (!strip) *line += c;
        return true;
      }
      if (c == '\r') {
        if (!strip) *line += c;
        continue;
      }
      *line += c;
      if (most != -1 && ++count > most) return false;
    }
    return any && !line->empty();
  }

  std::size_t at = 0;

 private:
  const std::string& text_;
};

// Reads of all kinds in turns, with the last line looked at after each.
TEST(StreamReader, AgreesWithAModelWhateverComesInBetween) {
  std::mt19937 random(20);
  for (int round = 0; round < 60; ++round) {
    std::string text;
    const unsigned lineLength = round % 3 == 0 ? 3 : round % 3 == 1 ? 100 : 9000;
    for (int i = 0; i < 60000; ++i) {
      const unsigned dice = static_cast<unsigned>(random()) % (lineLength * 4);
      text += dice < 4 ? "\n\n\n\r"[dice] : static_cast<char>('a' + random() % 26);
    }
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::thread feeder([&text, &ends, round] {
      std::mt19937 sizes(static_cast<unsigned>(round));
      for (std::size_t at = 0; at < text.size();) {
        const std::size_t n = std::min<std::size_t>(1 + sizes() % 12000, text.size() - at);
        at += static_cast<std::size_t>(std::max<ssize_t>(0, write(ends[1], &text[at], n)));
      }
      close(ends[1]);
    });
    MP_StreamReader reader(ends[0]);
    LineModel model(text);
    const char* line = nullptr;
    std::string expected;
    bool ended = false;
    for (bool more = true; more;) {
      switch (random() % 5) {
        case 0:
        case 1: {
          const bool strip = random() % 4 != 0;
          const int most = random() % 2 == 0 ? -1 : static_cast<int>(random() % (lineLength * 2));
          const bool some = model.Take(strip, most, &expected);
          line = reader.ReadLine(strip, most);
          ASSERT_EQ(line != nullptr, some) << round << " at " << model.at;
          break;
        }
        case 2: {
          char block[9000];
          const int wanted = static_cast<int>(random() % (random() % 2 == 0 ? 50 : sizeof(block)));
          const int n = reader.ReadBlock(block, wanted);
          ASSERT_EQ(std::string(block, static_cast<std::size_t>(n)),
                    text.substr(model.at, static_cast<std::size_t>(wanted)));
          model.at += static_cast<std::size_t>(n);
          break;
        }
        case 3: {
          const int skipped = reader.Skip(static_cast<int>(random() % 200));
          model.at += static_cast<std::size_t>(skipped);
          break;
        }
        default: {
          const int unread = reader.Unread();
          const int now = reader.RawRead();  // grows the block when that is full
          ASSERT_TRUE(now > unread || now <= 0);
          ended = now <= 0;  // what is unread can still be read, but no more comes
        }
      }
      more = !ended && model.at < text.size();
      ASSERT_TRUE(line == nullptr || line == expected);
    }
    std::string rest(static_cast<std::size_t>(reader.Unread()), '\0');
    ASSERT_EQ(reader.ReadBlock(&rest[0], reader.Unread()), static_cast<int>(rest.size()));
    ASSERT_TRUE(line == nullptr || line == expected);
    ASSERT_EQ(rest, text.substr(model.at, rest.size()));
    feeder.join();
    close(ends[0]);
  }
}

TEST(StreamReader, AFullBlockGrows) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string text(20000, 'x');
  ASSERT_EQ(write(ends[1], text.data(), text.size()), 20000);
  MP_StreamReader reader(ends[0]);
  EXPECT_EQ(reader.RawRead(), 8192);
  EXPECT_EQ(reader.RawRead(), 8192 + 8192 + 512);
  EXPECT_EQ(reader.Skip(10), 10);
  EXPECT_EQ(reader.RawRead(), 16896);  // moved to the front, which leaves room for ten
  EXPECT_EQ(reader.RawRead(), 19990);
  close(ends[1]);
  EXPECT_EQ(reader.RawRead(), 0);
  EXPECT_EQ(reader.RawRead(), -1);
  EXPECT_EQ(reader.Skip(0), 19990);
  EXPECT_EQ(reader.GetByte(), -2);
  close(ends[0]);
}

TEST(FileStream, Failures) {
  const support::Folder folder;
  const long before = support::OpenDescriptors();
  {
    Kalvo_FileStream stream;
    EXPECT_LT(stream.Open(folder.Path("none").c_str(), O_RDONLY, 0), 0);
    EXPECT_EQ(stream.GetErrorCode(), ENOENT);
    EXPECT_LT(stream.Open(nullptr, O_RDONLY, 0), 0);
    EXPECT_LT(stream.Open(folder.Path().c_str(), O_RDONLY, 0), 0);
    EXPECT_EQ(stream.GetErrorCode(), EISDIR);
    EXPECT_LT(stream.Open(folder.Path().c_str(), O_RDWR, 0), 0);
    EXPECT_LT(stream.Open((folder.Path() + std::string(4000, 'x')).c_str(), kMake, 0644), 0);
    EXPECT_LT(stream.Open((folder.Write("file", "") + "/below").c_str(), kMake, 0644), 0);
    EXPECT_EQ(stream.IsOpen(), 0);
    std::string deep = folder.Path();
    while (deep.size() < 3900) deep += "/\xFF\xFE" + std::string(90, 'd');
    EXPECT_GE(stream.Open((deep + "/f").c_str(), kMake, 0644), 0);
    stream.Close();

    // A descriptor that somebody closed.
    ASSERT_GE(stream.Open(folder.Path("closed").c_str(), kMake, 0644), 0);
    close(stream.GetHandle());
    EXPECT_EQ(stream.Write("lost", 4), 4);
    EXPECT_EQ(stream.Write(), -3);
    EXPECT_EQ(stream.Write(), 8192);  // nothing is left of it
    EXPECT_EQ(stream.Write('x', 8193), -4);
    EXPECT_EQ(stream.Write('x', 8194), 1);  // the last one found room again
    char c;
    EXPECT_EQ(stream.Read(&c, 1), -2);
    EXPECT_EQ(stream.Read(c), -1);
    stream.Detach();

    // A full disk.
    ASSERT_GE(stream.Open("/dev/full", O_WRONLY, 0), 0);
    EXPECT_EQ(stream.Printf("%s\n", "lost"), -1);
    EXPECT_EQ(stream.Write('\n', 1), -4);
    EXPECT_EQ(stream.Write(std::string(8193, 'x').c_str(), 8193), -3);
    EXPECT_EQ(stream.GetLastWriteChar(), 0);
    EXPECT_EQ(stream.GetErrorCode(), ENOSPC);
    stream.Close();

    // Nobody at the other end: no signal.
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    Kalvo_FileStream writer;
    writer.Attach(ends[1], 1);
    EXPECT_EQ(writer.Printf("%s\n", "lost"), -1);
    EXPECT_EQ(writer.GetErrorCode(), EPIPE);
    EXPECT_EQ(writer.Write("x", 1), 1);
    EXPECT_EQ(writer.Write(), -3);
  }
  EXPECT_EQ(support::OpenDescriptors(), before);
}

void OnAlarm(int) {}

// Signals without end, and descriptors that do not block: the transfers go on.
TEST(FileStream, GoesOnAfterSignals) {
  struct sigaction action = {};
  struct sigaction old = {};
  action.sa_handler = OnAlarm;  // without SA_RESTART
  sigaction(SIGALRM, &action, &old);
  const itimerval often = {{0, 200}, {0, 200}};
  setitimer(ITIMER_REAL, &often, nullptr);

  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
  std::thread reader([&ends] {
    Kalvo_FileStream in;
    in.Attach(ends[0], 0);
    for (int i = 0; i < 300000; ++i) {
      int number = -1;
      ASSERT_EQ(in.Read(number), 4);
      ASSERT_EQ(number, i);
    }
    char c;
    EXPECT_EQ(in.Read(c), 0);
  });
  {
    Kalvo_FileStream out;
    out.Attach(ends[1], 1);
    for (int i = 0; i < 300000; ++i) ASSERT_EQ(out.Write(i), 4);
  }
  reader.join();
  const itimerval never = {};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &old, nullptr);
}

}  // namespace
