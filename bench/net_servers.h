// The servers that the network benchmarks load: the library's and those of its peers.
//
// Each serves on one thread of a process of its own, which has others, as a host has: system calls
// cost more there. It listens on a port of 127.0.0.1 that the system chooses, tells it, and serves
// until the process is killed.

#ifndef KALVOBASE_BENCH_NET_SERVERS_H_
#define KALVOBASE_BENCH_NET_SERVERS_H_

#include <functional>

namespace net_servers {

enum class Service {
  kEcho,     // TCP: gives every byte back
  kGreet,    // TCP: sends one byte and waits for the end of the connection
  kUdpEcho,  // gives every datagram back
};

using TellPort = std::function<void(int)>;

[[noreturn]] void ServeKalvoBase(Service service, const TellPort& tell);
[[noreturn]] void ServeAsio(Service service, const TellPort& tell);
[[noreturn]] void ServeLibuv(Service service, const TellPort& tell);
[[noreturn]] void ServeLibevent(Service service, const TellPort& tell);

}  // namespace net_servers

#endif  // KALVOBASE_BENCH_NET_SERVERS_H_
