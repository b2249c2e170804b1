// How connections come and go, as the handlers are told.

#include "kalvobase/handler.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "kalvobase/process.h"
#include "kalvobase/text.h"
#include "support/channel.h"
#include "support/handlers.h"
#include "support/sockets.h"
#include "support/stopwatch.h"

namespace {

using support::Channel;
using support::Client;
using support::Listener;
using support::Server;
using Words = std::vector<std::string>;

constexpr std::chrono::milliseconds kQuiet{400};

// A port of this machine on which nobody listens.
int ClosedPort() {
  Listener listener;
  return listener.port();
}

TEST(Handler, WithoutAConnection) {
  Client client;
  EXPECT_EQ(client.Connect(nullptr, 80), 0u);
  EXPECT_EQ(client.SendData("a", 1), -1);
  EXPECT_EQ(client.Printf("%d", 1), -1);
  Kalvo_String* text = new Kalvo_String("a");
  EXPECT_EQ(client.SendData(text), -1);
  delete text;
  client.Close();
  EXPECT_EQ(client.SetManager(nullptr), 1);
  EXPECT_EQ(client.Kalvo_TcpClientHandler::OnConnectFaild(nullptr, 1), -1);
  EXPECT_EQ(client.Kalvo_TcpClientHandler::OnDisConnect(nullptr, 1), -1);
  EXPECT_EQ(client.Kalvo_TcpClientHandler::OnDataOk(nullptr, 1), 0);
}

TEST(Handler, ConnectsAndIsAccepted) {
  Server server;
  ASSERT_NE(server.id, 0u);
  EXPECT_EQ(server.Listen("127.0.0.1", 0), 0u);
  Client client;
  const unsigned long id = client.Connect("127.0.0.1", server.port());
  EXPECT_NE(id, 0u);
  EXPECT_EQ(client.Connect("127.0.0.1", server.port()), 0u);
  client.InitLocal("127.0.0.1", 1);  // too late
  ASSERT_TRUE(client.events.WaitForCount(1));
  EXPECT_EQ(client.events.all(), Words{"ok 1"});
  Client* const accepted = server.first();
  ASSERT_TRUE(accepted->events.WaitForCount(1));
  EXPECT_EQ(accepted->events.all(), Words{"ok 0"});
  EXPECT_EQ(client.GetPeerAddr()->GetPort(), server.port());
  EXPECT_TRUE(*client.GetLocalAddr() == *accepted->GetPeerAddr());
  EXPECT_TRUE(*client.GetPeerAddr() == *accepted->GetLocalAddr());

  EXPECT_EQ(client.Printf("%s-%d", "a", 5), 3);
  ASSERT_TRUE(accepted->events.WaitForBytes(3));
  EXPECT_EQ(accepted->events.bytes(), "a-5");

  // The server may go first. Who closes hears nothing.
  server.Close();
  EXPECT_EQ(accepted->SendData("b", 1), 1);
  ASSERT_TRUE(client.events.WaitForBytes(1));
  client.Close();
  client.Close();
  EXPECT_EQ(client.SendData("c", 1), -1);
  ASSERT_TRUE(accepted->events.WaitForCount(2));
  EXPECT_EQ(accepted->events.all(), (Words{"ok 0", "lost 0"}));
  EXPECT_EQ(accepted->SendData("d", 1), 0);
  EXPECT_EQ(client.events.all(), Words{"ok 1"});
  EXPECT_NE(server.Listen("127.0.0.1", 0), 0u);
}

TEST(Handler, TriesAgainAsItIsTold) {
  const int port = ClosedPort();
  Client once;
  once.Connect("127.0.0.1", port);
  Client again;
  std::atomic<int> tries{0};
  again.onFailed = [&] { return ++tries < 3 ? 300 : -1; };
  const support::Stopwatch watch;
  const unsigned long id = again.Connect("127.0.0.1", port);
  ASSERT_TRUE(again.events.WaitForCount(3));
  EXPECT_GE(watch.Milliseconds(), 550);
  EXPECT_FALSE(again.events.WaitForCount(4, kQuiet));
  EXPECT_EQ(again.events.all(), Words(3, "failed 10061"));
  EXPECT_EQ(once.events.all(), Words{"failed 10061"});

  // The stale id stays until Close.
  EXPECT_EQ(again.Connect("127.0.0.1", port), 0u);
  EXPECT_EQ(again.SendData("a", 1), 0);
  again.Close();
  again.onFailed = nullptr;
  EXPECT_NE(again.Connect("127.0.0.1", port), id);
  EXPECT_TRUE(again.events.WaitForCount(4));
}

TEST(Handler, TriesAgainAfterALoss) {
  Listener listener;
  Client client;
  client.onLost = [] { return 0; };
  const unsigned long id = client.Connect("127.0.0.1", listener.port());
  for (int i = 0; i < 3; ++i) {
    const int peer = listener.Accept();
    const std::string text = "again " + std::to_string(i);
    ASSERT_TRUE(client.events.Wait(
        [=](const auto& events, const auto&) { return events.size() == 2u * i + 1; }));
    EXPECT_EQ(client.SendData(text.data(), static_cast<int>(text.size())),
              static_cast<int>(text.size()));
    char room[100] = {};
    EXPECT_EQ(recv(peer, room, sizeof(room), 0), static_cast<ssize_t>(text.size()));
    EXPECT_EQ(room, text);
    close(peer);
    ASSERT_TRUE(client.events.WaitForCount(2u * i + 2));
  }
  EXPECT_EQ(client.Connect("127.0.0.1", listener.port()), 0u);
  EXPECT_NE(id, 0u);
  client.Close();
  const std::size_t count = client.events.all().size();
  EXPECT_FALSE(client.events.WaitForCount(count + 1, kQuiet));
}

TEST(Handler, EndsForGoodWhenItCannotBind) {
  Channel channel;
  Client client;
  client.onFailed = [] { return 0; };
  client.InitLocal("192.0.2.77", 0);  // nobody's
  client.Connect("127.0.0.1", ClosedPort());
  ASSERT_TRUE(client.events.WaitForCount(1));
  EXPECT_FALSE(client.events.WaitForCount(2, kQuiet));
  EXPECT_EQ(client.events.all(), Words{"failed 10049"});
  EXPECT_EQ(channel.Logged("fatal"),
            Words{"-4097 <error> fatal error[10049], never connnect again1"});

  Server server;
  Client bound;
  bound.InitLocal("127.0.0.3", 0);
  bound.Connect("127.0.0.1", server.port());
  EXPECT_STREQ(server.first()->GetPeerAddr()->GetAddr(), "127.0.0.3");
}

TEST(Handler, MayDoAnythingInACall) {
  Server server;
  // Closing and connecting again keeps the new connection.
  Client client;
  std::atomic<int> oks{0};
  client.onOk = [&] {
    if (++oks > 3) return;
    client.Close();
    EXPECT_NE(client.Connect("127.0.0.1", server.port()), 0u);
  };
  client.Connect("127.0.0.1", server.port());
  ASSERT_TRUE(client.events.WaitForCount(4));
  Client* const last = server.At(3);
  client.SendData("here", 4);
  EXPECT_TRUE(last->events.WaitForBytes(4));

  // The same in the calls that tell of an end, whose results say no more.
  Client lost;
  const int port = ClosedPort();
  lost.onFailed = [&] {
    lost.Close();
    lost.Connect("127.0.0.1", server.port());
    return -1;
  };
  lost.Connect("127.0.0.1", port);
  ASSERT_TRUE(lost.events.WaitForCount(2));
  EXPECT_EQ(lost.events.all(), (Words{"failed 10061", "ok 1"}));

  // Destroying itself.
  struct Suicide : Client {
    explicit Suicide(support::Events* told) : told_(told) {}
    ~Suicide() override { Close(); }
    void OnConnectOk(Kalvo_SocketAddr*, int) override { End(); }
    int OnConnectFaild(Kalvo_SocketAddr*, int) override { return End(); }
    int End() {
      told_->Add("end");
      delete this;
      return 0;
    }
    support::Events* told_;
  };
  support::Events told;
  for (int i = 0; i < 20; ++i) {
    (new Suicide(&told))->Connect("127.0.0.1", i % 2 == 0 ? server.port() : port);
  }
  EXPECT_TRUE(told.WaitForCount(20));
}

Client* forwarding = nullptr;

// A host whose log function sends what it is told.
TEST(Handler, MaySendWhatIsLogged) {
  Server server;
  Client client;
  forwarding = &client;
  SetKalvo_KernelDebugLogFunction(
      [](int, const char* format, va_list) { forwarding->SendData(format, 10); });
  client.Connect("127.0.0.1", server.port());
  EXPECT_EQ(client.SendData("early", 5), 5);
  ASSERT_TRUE(client.events.WaitForCount(1));
  server.first()->Close();
  EXPECT_TRUE(client.events.WaitForCount(2));
  for (int i = 0; i < 5; ++i) client.SendData("late", 4);
  ResetKalvo_KernelDebugLogFunction();
}

TEST(Handler, NothingIsCalledAfterClose) {
  Server server([](Client* client) { client->onOk = [client] { client->SendData("hello", 5); }; });
  for (int i = 0; i < 20; ++i) {
    std::atomic<bool> inside{false};
    std::atomic<bool> closed{false};
    std::atomic<bool> late{false};
    Client client;
    client.onData = [&](const char*, long) {
      inside = true;
      usleep(20000);
      if (closed) late = true;
      return 0;
    };
    client.Connect("127.0.0.1", server.port());
    while (!inside) usleep(100);
    client.Close();  // waits for the call
    closed = true;
    ASSERT_EQ(client.events.bytes(), "hello");
    ASSERT_FALSE(late);
  }
}

TEST(Handler, ClosesWhileItWaitsOrConnects) {
  Client waiting;
  waiting.onFailed = [] { return 200; };
  waiting.Connect("127.0.0.1", ClosedPort());
  ASSERT_TRUE(waiting.events.WaitForCount(1));
  waiting.Close();
  support::DeafListener deaf;
  Client connecting;
  connecting.Connect("127.0.0.1", deaf.port());
  usleep(250000);
  connecting.Close();
  EXPECT_FALSE(waiting.events.WaitForCount(2, kQuiet));
  EXPECT_TRUE(connecting.events.all().empty());
}

TEST(Handler, RefusesClients) {
  Channel channel;
  Server server;
  std::atomic<int> asked{0};
  server.onAccept = [&]() -> bool {
    if (++asked % 2 == 0) throw std::runtime_error("refused");
    return false;
  };
  for (int i = 0; i < 1000; ++i) {
    const int peer = support::ConnectTo(server.port());
    char byte;
    ASSERT_LE(recv(peer, &byte, 1, 0), 0);
    close(peer);
  }
  EXPECT_EQ(asked, 1000);
  server.onAccept = nullptr;
  Client client;
  client.Connect("127.0.0.1", server.port());
  EXPECT_TRUE(client.events.WaitForCount(1));
  EXPECT_TRUE(channel.Logged("accept").empty());
}

TEST(Handler, ThrowingIsToldAndHarmless) {
  Channel channel;
  Server server([](Client* client) {
    client->onOk = [] { throw 1; };
    client->onData = [](const char*, long) -> int { throw 2; };
  });
  Client client;
  client.onOk = [] { throw 3; };
  client.onLost = []() -> int { throw 4; };
  client.Connect("127.0.0.1", server.port());
  Client* const accepted = server.first();
  ASSERT_TRUE(client.events.WaitForCount(1));
  for (int i = 1; i <= 2; ++i) {
    client.SendData("abc", 3);
    ASSERT_TRUE(accepted->events.WaitForBytes(3u * i));
  }
  const int port = accepted->GetPeerAddr()->GetPort();
  accepted->Close();
  ASSERT_TRUE(client.events.WaitForCount(2));
  EXPECT_FALSE(client.events.WaitForCount(3, kQuiet));
  const auto logged = channel.Logged("<error>");
  EXPECT_EQ(std::count(logged.begin(), logged.end(), "-4097 <error> process OnConnectOk error!!!!"),
            2);
  EXPECT_EQ(std::count(logged.begin(), logged.end(),
                       "-4097 <error> data process fatal error!!remote addr[127.0.0.1:" +
                           std::to_string(port) + "]"),
            2);
}

TEST(Handler, ListensWhereItCan) {
  Channel channel;
  Server server;
  struct Quiet : Server {
    using Server::Server;
  } other;
  other.Close();
  EXPECT_EQ(other.Listen("127.0.0.1", server.port()), 0u);
  EXPECT_EQ(channel.Logged("bind"), Words{"-4097 <error> server bind error [10048]!!!"});
  EXPECT_EQ(other.Listen("::1", 0), 0u);
  EXPECT_EQ(other.Listen("no.such.host.invalid", 0), 0u);
  EXPECT_NE(other.Listen("", 0), 0u);
  EXPECT_STREQ(other.GetLocalAddr()->GetAddr(), "0.0.0.0");
  Client client;
  client.Connect("127.0.0.2", other.port());
  EXPECT_STREQ(other.first()->GetLocalAddr()->GetAddr(), "127.0.0.2");

  // A server's end does not keep the next from its port.
  const int port = server.port();
  Client lingering;
  lingering.Connect("127.0.0.1", port);
  server.first()->Close();
  server.Close();
  EXPECT_NE(server.Listen("127.0.0.1", port), 0u);
}

// A server returns one handler for many clients.
TEST(Handler, OneServesManyClients) {
  struct One : Kalvo_TcpServerHandler {
    One() { Listen("127.0.0.1", 0); }
    ~One() override { Close(); }
    Kalvo_TcpClientHandler* OnAcceptClient(Kalvo_SocketAddr*) override { return client.get(); }
    std::unique_ptr<Client> client = std::make_unique<Client>();
  };
  constexpr std::size_t kClients = 14;
  One server;
  Client* const one = server.client.get();
  std::string ended;
  one->onPeer = [&ended](Kalvo_SocketAddr* peer) {
    ended += std::to_string(peer->GetPort()) + " ";
  };
  std::vector<std::unique_ptr<Client>> clients;
  for (std::size_t i = 1; i <= kClients; ++i) {
    clients.push_back(std::make_unique<Client>());
    clients.back()->Connect("127.0.0.1", server.GetLocalAddr()->GetPort());
    ASSERT_TRUE(clients.back()->events.WaitForCount(1));
    ASSERT_TRUE(one->events.WaitForCount(i));
  }
  for (std::size_t i = 0; i < kClients; ++i) {
    clients[i]->SendData("x", 1);
    ASSERT_TRUE(one->events.WaitForBytes(i + 1));
  }
  EXPECT_EQ(one->GetPeerAddr()->GetPort(), clients.back()->GetLocalAddr()->GetPort());
  one->SendData("to the last", 11);
  EXPECT_TRUE(clients.back()->events.WaitForBytes(11));
  // Each end is reported with its peer.
  std::string expected;
  for (const std::size_t i : {std::size_t{0}, std::size_t{7}, kClients - 1}) {
    expected += std::to_string(clients[i]->GetLocalAddr()->GetPort()) + " ";
    const std::size_t before = one->events.all().size();
    clients[i]->Close();
    ASSERT_TRUE(one->events.WaitForCount(before + 1));
  }
  EXPECT_EQ(ended, expected);
  // Its end ends all the others, without a call.
  server.Close();
  server.client.reset();
  for (std::size_t i = 0; i < kClients; ++i) {
    if (i == 0 || i == 7 || i == kClients - 1) continue;
    ASSERT_TRUE(clients[i]->events.WaitForCount(2)) << i;
    EXPECT_EQ(clients[i]->events.all().back(), "lost 0");
  }
}

// A handler that two servers return serves the first client, and no other thread calls it.
TEST(Handler, RefusesClientsOfAnotherServer) {
  Client one;
  struct Returning : Kalvo_TcpServerHandler {
    explicit Returning(Client* client) : client_(client) { Listen("127.0.0.1", 0); }
    ~Returning() override { Close(); }
    Kalvo_TcpClientHandler* OnAcceptClient(Kalvo_SocketAddr*) override { return client_; }
    Client* const client_;
  };
  Returning first(&one);
  Returning second(&one);
  Channel channel;
  Client client;
  client.Connect("127.0.0.1", first.GetLocalAddr()->GetPort());
  ASSERT_TRUE(one.events.WaitForCount(1));
  Client refused;
  refused.Connect("127.0.0.1", second.GetLocalAddr()->GetPort());
  ASSERT_TRUE(refused.events.WaitForCount(2));
  client.SendData("goes on", 7);
  EXPECT_TRUE(one.events.WaitForBytes(7));
  EXPECT_EQ(channel.Logged("accepted handler").size(), 1u);
  // When the first has ended the handler is free for the other.
  client.Close();
  ASSERT_TRUE(one.events.WaitForCount(2));
  client.Connect("127.0.0.1", second.GetLocalAddr()->GetPort());
  ASSERT_TRUE(one.events.WaitForCount(3));
  EXPECT_EQ(one.events.all(), (Words{"ok 0", "lost 0", "ok 0"}));
  first.Close();
  second.Close();
  one.Close();
}

// Locks of the library are taken in one order, by a fork, too.
TEST(Handler, EnginesAreMadeWhileTheProcessForks) {
  std::atomic<bool> done{false};
  std::thread maker([&done] {
    std::vector<std::unique_ptr<Server>> servers;
    for (int i = 0; i < 15; ++i) servers.push_back(std::make_unique<Server>());
    done = true;
  });
  while (!done) {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
  }
  maker.join();
}

TEST(Handler, IsNotConnectedToItself) {
  const int port = support::Listener().port();
  Client client;
  client.InitLocal("127.0.0.1", port);
  client.Connect("127.0.0.1", port);
  ASSERT_TRUE(client.events.WaitForCount(1));
  EXPECT_EQ(client.events.all(), Words{"failed 10061"});
}

// What a host brings itself.
TEST(Handler, WorksWithAnEngineOfTheHost) {
  struct Engine : Kalvo_SocketManagerHelper {
    unsigned long Connect(Kalvo_TcpClientHandler*) override { return 0x80000001; }
    unsigned long Listen(Kalvo_TcpServerHandler*) override { return 0; }
    unsigned long OpenUdp(Kalvo_UdpHandler*, bool) override { return 0; }
    void Close(unsigned long id) override { closed = id; }
    int Send(unsigned long id, Kalvo_String*& data) override {
      if (refuse) return 0;
      sent += std::to_string(id) + data->c_str();
      delete data;
      data = nullptr;
      return 1;
    }
    void StopThreads() override {}
    bool GetBusy() override { return false; }
    void SetBusy(bool) override {}
    int GetKind() override { return 1; }
    void SetKind(int) override {}
    std::string sent;
    unsigned long closed = 0;
    bool refuse = false;
  } engine;
  Client client;
  client.SetManager(&engine);
  EXPECT_EQ(client.Connect("127.0.0.1", 1), 0x80000001u);
  EXPECT_EQ(client.SendData("abc", 3), 3);
  EXPECT_EQ(client.Printf("%d", 7), 1);
  EXPECT_EQ(engine.sent, "2147483649abc21474836497");
  engine.refuse = true;
  EXPECT_EQ(client.SendData("abc", 3), 0);
  client.Close();
  EXPECT_EQ(engine.closed, 0x80000001u);
}

}  // namespace
