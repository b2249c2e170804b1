// UDP ports.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/channel.h"
#include "support/handlers.h"

namespace {

using support::Channel;
using Words = std::vector<std::string>;

class Port : public Kalvo_UdpHandler {
 public:
  ~Port() override { Close(); }

  void* AllocBufferForRead(long& size) override {
    ++asked;
    if (onAlloc) onAlloc(size);
    return noBuffer ? nullptr : buffer_;
  }
  int OnDataOk(void* data, long length, Kalvo_SocketAddr* from, Kalvo_SocketAddr* local) override {
    error = length < 0 ? Kalvo_SOCK_GetLastError() : 0;
    const std::string text(static_cast<char*>(data), length < 0 ? 4 : static_cast<size_t>(length));
    lastFrom = from->GetPort();
    if (onFrom) onFrom(from);
    EXPECT_EQ(local, GetLocalAddr());
    events.Add(std::to_string(length) + " " + text);
    return onData ? onData() : 0;
  }
  int port() { return GetLocalAddr()->GetPort(); }

  std::atomic<int> asked{0};
  std::atomic<int> lastFrom{0};
  std::atomic<int> error{0};
  std::atomic<bool> noBuffer{false};
  support::Events events;
  std::function<void(long&)> onAlloc;
  std::function<int()> onData;
  std::function<void(Kalvo_SocketAddr*)> onFrom;

 private:
  char buffer_[65536];
};

struct Ports {
  // `prepare` sets what the receiver does, which must not change any more when it is open.
  explicit Ports(const std::function<void(Port*)>& prepare = [](Port*) {}) {
    prepare(&receiver);
    EXPECT_NE(receiver.Open("127.0.0.1", 0), 0u);
    EXPECT_NE(sender.Open(nullptr, 0), 0u);
    to.Init("127.0.0.1", receiver.port());
  }
  int Send(const std::string& text) {
    return sender.SendData(&to, text.data(), static_cast<int>(text.size()));
  }

  Port receiver;
  Port sender;
  Kalvo_SocketAddr to;
};

TEST(Udp, GoesBothWays) {
  Port closed;
  Kalvo_SocketAddr nobody;
  Kalvo_SocketAddr somebody;
  somebody.Init("127.0.0.1", 9);
  EXPECT_EQ(closed.SendData(&somebody, "a", 1), -1);
  EXPECT_EQ(closed.Printf(&somebody, "a"), -1);
  closed.ExitBroadcastGroup("239.1.2.3");
  closed.AddBroadcastGroup("239.1.2.3", 1);
  closed.EnableBroadcast(1);

  Ports ports;
  EXPECT_EQ(ports.receiver.Open("127.0.0.1", 0), 0u);
  EXPECT_EQ(ports.sender.port(), 0);
  EXPECT_GT(ports.receiver.port(), 0);
  EXPECT_EQ(ports.sender.SendData(&nobody, "a", 1), -1);
  EXPECT_EQ(ports.sender.Printf(&ports.to, "%05d", 42), 5);
  ASSERT_TRUE(ports.receiver.events.WaitForCount(1));
  Kalvo_SocketAddr back;
  back.Init("127.0.0.1", ports.receiver.lastFrom);
  EXPECT_EQ(ports.receiver.SendData(&back, "back", 4), 4);
  ASSERT_TRUE(ports.sender.events.WaitForCount(1));
  EXPECT_EQ(ports.receiver.events.all(), Words{"5 00042"});
  EXPECT_EQ(ports.sender.events.all(), Words{"4 back"});

  // The largest, many at once, and the order.
  EXPECT_EQ(ports.Send(std::string(65507, 'x')), 65507);
  EXPECT_EQ(ports.Send(std::string(65508, 'x')), -1);
  ASSERT_TRUE(ports.receiver.events.WaitForCount(2));
  for (int i = 0; i < 50; ++i) ports.Send("n" + std::to_string(i));
  ASSERT_TRUE(ports.receiver.events.WaitForCount(52));
  EXPECT_EQ(ports.receiver.events.all().back(), "3 n49");

  EXPECT_EQ(closed.Open("no.such.host.invalid", 0), 0u);
  Kalvo_SocketAddr everybody;
  everybody.Init("127.255.255.255", ports.receiver.port());
  EXPECT_EQ(ports.sender.SendData(&everybody, "a", 1), -1);
  ports.sender.EnableBroadcast(1);
  EXPECT_EQ(ports.sender.SendData(&everybody, "a", 1), 1);

  const int port = ports.receiver.port();
  ports.receiver.Close();
  EXPECT_NE(ports.receiver.Open("127.0.0.1", port), 0u);
  ports.Send("again");
  EXPECT_TRUE(ports.receiver.events.WaitForCount(53));
}

TEST(Udp, EmptyDatagramsAndThoseThatAreTooLarge) {
  Channel channel;
  Ports ports([](Port* port) { port->onAlloc = [](long& size) { size = std::min(size, 5l); }; });
  EXPECT_EQ(ports.Send(""), 0);
  EXPECT_EQ(ports.Send("after"), 5);
  ASSERT_TRUE(ports.receiver.events.WaitForCount(1));
  EXPECT_EQ(channel.Logged("udp error"), Words{"1  udp error 0 \n"});
  ports.Send("abcdef");
  ASSERT_TRUE(ports.receiver.events.WaitForCount(2));
  EXPECT_EQ(ports.receiver.events.all(), (Words{"5 after", "-1 abcd"}));
  EXPECT_EQ(ports.receiver.error, 10040);
}

TEST(Udp, ADatagramWaitsUntilItIsWanted) {
  std::atomic<bool> refuse{true};
  Ports ports([&](Port* port) {
    port->onAlloc = [&](long& size) {
      if (refuse) size = 0;
    };
  });
  ports.Send("one");
  ports.Send("two");
  while (ports.receiver.asked < 5) usleep(1000);
  const clock_t before = clock();
  usleep(200000);
  EXPECT_LT(clock() - before, CLOCKS_PER_SEC / 10);
  refuse = false;
  ASSERT_TRUE(ports.receiver.events.WaitForCount(2));
  EXPECT_EQ(ports.receiver.events.all(), (Words{"3 one", "3 two"}));
}

TEST(Udp, WhatHandlersDoWrong) {
  Channel channel;
  std::atomic<int> calls{0};
  Ports ports(
      [&](Port* port) { port->onData = [&]() -> int { return ++calls == 1 ? throw 1 : -1; }; });
  ports.Send("a");
  ports.Send("b");
  ASSERT_TRUE(ports.receiver.events.WaitForCount(2));
  ports.Send("c");  // no longer received
  EXPECT_FALSE(ports.receiver.events.WaitForCount(3, std::chrono::milliseconds(200)));
  EXPECT_EQ(ports.receiver.SendData(&ports.to, "d", 1), 1);
  const std::string from = "127.0.0.1:" + std::to_string(ports.receiver.lastFrom) + "]";
  EXPECT_EQ(channel.Logged("<error>"),
            (Words{"1 <error> udp data process fatal error!!remote address[" + from,
                   "1 <error> udp data error!!remote address [" + from}));

  Ports dead;
  dead.receiver.noBuffer = true;
  dead.Send("e");
  while (channel.Logged("no buff").empty()) usleep(1000);
  EXPECT_FALSE(dead.receiver.events.WaitForCount(1, std::chrono::milliseconds(100)));
  EXPECT_EQ(dead.receiver.SendData(&dead.to, "f", 1), -1);
  EXPECT_EQ(dead.receiver.Open("127.0.0.1", 0), 0u);
  dead.receiver.Close();
  dead.receiver.noBuffer = false;
  EXPECT_NE(dead.receiver.Open("127.0.0.1", 0), 0u);
}

// A port answers, closes, opens itself again and goes in the calls of the engine, while others
// keep sending to it.
TEST(Udp, MayDoAnythingInACall) {
  std::atomic<bool> over{false};
  std::atomic<bool> begun{false};  // nobody else looks at the receiver's address any more
  std::atomic<int> answered{0};
  Ports ports([&](Port* receiver) {
    receiver->onData = [&begun, &answered, receiver] {
      EXPECT_TRUE(begun);
      Kalvo_SocketAddr self = *receiver->GetLocalAddr();
      if (receiver->SendData(&self, "self", 4) == 4) ++answered;
      receiver->Close();
      return receiver->Open("127.0.0.1", self.GetPort()) != 0 ? 0 : -1;
    };
  });
  begun = true;
  std::thread flood([&] {
    while (!over) ports.Send("flood");
  });
  EXPECT_TRUE(ports.receiver.events.WaitForCount(200));
  over = true;
  flood.join();
  ports.receiver.Close();
  EXPECT_EQ(static_cast<std::size_t>(answered), ports.receiver.events.all().size());

  struct Suicide : Port {
    int OnDataOk(void*, long, Kalvo_SocketAddr*, Kalvo_SocketAddr*) override {
      support::Events* const told = told_;
      EXPECT_TRUE(known_);
      delete this;
      told->Add("gone");
      return 0;
    }
    support::Events* told_ = nullptr;
    std::atomic<bool> known_{false};  // nobody else needs the object any more
  };
  support::Events told;
  auto* const suicide = new Suicide;
  suicide->told_ = &told;
  suicide->Open("127.0.0.1", 0);
  Kalvo_SocketAddr to;
  to.Init("127.0.0.1", suicide->port());
  suicide->known_ = true;
  for (int i = 0; i < 3; ++i) ports.sender.SendData(&to, "x", 1);
  EXPECT_TRUE(told.WaitForCount(1));
}

TEST(Udp, MulticastGroups) {
  Port first;
  ASSERT_NE(first.OpenBroadCastPort(nullptr, 0), 0u);
  first.Close();
  ASSERT_NE(first.OpenBroadCastPort("0.0.0.0", 0), 0u);
  Port second;
  ASSERT_NE(second.OpenBroadCastPort("0.0.0.0", first.port()), 0u);
  for (Port* port : {&first, &second, &second}) port->AddBroadcastGroup("239.77.66.55", 0);
  Kalvo_SocketAddr group;
  group.Init("239.77.66.55", first.port());
  if (first.SendData(&group, "all", 3) < 0) GTEST_SKIP() << "no way to a group";
  ASSERT_TRUE(first.events.WaitForCount(1));
  ASSERT_TRUE(second.events.WaitForCount(1));
  second.ExitBroadcastGroup("239.77.66.55");
  second.ExitBroadcastGroup("239.77.66.55");
  ASSERT_GT(first.SendData(&group, "one", 3), 0);
  ASSERT_TRUE(first.events.WaitForCount(2));
  EXPECT_FALSE(second.events.WaitForCount(2, std::chrono::milliseconds(100)));
}

// Ports of one number, each on an address of its own.
TEST(Udp, PortsForGroupsHaveTheirOwnAddress) {
  Port first;
  Port second;
  ASSERT_NE(first.OpenBroadCastPort("127.0.0.1", 0), 0u);
  const int number = first.port();
  ASSERT_NE(second.OpenBroadCastPort("127.0.0.2", number), 0u);
  EXPECT_STREQ(second.GetLocalAddr()->GetAddr(), "127.0.0.2");
  Port stranger;
  std::string from;
  stranger.onFrom = [&from](Kalvo_SocketAddr* address) { from = address->GetAddr(); };
  EXPECT_EQ(stranger.OpenBroadCastPort("192.0.2.1", 0), 0u);  // of no machine
  ASSERT_NE(stranger.Open("127.0.0.9", 0), 0u);
  Kalvo_SocketAddr to[4];
  const char* const addresses[] = {"127.0.0.1", "127.0.0.2", "127.0.0.3", "127.255.255.255"};
  for (int i = 0; i < 4; ++i) to[i].Init(addresses[i], number);
  stranger.SendData(&to[2], "nobody", 6);
  EXPECT_EQ(stranger.SendData(&to[0], "one", 3), 3);
  EXPECT_EQ(stranger.SendData(&to[1], "two", 3), 3);
  ASSERT_TRUE(first.events.WaitForCount(1));
  ASSERT_TRUE(second.events.WaitForCount(1));
  // What is sent leaves from the address.
  Kalvo_SocketAddr back = *stranger.GetLocalAddr();
  ASSERT_EQ(second.SendData(&back, "back", 4), 4);
  ASSERT_TRUE(stranger.events.WaitForCount(1));
  EXPECT_EQ(from, "127.0.0.2");
  stranger.EnableBroadcast(1);
  if (stranger.SendData(&to[3], "all", 3) > 0) {
    ASSERT_TRUE(first.events.WaitForCount(2));
    ASSERT_TRUE(second.events.WaitForCount(2));
  }
  first.AddBroadcastGroup("239.77.66.54", 0);
  Kalvo_SocketAddr group;
  group.Init("239.77.66.54", number);
  const std::size_t before = first.events.all().size();
  ASSERT_GT(first.SendData(&group, "group", 5), 0);
  ASSERT_TRUE(first.events.WaitForCount(before + 1));
  EXPECT_EQ(first.events.all().back(), "5 group");
  const Words expected = {"3 two", "3 all"};
  EXPECT_EQ(second.events.all(), expected);
  // Below 0 ends receiving by both of its sockets.
  Port silent;
  silent.onData = [] { return -1; };
  ASSERT_NE(silent.OpenBroadCastPort("127.0.0.4", number), 0u);
  Kalvo_SocketAddr quiet = *silent.GetLocalAddr();
  stranger.SendData(&quiet, "last", 4);
  ASSERT_TRUE(silent.events.WaitForCount(1));
  if (stranger.SendData(&to[3], "all", 3) > 0) {
    ASSERT_TRUE(second.events.WaitForCount(3));
    EXPECT_FALSE(silent.events.WaitForCount(2, std::chrono::milliseconds(20)));
  }
}

}  // namespace
