// Addresses and plain socket calls.

#include "kalvobase/socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>

#include <cerrno>
#include <climits>
#include <string>
#include <thread>
#include <vector>

#include "kalvobase/text.h"
#include "net/socket_calls.h"
#include "support/folder.h"
#include "support/sockets.h"
#include "support/stopwatch.h"

namespace {

using support::Listener;

TEST(SocketAddr, Resolving) {
  Kalvo_SocketAddr empty;
  EXPECT_EQ(empty.GetInfo(), nullptr);
  EXPECT_EQ(empty.Init(nullptr, 8000), 1);
  empty.Reset();
  EXPECT_STREQ(empty.GetAddr(), "");
  EXPECT_EQ(empty.GetPort(), 0);
  EXPECT_EQ(empty.IsSameAddr("127.0.0.1"), 0);
  EXPECT_EQ(empty == Kalvo_SocketAddr(), 0);
  empty.ReInit();

  struct Case {
    const char* host;
    int port;
    const char* text;
    int expectedPort;
  };
  for (const Case& c : {Case{nullptr, 8000, "0.0.0.0", 8000}, Case{"", 8000, "0.0.0.0", 8000},
                        Case{"127.0.0.1", 65616, "127.0.0.1", 80},
                        Case{"no such host.invalid", -1, "255.255.255.255", 65535},
                        Case{"10.1.2.3", 0, "10.1.2.3", 0}, Case{"::1", 443, "", 443}}) {
    Kalvo_SocketAddr address;
    EXPECT_EQ(address.Init(c.host, c.port), 1);
    EXPECT_STREQ(address.GetAddr(), c.text);
    EXPECT_EQ(address.GetPort(), c.expectedPort);
    const addrinfo* info = address.GetInfo();
    EXPECT_EQ(info->ai_family, *c.text != '\0' ? AF_INET : AF_INET6);
    EXPECT_EQ(info->ai_addrlen, *c.text != '\0' ? 16u : 24u);
    EXPECT_EQ(info->ai_next, nullptr);
    EXPECT_EQ(info->ai_canonname, nullptr);
    EXPECT_EQ(info->ai_socktype, 0);
    EXPECT_EQ(address.IsSameAddr(c.host), c.host != nullptr ? 1 : 0);
    EXPECT_EQ(address.IsSameAddr("/etc"), 0);
    EXPECT_EQ(address.IsSameAddr("192.0.2.1"), 0);
    Kalvo_SocketAddr copy(address);
    EXPECT_EQ(copy == address, 1);
    Kalvo_SocketAddr other;
    other.Init(c.host, c.port + 1);
    EXPECT_EQ(other == address, 0);
    other = copy;
    copy.Reset();
    EXPECT_EQ(other == address, 1);
    EXPECT_EQ(copy == address, 0);
    other = *&other;
    EXPECT_EQ(other == address, 1);
  }
}

TEST(SocketAddr, RawBytes) {
  sockaddr_in raw = {};
  raw.sin_family = AF_INET;
  raw.sin_port = htons(1234);
  raw.sin_addr.s_addr = htonl(0x01020304);
  Kalvo_SocketAddr address;
  EXPECT_EQ(address.Init(reinterpret_cast<sockaddr*>(&raw), sizeof(raw)), 1);
  EXPECT_STREQ(address.GetAddr(), "1.2.3.4");
  reinterpret_cast<sockaddr_in*>(address.GetInfo()->ai_addr)->sin_port = htons(99);
  EXPECT_EQ(address.GetPort(), 1234);
  address.ReInit();
  EXPECT_EQ(address.GetPort(), 99);
  for (const int length : {-5, 0, 1, 3, 6}) {
    EXPECT_EQ(address.Init(reinterpret_cast<sockaddr*>(&raw), length), 1);
    EXPECT_EQ(address.GetInfo()->ai_family, length < 2 ? length == 1 ? AF_INET : 0 : AF_INET);
  }
  EXPECT_EQ(address.Init(static_cast<sockaddr*>(nullptr), 16), 1);
  address.Init("127.0.0.1", 7);
  EXPECT_EQ(address.Init(address.GetInfo()->ai_addr, 16), 1);
  EXPECT_STREQ(address.GetAddr(), "127.0.0.1");
  EXPECT_EQ(address.Init(address.GetAddr(), 8), 1);
  EXPECT_EQ(address.GetPort(), 8);
}

TEST(Socket, ErrorsHaveTheNumbersOfWinsock) {
  for (const int code : {INT_MIN, INT_MAX, -1 - (1 << 24), 1 << 24}) {
    Kalvo_SOCK_SetLastError(code);
    EXPECT_EQ(Kalvo_SOCK_GetLastError(), code);
  }
  for (int code = -3; code < 200; ++code) {
    Kalvo_SOCK_SetLastError(code);
    ASSERT_EQ(Kalvo_SOCK_GetLastError(), code);
  }
  for (int code = 9990; code < 10120; ++code) {
    Kalvo_SOCK_SetLastError(code);
    ASSERT_EQ(Kalvo_SOCK_GetLastError(), code);
  }
  Kalvo_SocketAddr address;
  {
    Listener listener;
    address = listener.address;
    EXPECT_EQ(Kalvo_SOCK_OpenTcpForAddr(&address, 1), -1);
    EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10048);
  }
  EXPECT_EQ(Kalvo_SOCK_Connect(&address, -1), -1);
  EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10061);
  EXPECT_EQ(net::TryConnect(&MP_SocketAddr::Of(address), -1), -1);
  EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10038);
  const int trying = Kalvo_SOCK_OpenTcpForAddr(&address, 0);
  Kalvo_Sock_Opt_Block(trying, 0);
  if (net::TryConnect(&MP_SocketAddr::Of(address), trying) == 0) {  // it may be refused at once
    EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10035);
    EXPECT_GE(Kalvo_SOCK_Wait(trying, 5000, 1), 1);
    EXPECT_EQ(net::TryConnect(&MP_SocketAddr::Of(address), trying), -1);
  }
  EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10061);
  Kalvo_SOCK_Close(trying);
  const int sock = Kalvo_SOCK_OpenTcpForAddr(&address, 0);
  EXPECT_EQ(Kalvo_SOCK_Connect(&address, sock), -1);
  EXPECT_EQ(Kalvo_SOCK_Write(sock, "x", 1), -1);
  EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10054);
  EXPECT_EQ(Kalvo_SOCK_Close(sock), 0);
  EXPECT_EQ(Kalvo_SOCK_Close(sock), -1);
  EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10038);
  EXPECT_EQ(Kalvo_SOCK_Close(-7), -7);
  Kalvo_SocketAddr elsewhere;
  elsewhere.Init("192.0.2.1", 0);
  EXPECT_EQ(Kalvo_SOCK_OpenUdpForAddr(&elsewhere, 1), -1);
  EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10049);
}

TEST(Socket, ConnectReadWriteWait) {
  for (const char* host : {"127.0.0.1", "::1"}) {
    Listener listener(host);
    ASSERT_GE(listener.socket(), 0) << host;
    const int client = Kalvo_SOCK_Connect(&listener.address, -1);
    ASSERT_GE(client, 0);
    EXPECT_NE(fcntl(client, F_GETFD) & FD_CLOEXEC, 0);
    const int server = listener.Accept();
    const support::Stopwatch watch;
    EXPECT_EQ(Kalvo_SOCK_Wait(client, 1500, 0), 0);
    EXPECT_GE(watch.Milliseconds(), 1500);
    EXPECT_EQ(Kalvo_SOCK_Wait(client, 0, 0), 0);
    EXPECT_EQ(Kalvo_SOCK_Wait(client, -1, 1), 1);
    EXPECT_EQ(Kalvo_SOCK_Write(server, "hello", 5), 5);
    EXPECT_EQ(Kalvo_SOCK_Write(server, "hello", -1), -1);
    EXPECT_EQ(Kalvo_SOCK_Wait(client, -1, 0), 1);
    Kalvo_String into("what was there");
    EXPECT_EQ(Kalvo_SOCK_Read(client, &into, 3), 3);
    EXPECT_STREQ(into.c_str(), "hel");
    EXPECT_EQ(Kalvo_SOCK_Read(client, &into, 100), 2);
    EXPECT_STREQ(into.c_str(), "lo");
    EXPECT_EQ(Kalvo_SOCK_Read(client, &into, 0), 0);
    EXPECT_EQ(into.length(), 0u);
    EXPECT_EQ(Kalvo_Sock_Opt_Block(client, 0), 1);
    EXPECT_EQ(Kalvo_SOCK_Read(client, &into, 10), -1);
    EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10035);
    EXPECT_EQ(into.length(), 10u);
    EXPECT_EQ(Kalvo_SOCK_Read(client, &into, -1), -1);
    EXPECT_EQ(Kalvo_Sock_Opt_Block(client, 1), 1);
    EXPECT_EQ(send(server, "!", 1, MSG_OOB), 1);
    EXPECT_EQ(Kalvo_SOCK_Wait(client, 5000, 5), 1);
    EXPECT_EQ(Kalvo_SOCK_Wait(client, 5000, 1), 2);  // urgent data, and room to write
    close(server);
    EXPECT_EQ(Kalvo_SOCK_Read(client, &into, 10), 0);
    EXPECT_EQ(into.length(), 0u);
    EXPECT_EQ(net::TryConnect(&MP_SocketAddr::Of(listener.address), client), 1);
    EXPECT_EQ(Kalvo_SOCK_Close(client), 0);
  }
}

TEST(Socket, Options) {
  Listener listener;
  const auto option = [&listener](int level, int name) {
    int value = -1;
    socklen_t size = sizeof(value);
    getsockopt(listener.socket(), level, name, &value, &size);
    return value;
  };
  EXPECT_EQ(option(SOL_SOCKET, SO_REUSEADDR), 1);  // from the bind
  EXPECT_EQ(Kalvo_Sock_Opt_Reuse(listener.socket(), 0), 0);
  EXPECT_EQ(option(SOL_SOCKET, SO_REUSEADDR), 0);
  EXPECT_EQ(Kalvo_Sock_Opt_NoDelay(listener.socket(), 1), 0);
  EXPECT_NE(option(IPPROTO_TCP, TCP_NODELAY), 0);
  Kalvo_SocketAddr any;
  any.Init("127.0.0.1", 0);
  const int udp = Kalvo_SOCK_OpenUdpForAddr(&any, 1);
  EXPECT_EQ(Kalvo_Sock_Opt_BroadCast(udp, 1), 0);
  Kalvo_SOCK_Close(udp);
  EXPECT_EQ(Kalvo_Sock_Opt_BroadCast(udp, 1), -1);
  EXPECT_EQ(Kalvo_Sock_Opt_Block(udp, 0), 0);
  Kalvo_Sock_Opt_AllError();
  Kalvo_SOCK_Init();
}

TEST(Socket, Datagrams) {
  Kalvo_SocketAddr address;
  address.Init("127.0.0.1", 0);
  const int a = Kalvo_SOCK_OpenUdpForAddr(&address, 1);
  const int b = Kalvo_SOCK_OpenUdpForAddr(&address, 1);
  Kalvo_SocketAddr ofA = address;
  getsockname(a, ofA.GetInfo()->ai_addr, &ofA.GetInfo()->ai_addrlen);
  ofA.ReInit();
  const std::string largest(65507, 'u');
  Kalvo_String into;
  Kalvo_SocketAddr from;
  EXPECT_EQ(Kalvo_SOCK_RecvFrom(a, &into, &from), -1);  // it has no room yet
  from.Init("::1", 0);
  ASSERT_EQ(Kalvo_SOCK_Send(b, &ofA, largest.c_str(), 65507), 65507);
  ASSERT_EQ(Kalvo_SOCK_Send(b, &ofA, "", 0), 0);
  EXPECT_EQ(Kalvo_SOCK_RecvFrom(a, &into, &from), 65507);
  EXPECT_EQ(into.length(), 65507u);
  EXPECT_STREQ(from.GetAddr(), "127.0.0.1");  // whatever it was made for
  EXPECT_EQ(Kalvo_SOCK_RecvFrom(a, &into, &from), 0);
  EXPECT_EQ(into.length(), 0u);
  EXPECT_STREQ(from.GetAddr(), "127.0.0.1");
  EXPECT_NE(from.GetPort(), 0);
  EXPECT_EQ(Kalvo_SOCK_Send(a, &from, "back", 4), 4);
  EXPECT_EQ(Kalvo_SOCK_Wait(b, 5000, 0), 1);
  EXPECT_EQ(Kalvo_SOCK_Read(b, &into, 3), -1);  // it is larger
  EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10040);
  EXPECT_STREQ(into.c_str(), "bac");
  EXPECT_EQ(Kalvo_SOCK_Read(b, &into, 0), 0);  // nothing waits
  for (Kalvo_SocketAddr* none : {static_cast<Kalvo_SocketAddr*>(nullptr), new Kalvo_SocketAddr}) {
    EXPECT_EQ(Kalvo_SOCK_Send(a, none, "x", 1), -1);
    EXPECT_EQ(Kalvo_SOCK_OpenUdpForAddr(none, 1), -1);
    EXPECT_EQ(Kalvo_SOCK_OpenTcpForAddr(none, 0), -1);
    EXPECT_EQ(Kalvo_SOCK_Connect(none, -1), -1);
    EXPECT_EQ(Kalvo_GetRoutingInf(none, &from), 0);
    delete none;
  }
  Kalvo_SOCK_Close(a);
  Kalvo_SOCK_Close(b);

  Kalvo_SocketAddr nowhere;
  nowhere.Init("255.255.255.255", 9);
  EXPECT_EQ(Kalvo_GetRoutingInf(&nowhere, &from), 1);
  EXPECT_STREQ(from.GetAddr(), "255.255.255.255");
  EXPECT_EQ(from.GetPort(), 0);
  for (const char* host : {"127.0.0.1", "::1"}) {
    Kalvo_SocketAddr to;
    to.Init(host, 9);
    Kalvo_SocketAddr local;
    EXPECT_EQ(Kalvo_GetRoutingInf(&to, &local), 1);
    EXPECT_EQ(local.IsSameAddr(host), 1);
    EXPECT_NE(local.GetPort(), 9);
  }
}

void OnSignal(int) {}

// Waiting works on any number of descriptor, and goes on after signals with the time that is
// left.
TEST(Socket, Waiting) {
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
  setrlimit(RLIMIT_NOFILE, &limit);
  Listener listener;
  const int high = fcntl(listener.socket(), F_DUPFD_CLOEXEC, 2000);
  ASSERT_GE(high, 2000);
  EXPECT_EQ(Kalvo_SOCK_Wait(high, 10, 0), 0);
  const int client = Kalvo_SOCK_Connect(&listener.address, -1);
  EXPECT_EQ(Kalvo_SOCK_Wait(high, -1, 0), 1);
  close(high);
  EXPECT_EQ(Kalvo_SOCK_Wait(high, 10, 0), -1);
  EXPECT_EQ(Kalvo_SOCK_GetLastError(), 10038);
  EXPECT_EQ(Kalvo_SOCK_Wait(-1, 10, 0), -1);

  struct sigaction action = {};
  action.sa_handler = OnSignal;
  sigaction(SIGUSR1, &action, nullptr);
  const pthread_t self = pthread_self();
  std::thread nuisance([self] {
    for (int i = 0; i < 20; ++i) {
      usleep(5000);
      pthread_kill(self, SIGUSR1);
    }
  });
  const support::Stopwatch watch;
  EXPECT_EQ(Kalvo_SOCK_Wait(client, 300, 0), 0);
  EXPECT_GE(watch.Milliseconds(), 300);
  EXPECT_LT(watch.Milliseconds(), 5000);
  nuisance.join();
  Kalvo_SOCK_Close(client);
}

TEST(Socket, NamesResolveInManyThreads) {
  if (!support::HasLocalhost()) GTEST_SKIP() << "this machine has no name localhost";
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([t] {
      const std::string number = "10.0.0." + std::to_string(t);
      for (int i = 0; i < 200; ++i) {
        Kalvo_SocketAddr address;
        address.Init(t % 2 != 0 ? "localhost" : number.c_str(), i);
        ASSERT_STREQ(address.GetAddr(), t % 2 != 0 ? "127.0.0.1" : number.c_str());
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
