// The engine under load: storms, crowds, and too little of everything.

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/channel.h"
#include "support/folder.h"
#include "support/handlers.h"
#include "support/processes.h"
#include "support/sockets.h"

namespace {

using support::Client;
using support::ConnectTo;
using support::Reset;

#ifdef KALVOBASE_SANITIZED
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

// Gives everything back, and is freed when its connection ends.
class Echo : public Kalvo_TcpClientHandler {
 public:
  explicit Echo(std::shared_ptr<std::atomic<int>> living) : living_(std::move(living)) {
    ++*living_;
  }
  ~Echo() override {
    Close();
    --*living_;
  }
  void* AllocBufferForRead(long& size) override {
    buffer_.resize(static_cast<std::size_t>(size));
    return buffer_.data();
  }
  void OnConnectOk(Kalvo_SocketAddr*, int) override {}
  int OnConnectFaild(Kalvo_SocketAddr*, int) override { return -1; }
  int OnDisConnect(Kalvo_SocketAddr*, int) override {
    delete this;
    return -1;
  }
  int OnDataOk(void* data, long length) override {
    SendData(static_cast<const char*>(data), static_cast<int>(length));
    return 0;
  }

 private:
  const std::shared_ptr<std::atomic<int>> living_;
  std::vector<char> buffer_;
};

class EchoServer : public Kalvo_TcpServerHandler {
 public:
  EchoServer() { Listen("127.0.0.1", 0); }
  ~EchoServer() override { Close(); }
  Kalvo_TcpClientHandler* OnAcceptClient(Kalvo_SocketAddr*) override {
    ++accepted;
    return new Echo(living_);
  }
  int port() { return GetLocalAddr()->GetPort(); }
  bool WaitUntilEmpty() {
    for (int i = 0; i < 30000 && living() > 0; ++i) usleep(1000);
    return living() == 0;
  }
  int living() const { return *living_; }

  std::atomic<int> accepted{0};

 private:
  // Some of them may live longer than the server.
  const std::shared_ptr<std::atomic<int>> living_ = std::make_shared<std::atomic<int>>(0);
};

// Connections that send from two threads, are closed at any moment and by either side, and come
// again.
TEST(EngineLoad, Storms) {
  EchoServer server;
  std::atomic<bool> over{false};
  std::vector<std::thread> threads;
  for (unsigned seed = 0; seed < 3; ++seed) {
    threads.emplace_back([&, seed] {
      std::mt19937 engine(seed);
      const std::string block(70000, static_cast<char>('a' + seed));
      while (!over) {
        std::mutex inside;  // one who closes itself is not waited for
        int rest = static_cast<int>(engine() % 20);
        Client client;
        client.onLost = [] { return 0; };
        client.onFailed = [] { return 0; };
        client.onData = [&](const char*, long) {
          const std::lock_guard<std::mutex> guard(inside);
          if (--rest == 0) client.Close();
          return rest < -10 ? -1 : 0;
        };
        client.Connect("127.0.0.1", server.port());
        std::thread other([&] {
          for (int i = 0; i < 30; ++i) {
            client.SendData(block.data(), static_cast<int>(1 + block.size() * i / 30));
            usleep(2000);
          }
        });
        for (int i = 0; i < 30; ++i) {
          client.Printf("%d", i);
          usleep(engine() % 4000);
        }
        other.join();
        client.Close();
        const std::lock_guard<std::mutex> guard(inside);
      }
    });
  }
  threads.emplace_back([&] {  // peers that are no better
    std::mt19937 engine(9);
    const std::string block(200000, 'z');
    while (!over) {
      const int peer = ConnectTo(server.port());
      send(peer, block.data(), 1 + engine() % block.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
      usleep(engine() % 2000);
      if (engine() % 2 == 0) {
        Reset(peer);
      } else {
        close(peer);
      }
    }
  });
  sleep(kSanitized ? 5 : 3);
  over = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(server.WaitUntilEmpty());
  EXPECT_GT(server.accepted, 100);

  Client last;
  last.Connect("127.0.0.1", server.port());
  ASSERT_TRUE(last.events.WaitForCount(1));
  last.SendData("still there", 11);
  EXPECT_TRUE(last.events.WaitForBytes(11));
}

// The server is closed and opened again while clients come.
TEST(EngineLoad, ServersComeAndGo) {
  for (int round = 0; round < 30; ++round) {
    auto server = std::make_unique<EchoServer>();
    const int port = server->port();
    std::atomic<bool> over{false};
    std::thread crowd([&] {
      while (!over) Reset(ConnectTo(port));
    });
    usleep(5000);
    server->Close();
    over = true;
    crowd.join();
    EXPECT_TRUE(server->WaitUntilEmpty());
  }
}

TEST(EngineLoad, OthersAreServedBesideAFloodAndADribble) {
  EchoServer server;
  std::atomic<bool> over{false};
  const int flooder = ConnectTo(server.port());
  const int dribbler = ConnectTo(server.port());
  std::thread flood([&] {
    std::string block(100000, 'f');
    while (!over) {
      send(flooder, block.data(), block.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
      recv(flooder, &block[0], block.size(), MSG_DONTWAIT);
    }
  });
  std::thread dribble([&] {
    while (!over) {
      send(dribbler, "d", 1, MSG_NOSIGNAL);
      char room[100];
      recv(dribbler, room, sizeof(room), MSG_DONTWAIT);
    }
  });
  Client client;
  client.Connect("127.0.0.1", server.port());
  ASSERT_TRUE(client.events.WaitForCount(1));
  const std::size_t trips = kSanitized ? 10 : 200;
  for (std::size_t i = 1; i <= trips; ++i) {
    ASSERT_EQ(client.SendData("x", 1), 1);
    ASSERT_TRUE(client.events.WaitForBytes(i));
  }
  over = true;
  flood.join();
  dribble.join();
  close(flooder);
  close(dribbler);
  EXPECT_TRUE(client.events.all().size() == 1);
}

TEST(EngineLoad, ConnectionsComeAndGoWithoutATrace) {
  const int cycles = kSanitized ? 3000 : 100000;
  EchoServer server;
  Kalvo_SocketAddr address;
  address.Init("127.0.0.1", server.port());
  int made = 0;
  const auto run = [&](int count) {
    made += count;
    for (int i = 0; i < count; ++i) {
      const int peer = Kalvo_SOCK_Connect(&address, -1);
      ASSERT_GE(peer, 0);
      Reset(peer);
      if (i % 100 == 0) {
        while (server.living() > 200) usleep(100);
      }
    }
    for (int i = 0; i < 30000 && server.accepted < made; ++i) usleep(1000);
    ASSERT_EQ(server.accepted, made);
    ASSERT_TRUE(server.WaitUntilEmpty());
  };
  run(1000);
  const long descriptors = support::OpenDescriptors();
  const auto before = mallinfo2().uordblks;
  run(cycles);
  EXPECT_EQ(support::OpenDescriptors(), descriptors);
  if (!kSanitized) {
    EXPECT_LT(mallinfo2().uordblks, before + 300000);
  }
}

TEST(EngineLoad, ACrowdOnOneListener) {
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  const int crowd =
      kSanitized ? 1000 : static_cast<int>(std::min<rlim_t>(10000, limit.rlim_cur - 500));
  // Forked before there are threads, which would leave the sanitizer's allocator locked.
  int tell[2];
  ASSERT_EQ(pipe(tell), 0);
  support::Child child([&](support::Child& self) {
    int port;
    if (read(tell[0], &port, sizeof(port)) != sizeof(port)) _exit(4);
    std::vector<int> sockets;
    for (int i = 0; i < crowd; ++i) sockets.push_back(ConnectTo(port));
    for (int round = 0; round < 2; ++round) {
      for (const int socket : sockets) {
        if (send(socket, &socket, sizeof(socket), 0) != sizeof(socket)) _exit(1);
      }
      for (const int socket : sockets) {
        int back = -1;
        if (recv(socket, &back, sizeof(back), MSG_WAITALL) != sizeof(back)) _exit(2);
        if (back != socket) _exit(3);
      }
    }
    self.Ready();
    self.WaitForTheEnd();
  });
  EchoServer server;
  const int port = server.port();
  Client warm;
  warm.Connect("127.0.0.1", port);
  ASSERT_TRUE(warm.events.WaitForCount(1));
  const auto before = mallinfo2().uordblks;
  ASSERT_EQ(write(tell[1], &port, sizeof(port)), static_cast<ssize_t>(sizeof(port)));
  child.WaitUntilReady();
  EXPECT_EQ(server.living(), crowd + 1);
  if (!kSanitized) {
    EXPECT_LT((mallinfo2().uordblks - before) / static_cast<std::size_t>(crowd), 4608u);
  }
  child.Kill();
  warm.Close();
  EXPECT_TRUE(server.WaitUntilEmpty());
  for (const int end : tell) close(end);
}

TEST(EngineLoad, WithoutDescriptors) {
  support::Channel channel;
  EchoServer server;
  Client before;
  before.Connect("127.0.0.1", server.port());
  ASSERT_TRUE(before.events.WaitForCount(1));
  std::vector<int> peers;  // made beforehand
  for (int i = 0; i < 5; ++i) peers.push_back(socket(AF_INET, SOCK_STREAM, 0));
  ASSERT_TRUE(before.SendData("a", 1) == 1 && before.events.WaitForBytes(1));

  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  rlimit none = limit;
  none.rlim_cur = static_cast<rlim_t>(peers.back()) + 3;
  setrlimit(RLIMIT_NOFILE, &none);
  std::vector<int> held;
  for (int number; (number = dup(0)) >= 0;) held.push_back(number);

  Client client;
  client.Connect("127.0.0.1", server.port());
  ASSERT_TRUE(client.events.WaitForCount(1));
  EXPECT_EQ(client.events.all()[0], "failed 10024");
  for (const int peer : peers) {
    connect(peer, server.GetLocalAddr()->GetInfo()->ai_addr, 16);
  }
  const clock_t busy = clock();
  usleep(300000);
  EXPECT_LT(clock() - busy, CLOCKS_PER_SEC / 10);
  EXPECT_EQ(server.living(), 1);
  EXPECT_EQ(before.SendData("works", 5), 5);
  EXPECT_TRUE(before.events.WaitForBytes(6));

  for (const int number : held) close(number);
  setrlimit(RLIMIT_NOFILE, &limit);
  for (const int peer : peers) {
    send(peer, "a", 1, 0);
    char back;
    EXPECT_EQ(recv(peer, &back, 1, 0), 1);
    close(peer);
  }
  before.Close();
  EXPECT_TRUE(server.WaitUntilEmpty());
  EXPECT_EQ(channel.Logged("fatal").size(), 1u);
}

// 64 connects are under way at a time, and those that were closed make room.
TEST(EngineLoad, ConnectsWaitForASlot) {
  support::DeafListener deaf;
  std::vector<std::unique_ptr<Client>> silent;
  for (int i = 0; i < 64; ++i) {
    silent.push_back(std::make_unique<Client>());
    silent.back()->Connect("127.0.0.1", deaf.port());
  }
  usleep(300000);
  EchoServer server;
  Client client;
  client.Connect("127.0.0.1", server.port());
  EXPECT_FALSE(client.events.WaitForCount(1, std::chrono::milliseconds(500)));
  silent.erase(silent.begin() + 10);
  EXPECT_TRUE(client.events.WaitForCount(1));
  EXPECT_EQ(client.events.all()[0], "ok 1");
}

}  // namespace
