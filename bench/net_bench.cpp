// Servers against Boost.Asio, libuv and libevent: one core serves, another loads.

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sched.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "duel.h"
#include "net_servers.h"

namespace {

using net_servers::Service;
using Serve = void (*)(Service, const net_servers::TellPort&);

constexpr int kServerCore = 0;
constexpr int kLoadCore = 1;

void RunOn(int core) {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  CPU_SET(core, &cores);
  sched_setaffinity(0, sizeof(cores), &cores);
}

[[noreturn]] void Fail(const char* what) {
  std::perror(what);
  std::exit(1);
}

// A server in a process of its own, as long as the benchmark runs: its port.
int Start(Serve serve, Service service) {
  int pipes[2];
  if (pipe(pipes) != 0) Fail("pipe");
  const pid_t child = fork();
  if (child < 0) Fail("fork");
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    RunOn(kServerCore);
    close(pipes[0]);
    std::thread server([&] {
      serve(service, [&](int port) {
        if (write(pipes[1], &port, sizeof(port)) != sizeof(port)) _exit(1);
      });
    });
    server.join();
  }
  close(pipes[1]);
  int port = 0;
  if (read(pipes[0], &port, sizeof(port)) != sizeof(port)) Fail("a server");
  close(pipes[0]);
  return port;
}

int PortOf(Serve serve, Service service) {
  static std::map<std::pair<Serve, Service>, int> ports;
  int& port = ports[{serve, service}];
  if (port == 0) port = Start(serve, service);
  return port;
}

sockaddr_in Address(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  return address;
}

int Connect(int type, int port) {
  const int socket = ::socket(AF_INET, type, 0);
  const sockaddr_in address = Address(port);
  if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    Fail("connect");
  }
  const int on = 1;
  if (type == SOCK_STREAM) setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  return socket;
}

// Clients that each send a message, wait until it has come back whole, and send the next.
class EchoLoad {
 public:
  EchoLoad(int type, int port, int clients, std::size_t size)
      : type_(type), message_(size, 'x'), room_(kRoom), epoll_(epoll_create1(0)) {
    for (int i = 0; i < clients; ++i) {
      auto client = std::make_unique<Client>();
      client->socket = Connect(type, port);
      epoll_event event = {};
      event.events = EPOLLIN | EPOLLET;
      event.data.ptr = client.get();
      epoll_ctl(epoll_, EPOLL_CTL_ADD, client->socket, &event);
      clients_.push_back(std::move(client));
    }
  }
  ~EchoLoad() {
    for (const auto& client : clients_) close(client->socket);
    close(epoll_);
  }

  // Goes on until `count` more messages have come back.
  void Run(std::size_t count) {
    if (!started_) {
      for (const auto& client : clients_) Send(client.get());
      started_ = true;
    }
    epoll_event events[256];
    for (std::size_t done = 0; done < count;) {
      const int n = epoll_wait(epoll_, events, 256, 1000);
      if (n == 0) Resend();
      // First all that has come, then all that is next: so the load costs less than the server.
      whole_.clear();
      for (int i = 0; i < n; ++i) Receive(static_cast<Client*>(events[i].data.ptr));
      for (Client* client : whole_) Send(client);
      done += whole_.size();
    }
  }

 private:
  static constexpr std::size_t kRoom = 1 << 18;  // more than a client has on its way

  struct Client {
    int socket;
    std::size_t unsent = 0;
    std::size_t received = 0;
  };

  void Send(Client* client) {
    client->unsent = message_.size();
    client->received = 0;
    Push(client);
  }

  void Push(Client* client) {
    const ssize_t n = send(client->socket, message_.data(), client->unsent, MSG_DONTWAIT);
    if (n > 0) client->unsent -= static_cast<std::size_t>(n);
  }

  void Receive(Client* client) {
    const ssize_t n = recv(client->socket, room_.data(), room_.size(), 0);
    if (n <= 0) Fail("recv");
    client->received += static_cast<std::size_t>(n);
    if (client->unsent > 0) Push(client);
    if (client->received >= message_.size()) whole_.push_back(client);
  }

  // A datagram may get lost.
  void Resend() {
    if (type_ != SOCK_DGRAM) Fail("an echo");
    for (const auto& client : clients_) Send(client.get());
  }

  const int type_;
  const std::vector<char> message_;
  std::vector<char> room_;
  const int epoll_;
  std::vector<std::unique_ptr<Client>> clients_;
  std::vector<Client*> whole_;  // whose messages have come back
  bool started_ = false;
};

// Clients that connect, wait for the server's byte and reset the connection.
void Visit(int port, int count) {
  constexpr int kAtOnce = 32;
  int sockets[kAtOnce];
  for (int done = 0; done < count; done += kAtOnce) {
    for (int& socket : sockets) {
      socket = Connect(SOCK_STREAM, port);
      const linger reset = {1, 0};
      setsockopt(socket, SOL_SOCKET, SO_LINGER, &reset, sizeof(reset));
    }
    for (const int socket : sockets) {
      char byte;
      if (recv(socket, &byte, 1, 0) != 1) Fail("recv");
      close(socket);
    }
  }
}

duel::Body Echo(Serve serve, Service service, int clients, std::size_t size) {
  return [=](benchmark::State& state) {
    RunOn(kLoadCore);
    const int type = service == Service::kUdpEcho ? SOCK_DGRAM : SOCK_STREAM;
    EchoLoad load(type, PortOf(serve, service), clients, size);
    load.Run(static_cast<std::size_t>(clients) * 2);
    for (auto _ : state) load.Run(static_cast<std::size_t>(clients));
  };
}

duel::Body Visits(Serve serve) {
  return [=](benchmark::State& state) {
    RunOn(kLoadCore);
    const int port = PortOf(serve, Service::kGreet);
    for (auto _ : state) Visit(port, 64);
  };
}

const bool registered = [] {
  using net_servers::ServeAsio;
  using net_servers::ServeKalvoBase;
  using net_servers::ServeLibevent;
  using net_servers::ServeLibuv;
  const auto echo = [](const std::string& work, int clients, std::size_t size, bool all) {
    duel::Ours(work, Echo(ServeKalvoBase, Service::kEcho, clients, size));
    duel::Peer(work, "Boost.Asio", 1.0, Echo(ServeAsio, Service::kEcho, clients, size));
    if (!all) return;
    duel::Peer(work, "libuv", 1.4, Echo(ServeLibuv, Service::kEcho, clients, size));
    duel::Peer(work, "libevent", 1.4, Echo(ServeLibevent, Service::kEcho, clients, size));
  };
  echo("echo of 64 bytes, 1 connection", 1, 64, true);
  echo("echo of 64 bytes, 100 connections", 100, 64, true);
  echo("echo of 64 bytes, 1,000 connections", 1000, 64, true);
  echo("echo of 4 KiB, 100 connections", 100, 4096, false);
  echo("echo of 64 KiB, 4 connections", 4, 65536, false);
  duel::Ours("accept, greet and close", Visits(ServeKalvoBase));
  duel::Peer("accept, greet and close", "Boost.Asio", 1.0, Visits(ServeAsio));
  for (const int clients : {1, 32}) {
    const std::string work = "UDP echo of 64 bytes, " + std::to_string(clients) +
                             (clients == 1 ? " client" : " clients");
    duel::Ours(work, Echo(ServeKalvoBase, Service::kUdpEcho, clients, 64));
    duel::Peer(work, "Boost.Asio", 1.0, Echo(ServeAsio, Service::kUdpEcho, clients, 64));
  }
  return true;
}();

}  // namespace
