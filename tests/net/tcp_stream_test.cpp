// The blocking stream over TCP.

#include "kalvobase/tcp_stream.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <random>
#include <string>
#include <thread>

#include "support/folder.h"
#include "support/processes.h"
#include "support/sockets.h"

namespace {

using support::Listener;

std::string ReadAll(int socket) {
  std::string all;
  char block[4096];
  for (ssize_t n; (n = recv(socket, block, sizeof(block), 0)) > 0;) {
    all.append(block, static_cast<std::size_t>(n));
  }
  return all;
}

TEST(TcpStream, Connecting) {
  const long before = support::OpenDescriptors();
  {
    Listener listener;
    Listener other;
    Kalvo_TcpStream stream;
    EXPECT_EQ(stream.GetHandle(), -1);
    EXPECT_EQ(stream.GetPrivateData(), nullptr);
    EXPECT_EQ(stream.Connect(nullptr, listener.port()), -1);
    const int socket = stream.Connect("127.0.0.1", listener.port());
    ASSERT_GT(socket, 1);
    EXPECT_EQ(stream.GetHandle(), socket);
    EXPECT_STREQ(stream.GetRemoteAddr()->GetAddr(), "127.0.0.1");
    EXPECT_EQ(stream.GetRemoteAddr()->GetPort(), listener.port());
    EXPECT_STREQ(stream.GetLocalAddr()->GetAddr(), "127.0.0.1");
    EXPECT_NE(stream.GetLocalAddr()->GetPort(), listener.port());
    EXPECT_EQ(stream.Connect("127.0.0.1", listener.port()), 1);
    EXPECT_EQ(stream.GetHandle(), socket);

    stream.Write("sent at the end", -1);
    const int accepted = listener.Accept();
    EXPECT_GT(stream.Connect("127.0.0.1", other.port()), 1);
    EXPECT_EQ(ReadAll(accepted), "sent at the end");
    close(accepted);
    const int otherPort = other.port();
    other.Close();
    listener.Close();
    EXPECT_EQ(stream.Connect("127.0.0.1", listener.port()), -1);
    EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10061);
    EXPECT_EQ(stream.GetHandle(), -1);
    EXPECT_EQ(stream.Connect("127.0.0.1", otherPort), -1);
    EXPECT_EQ(stream.DisConnect(), 1);
    EXPECT_EQ(stream.Printf("x"), -1);
  }
  EXPECT_EQ(support::OpenDescriptors(), before);
}

TEST(TcpStream, NumbersInBothOrders) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  Kalvo_TcpStream a;
  Kalvo_TcpStream b;
  a.Attach(ends[0]);
  b.Attach(ends[1]);
  EXPECT_STREQ(a.GetRemoteAddr()->GetAddr(), "");
  EXPECT_EQ(a.Write(0x01020304), 4);
  EXPECT_EQ(a.Write(static_cast<short>(-2)), 2);
  EXPECT_EQ(a.Write(-3L), 4);
  EXPECT_EQ(a.Write(2.5), 8);
  EXPECT_EQ(a.Write(4.5L), 8);
  EXPECT_EQ(a.Write('x', 3), 1);
  EXPECT_EQ(a.Write('x', 0), 0);
  EXPECT_EQ(a.GetLastWriteChar(), 'x');
  EXPECT_EQ(a.Printf("%s %d\r\n", "line", 1), 8);  // goes at once
  char bytes[4];
  EXPECT_EQ(b.RawRead(), 37);
  EXPECT_EQ(b.Read(bytes, 4), 4);
  EXPECT_EQ(std::string(bytes, 4), "\x01\x02\x03\x04");
  unsigned short s = 0;
  long l = 0;
  double d = 0;
  long double ld = 0;
  EXPECT_EQ(b.Read(s), 2);
  EXPECT_EQ(b.Read(l), 4);
  EXPECT_EQ(b.Read(d), 8);
  EXPECT_EQ(b.Read(ld), 8);
  EXPECT_EQ(s, 0xFFFE);
  EXPECT_EQ(l, -3);
  EXPECT_EQ(d, 2.5);
  EXPECT_EQ(ld, 4.5L);
  EXPECT_EQ(b.GetDataSizeInBuff(), 11);
  b.ReadIgnore(3);
  EXPECT_STREQ(b.ReadLine(1, -1), "line 1");

  a.SetNetOrderFlag(0);
  b.SetNetOrderFlag(0);
  a.Write(0x01020304U);
  EXPECT_EQ(a.Write(), 8192);
  EXPECT_EQ(b.RawRead(), 4);
  unsigned char first = 0;
  EXPECT_EQ(b.Read(first), 5);
  EXPECT_EQ(first, 4);
  b.ReadIgnore(0);
  EXPECT_EQ(b.GetDataSizeInBuff(), 0);
  a.DisConnect();
  close(ends[0]);
  EXPECT_EQ(b.RawRead(), 0);
  EXPECT_EQ(b.Read(first), -1);
  EXPECT_EQ(b.Write(std::string(10000, 'x').c_str(), -1), -3);  // and no signal
  b.DisConnect();
  close(ends[1]);
}

TEST(TcpStream, WhoseSocketItIs) {
  Listener listener;
  const int client = Kalvo_SOCK_Connect(&listener.address, -1);
  const int server = listener.Accept();
  const auto isOpen = [](int socket) { return Kalvo_SOCK_Wait(socket, 0, 1) > 0; };
  {
    Kalvo_TcpStream stream;
    stream.Attach(client);
    EXPECT_STREQ(stream.GetRemoteAddr()->GetAddr(), "127.0.0.1");
    EXPECT_EQ(stream.GetRemoteAddr()->GetPort(), listener.port());
    EXPECT_NE(stream.GetLocalAddr()->GetPort(), listener.port());
    stream.Write("x", 1);
    stream.Detach();
    EXPECT_EQ(stream.GetHandle(), client);
    char c;
    EXPECT_EQ(stream.Read(c), -1);
    EXPECT_EQ(stream.Write("lost", 4), 4);
    EXPECT_EQ(stream.Write(), -1);
  }
  ASSERT_TRUE(isOpen(client));
  Kalvo_TcpStream stream;
  stream.Attach(client);
  stream.CloseSocket(-1);
  EXPECT_FALSE(isOpen(client));
  EXPECT_EQ(stream.GetHandle(), client);
  // Its number belongs to others from now on.
  const int taken = Kalvo_SOCK_Connect(&listener.address, -1);
  ASSERT_EQ(taken, client);
  stream.Write("not theirs", -1);
  EXPECT_EQ(stream.Write(), -1);
  stream.CloseSocket(-1);
  stream.DisConnect();
  EXPECT_TRUE(isOpen(taken));
  stream.CloseSocket(-1);
  stream.CloseSocket(taken);
  EXPECT_FALSE(isOpen(taken));

  ASSERT_GT(stream.Connect("127.0.0.1", listener.port()), 1);
  const int own = stream.GetHandle();
  stream.Attach(own);  // the caller's, from now on
  stream.DisConnect();
  ASSERT_TRUE(isOpen(own));
  close(own);
  EXPECT_EQ(ReadAll(server), "x");
  close(server);
}

// Closing the socket ends a read in another thread, and the other side learns of it.
TEST(TcpStream, ClosingBesideARead) {
  Listener listener;
  Kalvo_TcpStream stream;
  ASSERT_GT(stream.Connect("127.0.0.1", listener.port()), 1);
  const int accepted = listener.Accept();
  std::thread reader([&stream] {
    int value = 0;
    EXPECT_EQ(stream.Read(value), -1);
  });
  usleep(50000);  // so that it waits, most probably
  stream.CloseSocket(-1);
  reader.join();
  EXPECT_EQ(ReadAll(accepted), "");
  close(accepted);
}

// Sockets keep off the numbers of the standard streams, one of which would mean something else.
TEST(TcpStream, NeverHasANumberOfTheStandardStreams) {
  Listener listener;
  const int port = listener.port();
  support::Child child([port](support::Child&) {
    close(0);
    close(1);
    Kalvo_TcpStream stream;
    if (stream.Connect("127.0.0.1", port) < 3) _exit(1);
  });
  EXPECT_EQ(child.Join(), 0);
}

// One thread writes and one reads, against a thread that sends all back.
TEST(TcpStream, BytesArriveWholeAndInOrder) {
  Listener listener;
  std::thread echo([&listener] {
    const int socket = listener.Accept();
    char block[777];
    for (ssize_t n; (n = recv(socket, block, sizeof(block), 0)) > 0;) {
      ASSERT_EQ(send(socket, block, static_cast<std::size_t>(n), MSG_NOSIGNAL), n);
    }
    close(socket);
  });
  Kalvo_TcpStream stream;
  ASSERT_GT(stream.Connect("127.0.0.1", listener.port()), 1);
  constexpr int kRounds = 20000;
  std::thread writer([&stream] {
    std::mt19937 random(1);
    for (int i = 0; i < kRounds; ++i) {
      const std::string text(random() % 300, static_cast<char>('a' + i % 26));
      ASSERT_EQ(stream.Write(static_cast<int>(text.size())), 4);
      ASSERT_EQ(stream.Write(text.c_str(), -1), static_cast<int>(text.size()));
    }
    ASSERT_GT(stream.Write(), 0);
    shutdown(stream.GetHandle(), SHUT_WR);
  });
  std::mt19937 random(1);
  char text[300];
  for (int i = 0; i < kRounds; ++i) {
    const int expected = static_cast<int>(random() % 300);
    int size = -1;
    ASSERT_EQ(stream.Read(size), 4);
    ASSERT_EQ(size, expected);
    ASSERT_EQ(stream.Read(text, size), size);
    ASSERT_EQ(std::string(text, static_cast<std::size_t>(size)),
              std::string(static_cast<std::size_t>(size), static_cast<char>('a' + i % 26)));
  }
  char c;
  EXPECT_EQ(stream.Read(c), 0);
  writer.join();
  echo.join();
}

}  // namespace
