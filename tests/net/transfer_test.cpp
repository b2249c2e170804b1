// The bytes of connections, both ways.

#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "kalvobase/text.h"
#include "platform/clock.h"
#include "support/allocations.h"
#include "support/channel.h"
#include "support/handlers.h"
#include "support/sockets.h"

namespace {

using support::Channel;
using support::Client;
using support::Listener;
using support::Server;
using Words = std::vector<std::string>;

#ifdef KALVOBASE_SANITIZED
constexpr std::size_t kMuch = std::size_t{8} << 20;
#else
constexpr std::size_t kMuch = std::size_t{64} << 20;
#endif

std::string RandomBytes(std::size_t size) {
  std::mt19937 engine(5);
  std::string bytes(size, '\0');
  for (char& c : bytes) c = static_cast<char>(engine());
  return bytes;
}

// A client of the engine, connected to a plain socket.
struct Connected {
  explicit Connected(int bufferSize = 0) {
    if (bufferSize > 0) {
      setsockopt(listener.socket(), SOL_SOCKET, SO_RCVBUF, &bufferSize, sizeof(bufferSize));
    }
    client.Connect("127.0.0.1", listener.port());
    peer = listener.Accept();
    client.events.WaitForCount(1);
  }
  ~Connected() {
    client.Close();
    close(peer);
  }
  void Tell(const std::string& text) {
    EXPECT_EQ(send(peer, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  }

  Listener listener;
  Client client;
  int peer = -1;
};

TEST(Transfer, MuchGoesBothWaysWholeAndInOrder) {
  for (const int bufferSize : {0, 4096}) {
    const std::size_t size = bufferSize == 0 ? kMuch : kMuch / 8;
    const std::string bytes = RandomBytes(size);
    Connected connected(bufferSize);
    std::thread sender([&] {
      std::mt19937 engine(1);
      for (std::size_t at = 0; at < size;) {
        const std::size_t n = std::min(size - at, std::size_t{1} + engine() % 60000);
        if (engine() % 2 == 0) {
          ASSERT_EQ(connected.client.SendData(bytes.data() + at, static_cast<int>(n)),
                    static_cast<int>(n));
        } else {
          auto* text = new Kalvo_String;
          text->memcpy(bytes.data() + at, static_cast<int>(n));
          ASSERT_EQ(connected.client.SendData(text), 1);
          ASSERT_EQ(text, nullptr);
        }
        at += n;
      }
    });
    std::thread peerSender([&] {
      std::mt19937 engine(2);
      for (std::size_t at = 0; at < size;) {
        const std::size_t n = std::min(size - at, std::size_t{1} + engine() % 60000);
        const ssize_t sent = send(connected.peer, bytes.data() + at, n, 0);
        ASSERT_GT(sent, 0);
        at += static_cast<std::size_t>(sent);
      }
    });
    std::string received;
    std::vector<char> room(70000);
    std::mt19937 engine(3);
    while (received.size() < size) {
      const ssize_t n = recv(connected.peer, room.data(), 1 + engine() % room.size(), 0);
      ASSERT_GT(n, 0);
      received.append(room.data(), static_cast<std::size_t>(n));
    }
    EXPECT_TRUE(received == bytes);
    sender.join();
    peerSender.join();
    ASSERT_TRUE(connected.client.events.WaitForBytes(size));
    EXPECT_TRUE(connected.client.events.bytes() == bytes);
  }
}

// The handler takes frames of one byte that tells their length, and so many bytes; it waits for
// a frame to be whole.
TEST(Transfer, FramesOfAnySizeInPiecesOfAnySize) {
  std::mt19937 engine(7);
  std::string frames;
  int count = 0;
  for (; frames.size() < 300000; ++count) {
    const auto length = static_cast<unsigned char>(engine() % 256);
    frames += static_cast<char>(length);
    frames.append(length, static_cast<char>(count));
  }
  for (const std::size_t piece :
       {std::size_t{1}, std::size_t{100}, std::size_t{5000}, std::size_t{50000}}) {
    const std::size_t size = piece == 1 ? 5000 : frames.size();
    std::atomic<long> taken{0};
    std::atomic<int> wrong{0};
    Connected connected;
    const char* expected = frames.data();
    connected.client.onAlloc = [&](long& available) {
      // Only the length of the frame is known beforehand, as from the bytes themselves.
      const long frame = 1 + static_cast<unsigned char>(expected[taken]);
      if (available < frame) {
        available = 0;
      } else {
        available = frame;
      }
    };
    connected.client.onData = [&](const char* data, long length) {
      if (std::string(data, static_cast<std::size_t>(length)) !=
          std::string(expected + taken, static_cast<std::size_t>(length))) {
        ++wrong;
      }
      taken += length;
      return 0;
    };
    for (std::size_t at = 0; at < size; at += piece) {
      connected.Tell(frames.substr(at, std::min(piece, size - at)));
    }
    long whole = 0;
    while (whole + 1 + static_cast<unsigned char>(expected[whole]) <= static_cast<long>(size)) {
      whole += 1 + static_cast<unsigned char>(expected[whole]);
      if (whole == static_cast<long>(size)) break;
    }
    EXPECT_TRUE(connected.client.events.WaitForBytes(static_cast<std::size_t>(whole)));
    connected.client.Close();
    EXPECT_EQ(taken, whole);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(connected.client.events.all(), Words{"ok 1"});
  }
}

TEST(Transfer, HoldsBackUpTo2048Bytes) {
  Channel channel;
  Connected connected;
  std::atomic<long> seen{0};
  connected.client.onAlloc = [&](long& size) {
    seen = size;
    size = 0;
  };
  const auto tell = [&](std::size_t more, long expected) {
    connected.Tell(std::string(more, 'a'));
    for (int i = 0; i < 10000 && seen != expected; ++i) usleep(1000);
    EXPECT_EQ(seen, expected);
  };
  tell(2000, 2000);
  tell(48, 2048);
  EXPECT_FALSE(connected.client.events.WaitForCount(2, std::chrono::milliseconds(100)));
  tell(1, 2049);
  ASSERT_TRUE(connected.client.events.WaitForCount(2));
  EXPECT_EQ(connected.client.events.all().back(), "lost -1");
  EXPECT_EQ(channel.Logged("<error>"), Words{"-4097 <error> data error! buffer size over!!"});
}

TEST(Transfer, WhatWasHeldBackComesFirst) {
  Connected connected;
  std::atomic<int> calls{0};
  connected.client.onAlloc = [&](long& size) {
    if (++calls < 4) size = 0;
  };
  for (const char* part : {"one ", "two ", "three ", "four"}) {
    const int before = calls;
    connected.Tell(part);
    for (int i = 0; i < 10000 && calls == before; ++i) usleep(1000);
  }
  ASSERT_TRUE(connected.client.events.WaitForBytes(18));
  EXPECT_EQ(connected.client.events.bytes(), "one two three four");
}

TEST(Transfer, EndsWhatHandlersDoWrong) {
  struct Case {
    const char* line;
    std::function<void(long&)> onAlloc;
    std::function<int(const char*, long)> onData;
    std::string lost;
  };
  int calls = 0;
  const std::vector<Case> cases = {
      {"-4097 <error> data error! no buffer provide!", [](long& size) { size = -5; }, nullptr,
       "lost -1"},
      {"-4097 <error> data error! no buffer provide!", [](long&) { throw 1; }, nullptr, "lost -1"},
      {"-4097 <error> data error! buffer is enough but no read",
       [&calls](long& size) { size = calls++ == 0 ? 0 : 1; }, nullptr, "lost -1"},
      // More than there is, on a connection that does not wait.
      {"1 <warning> doReadTcp MP_SOCK_read error[10035]!!!", [](long& size) { size += 1; }, nullptr,
       "lost 10035"},
      {"1 <error> data error!!remote addr[127.0.0.1:", nullptr,
       [](const char*, long) { return -1; }, "lost -1"},
  };
  for (const Case& wrong : cases) {
    Channel channel;
    Connected connected;
    connected.client.onAlloc = wrong.onAlloc;
    connected.client.onData = wrong.onData;
    connected.client.onLost = [] { return -1; };
    connected.Tell("ab");
    if (!connected.client.events.WaitForCount(2, std::chrono::milliseconds(300))) {
      connected.Tell("cd");
    }
    ASSERT_TRUE(connected.client.events.WaitForCount(2)) << wrong.line;
    EXPECT_EQ(connected.client.events.all().back(), wrong.lost) << wrong.line;
    const Words lines = channel.Logged("error");
    ASSERT_EQ(lines.size(), 1u) << wrong.line;
    EXPECT_EQ(lines[0].find(wrong.line), 0u) << lines[0];
    char byte;
    EXPECT_LE(recv(connected.peer, &byte, 1, 0), 0);
  }
}

// An accepted connection waits for what a handler asks for in advance. A protocol error ends the
// one that would be made again.
TEST(Transfer, WaitsForMoreAndEndsForGood) {
  Server server(
      [](Client* client) { client->onAlloc = [](long& size) { size = std::max(size, 10L); }; });
  const int peer = support::ConnectTo(server.port());
  send(peer, "01234", 5, 0);
  usleep(50000);
  send(peer, "56789", 5, 0);
  EXPECT_TRUE(server.first()->events.WaitForBytes(10));
  EXPECT_EQ(server.first()->events.bytes(), "0123456789");
  close(peer);

  Connected connected;
  connected.client.onLost = [] { return 0; };
  connected.client.onData = [](const char*, long) { return -1; };
  connected.Tell("x");
  ASSERT_TRUE(connected.client.events.WaitForCount(2));
  EXPECT_FALSE(connected.client.events.WaitForCount(3, std::chrono::milliseconds(300)));
}

TEST(Transfer, TellsHowAConnectionEnded) {
  Connected closed;
  shutdown(closed.peer, SHUT_WR);
  ASSERT_TRUE(closed.client.events.WaitForCount(2));
  EXPECT_EQ(closed.client.events.all().back(), "lost 0");

  Channel channel;
  Connected reset;
  reset.client.onLost = []() -> int { throw 1; };
  reset.Tell("before");
  ASSERT_TRUE(reset.client.events.WaitForBytes(6));
  support::Reset(reset.peer);
  reset.peer = -1;
  ASSERT_TRUE(reset.client.events.WaitForCount(2));
  EXPECT_EQ(reset.client.events.all().back(), "lost 10054");
  reset.client.Close();
  EXPECT_EQ(channel.Logged("<"), (Words{"1 <warning> doTransfer error[10054]!!!",
                                        "-4097 <error> disconnect 1 process fatal error!!"}));

  // All that came before the end arrives.
  const std::string much(100000, 'm');
  Connected last;
  last.Tell(much);
  shutdown(last.peer, SHUT_WR);
  ASSERT_TRUE(last.client.events.WaitForCount(2));
  EXPECT_EQ(last.client.events.bytes().size(), much.size());
  EXPECT_EQ(last.client.events.all().back(), "lost 0");
}

TEST(Transfer, SendsWhatItCan) {
  Connected connected;
  Kalvo_String* empty = new Kalvo_String;
  EXPECT_EQ(connected.client.SendData(empty), 1);
  EXPECT_EQ(empty, nullptr);
  EXPECT_EQ(connected.client.SendData("a", 0), 0);
  EXPECT_EQ(connected.client.SendData("a", -1), -1);  // nothing to send, all of which was taken
  EXPECT_EQ(connected.client.SendData(nullptr, 5), 5);
  EXPECT_EQ(connected.client.Printf("%s", ""), 0);

  // Nothing that is sent too early arrives, and it does no harm.
  Channel channel;
  Server server;
  Client early;
  early.Connect("127.0.0.1", server.port());
  EXPECT_EQ(early.SendData("early", 5), 5);
  ASSERT_TRUE(early.events.WaitForCount(1));
  EXPECT_EQ(early.SendData("late", 4), 4);
  ASSERT_TRUE(server.first()->events.WaitForBytes(4));
  EXPECT_EQ(server.first()->events.bytes(), "late");
  EXPECT_EQ(channel.Logged("senddata"),
            Words{"-4097 <error> senddata failed because error[10057]"});
}

TEST(Transfer, EndsAConnectionThatTakesNothing) {
  Channel channel;
  Connected connected(4096);
  const std::string block(10000000, 'x');  // which stays under way
  ASSERT_GT(connected.client.SendData(block.data(), static_cast<int>(block.size())), 0);
  for (int i = 0; i < 1023; ++i) ASSERT_EQ(connected.client.SendData("a", 1), 1);
  platform::shift_tick_count_for_test(11900);
  EXPECT_EQ(connected.client.SendData("a", 1), 1);
  platform::shift_tick_count_for_test(12100);
  EXPECT_EQ(connected.client.SendData("a", 1), 1);  // 1,024 of them waited
  Kalvo_String* refused = new Kalvo_String("a");
  EXPECT_EQ(connected.client.SendData(refused), 0);
  ASSERT_NE(refused, nullptr);
  delete refused;
  ASSERT_TRUE(connected.client.events.WaitForCount(2));
  EXPECT_EQ(connected.client.events.all().back(), "lost 0");
  platform::shift_tick_count_for_test(0);
  const Words lines = channel.Logged("Send buffer size");
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].find("-4097 <error> Send buffer size[1025],delay["), 0u);
  EXPECT_NE(lines[0].find("],ip[127.0.0.1:" + std::to_string(connected.listener.port()) + "]!!!!"),
            std::string::npos);
}

// One who was sending is told of it, and that answer counts.
TEST(Transfer, TellsOfASendThatWasUnderWay) {
  Connected connected(4096);
  const std::string block(10000000, 'x');
  connected.client.onLost = [] { return 0; };
  connected.client.onFailed = []() -> int { throw 1; };
  Channel channel;
  ASSERT_GT(connected.client.SendData(block.data(), static_cast<int>(block.size())), 0);
  shutdown(connected.peer, SHUT_WR);
  ASSERT_TRUE(connected.client.events.WaitForCount(3));
  EXPECT_FALSE(connected.client.events.WaitForCount(4, std::chrono::milliseconds(300)));
  EXPECT_EQ(connected.client.events.all(), (Words{"ok 1", "lost 0", "failed 10053"}));
  EXPECT_EQ(channel.Logged("disconnect 1"),
            Words{"-4097 <error> disconnect 1 process fatal error!!"});
}

// What has come before the engine looks for the first time, whatever that is.
struct Arrived {
  explicit Arrived(const std::function<void(int&)>& tell, std::function<void(long&)> onAlloc = {})
      : server([this, onAlloc](Client* client) {
          client->onAlloc = onAlloc;
          client->onOk = [this] { told.Wait([this](auto&, auto&) { return done.load(); }); };
        }) {
    peer = support::ConnectTo(server.port());
    tell(peer);
    usleep(20000);  // until all of it is there
    done = true;
    told.Add("done");
  }
  ~Arrived() { close(peer); }

  support::Events told;
  std::atomic<bool> done{false};
  Server server;
  int peer = -1;
};

void TellBytes(int peer, std::size_t size) {
  const std::string bytes(size, 'x');
  send(peer, bytes.data(), size, 0);
}

TEST(Transfer, TellsHowMuchThereIs) {
  std::vector<long> sizes;
  Arrived messages([](int peer) { TellBytes(peer, 12000); },
                   [&](long& size) {
                     sizes.push_back(size);
                     size = size >= 3000 ? 3000 : 0;
                   });
  EXPECT_TRUE(messages.server.first()->events.WaitForBytes(12000));
  messages.server.first()->Close();
  EXPECT_EQ(sizes, (std::vector<long>{12000, 9000, 6000, 3000}));

  // A size that was raised takes of what is in the socket.
  std::vector<long> wanted = {3000, 6000};
  Arrived raised([](int peer) { TellBytes(peer, 12000); },
                 [&](long& size) {
                   if (wanted.empty()) return;
                   size = wanted.front();
                   wanted.erase(wanted.begin());
                 });
  EXPECT_TRUE(raised.server.first()->events.WaitForBytes(12000));
}

TEST(Transfer, AResetIsToldBehindAnyNumberOfBytes) {
  for (const std::size_t size : {1u, 8191u, 8192u, 8193u, 20000u}) {
    for (const long most : {100000l, 4096l}) {
      Arrived reset(
          [size](int& peer) {
            TellBytes(peer, size);
            support::Reset(peer);
            peer = -1;
          },
          [most](long& available) { available = std::min(available, most); });
      Client* const client = reset.server.first();
      ASSERT_TRUE(client->events.WaitForCount(2));
      EXPECT_EQ(client->events.bytes().size(), size);
      EXPECT_EQ(client->events.all().back(), "lost 10054") << size << " by " << most;
    }
  }
}

// Urgent data is not a part of what is read, and hides nothing of it.
TEST(Transfer, UrgentDataIsPassedOver) {
  for (const std::size_t size : {3u, 8192u, 10000u}) {
    Arrived urgent([size](int peer) {
      TellBytes(peer, size);
      send(peer, "!", 1, MSG_OOB);
      TellBytes(peer, size);
    });
    EXPECT_TRUE(urgent.server.first()->events.WaitForBytes(2 * size)) << size;
    EXPECT_EQ(urgent.server.first()->events.bytes(), std::string(2 * size, 'x'));
    EXPECT_EQ(urgent.server.first()->events.all().size(), 1u);
  }
}

// What the engine itself cannot do ends one connection, and no thread.
TEST(Transfer, SurvivesWantOfMemory) {
  Server server([](Client* client) {
    // The rest of what came has to be kept, for which there is no memory.
    client->onAlloc = [](long& size) {
      if (size < 2) return;
      size = 1;
      support::FailAllocations(1);
    };
    client->onLost = [] {
      support::FailAllocations(0);
      return -1;
    };
  });
  for (int i = 0; i < 3; ++i) {
    Client client;
    client.Connect("127.0.0.1", server.port());
    Client* const accepted = server.At(static_cast<std::size_t>(i));
    ASSERT_NE(accepted, nullptr);
    ASSERT_TRUE(client.events.WaitForCount(1));
    client.SendData("a", 1);
    ASSERT_TRUE(accepted->events.WaitForBytes(1));
    client.SendData("bc", 2);
    ASSERT_TRUE(accepted->events.WaitForCount(2));
    EXPECT_EQ(accepted->events.all().back(), "lost 10055");
    ASSERT_TRUE(client.events.WaitForCount(2));
  }
}

}  // namespace
