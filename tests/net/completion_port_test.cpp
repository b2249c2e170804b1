// The completion port by itself.

#include "platform/completion_port.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/descriptor.h"
#include "support/sockets.h"
#include "support/stopwatch.h"

namespace {

using platform::Completion;
using platform::PortOperation;
using platform::PortReadAfter;
using platform::PortSocket;
using platform::PortTag;

class CompletionPort : public testing::Test {
 protected:
  ~CompletionPort() override { platform::port_destroy(port_); }

  // Whether a completion comes before the waits are over.
  bool Next(int waits = 20) {
    while (waits-- > 0) {
      if (platform::port_wait(port_, &completion_)) return true;
    }
    return false;
  }
  bool Quiet() { return !Next(2); }

  platform::CompletionPort* const port_ = platform::port_create();
  Completion completion_;
};

// A connection, both ends of which are here.
struct Pair {
  Pair() {
    support::Listener listener;
    ours = Kalvo_SOCK_Connect(&listener.address, -1);
    theirs = listener.Accept();
  }
  ~Pair() {
    close(ours);
    close(theirs);
  }
  int ours;
  int theirs;
};

TEST_F(CompletionPort, WaitsForATenthOfASecond) {
  const support::Stopwatch watch;
  EXPECT_FALSE(platform::port_wait(port_, &completion_));
  EXPECT_FALSE(platform::port_wait(port_, &completion_));
  EXPECT_GE(watch.Milliseconds(), 90);
}

TEST_F(CompletionPort, ReadsCompleteOnceForWhatComes) {
  Pair pair;
  int context;
  const PortTag tag = platform::port_add(port_, pair.ours, PortSocket::kStream, 7, &context);
  ASSERT_NE(tag, 0u);
  char room[10];

  // What comes while no read waits is not forgotten.
  send(pair.theirs, "abc", 3, 0);
  EXPECT_TRUE(Quiet());
  EXPECT_TRUE(platform::port_read(port_, tag, PortReadAfter::kTaken));
  ASSERT_TRUE(Next());
  EXPECT_EQ(completion_.operation, PortOperation::kRead);
  EXPECT_EQ(completion_.key, 7u);
  EXPECT_EQ(completion_.context, &context);
  EXPECT_EQ(completion_.tag, tag);
  EXPECT_TRUE(Quiet());

  // What is left behind completes the next read, if that is told.
  EXPECT_EQ(recv(pair.ours, room, 1, 0), 1);
  platform::port_read(port_, tag, PortReadAfter::kMore);
  ASSERT_TRUE(Next());
  EXPECT_EQ(recv(pair.ours, room, 10, 0), 2);
  platform::port_read(port_, tag, PortReadAfter::kTaken);
  EXPECT_TRUE(Quiet());

  // So do the end of the connection, time and again, and its failure.
  shutdown(pair.theirs, SHUT_WR);
  ASSERT_TRUE(Next());
  EXPECT_EQ(recv(pair.ours, room, 10, 0), 0);
  platform::port_read(port_, tag, PortReadAfter::kTaken);
  ASSERT_TRUE(Next());
  EXPECT_FALSE(platform::port_read(port_, tag + 1, PortReadAfter::kTaken));
}

TEST_F(CompletionPort, PostsFromManyThreadsAllArrive) {
  constexpr int kThreads = 4;
  constexpr int kPosts = 5000;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([this, i] {
      for (int n = 0; n < kPosts; ++n) {
        platform::port_post(port_, static_cast<std::uint32_t>(i * kPosts + n), nullptr, 0);
      }
    });
  }
  std::vector<int> next(kThreads);
  for (int n = 0; n < kThreads * kPosts; ++n) {
    ASSERT_TRUE(Next());
    EXPECT_EQ(completion_.operation, PortOperation::kPosted);
    const int thread = static_cast<int>(completion_.key) / kPosts;
    EXPECT_EQ(static_cast<int>(completion_.key) % kPosts, next[static_cast<std::size_t>(thread)]++);
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(CompletionPort, NothingIsToldOfASocketThatWasRemoved) {
  Pair pair;
  Pair other;
  const PortTag tag = platform::port_add(port_, pair.ours, PortSocket::kStream, 1, nullptr);
  const PortTag otherTag = platform::port_add(port_, other.ours, PortSocket::kStream, 2, nullptr);
  platform::port_read(port_, tag, PortReadAfter::kTaken);
  platform::port_read(port_, otherTag, PortReadAfter::kTaken);
  platform::port_post(port_, 1, nullptr, tag);

  // Both have something to tell; the second goes while the first is being handled.
  send(pair.theirs, "a", 1, 0);
  send(other.theirs, "a", 1, 0);
  ASSERT_TRUE(Next());
  const bool first = completion_.key == 1;
  platform::port_remove(port_, first ? otherTag : tag);
  while (Next(2)) EXPECT_EQ(completion_.key, first ? 1u : 2u);
  platform::port_remove(port_, tag);
  platform::port_remove(port_, otherTag);

  // The next socket has the number of the first, and its place at the port.
  const int number = pair.ours;
  close(pair.ours);
  Pair next;
  ASSERT_EQ(dup2(next.ours, number), number);
  pair.ours = number;
  const PortTag nextTag = platform::port_add(port_, number, PortSocket::kStream, 3, nullptr);
  EXPECT_NE(nextTag, tag);
  EXPECT_FALSE(platform::port_read(port_, tag, PortReadAfter::kMore));
  platform::port_post(port_, 1, nullptr, tag);
  platform::port_read(port_, nextTag, PortReadAfter::kTaken);
  EXPECT_TRUE(Quiet());
  send(next.theirs, "b", 1, 0);
  ASSERT_TRUE(Next());
  EXPECT_EQ(completion_.key, 3u);
}

TEST_F(CompletionPort, WritesGoOutInPieces) {
  Pair pair;
  const PortTag tag = platform::port_add(port_, pair.ours, PortSocket::kStream, 1, nullptr);
  std::string sent(30000000, 'x');
  for (std::size_t i = 0; i < sent.size(); ++i) sent[i] = static_cast<char>(i * 31 >> 4);
  std::string received;
  std::thread reader([&] {
    std::vector<char> room(100000);
    while (received.size() < sent.size()) {
      const ssize_t n = recv(pair.theirs, room.data(), room.size(), 0);
      if (n <= 0) return;
      received.append(room.data(), static_cast<std::size_t>(n));
    }
  });
  std::size_t at = 0;
  int pieces = 0;
  for (;;) {
    const std::int64_t n =
        platform::port_send(port_, tag, pair.ours, sent.data() + at, sent.size() - at);
    ASSERT_GE(n, 0);
    at += static_cast<std::size_t>(n);
    if (at == sent.size()) break;
    ASSERT_TRUE(Next());
    EXPECT_EQ(completion_.operation, PortOperation::kWrite);
    at += completion_.bytes;
    ++pieces;
  }
  reader.join();
  EXPECT_TRUE(received == sent);
  EXPECT_GT(pieces, 1);
  platform::port_remove(port_, tag);
  close(pair.theirs);
  pair.theirs = -1;
  usleep(1000);
  platform::port_send(port_, tag, pair.ours, "a", 1);
  usleep(1000);
  EXPECT_EQ(platform::port_send(port_, tag, pair.ours, "a", 1), platform::kTransferFailed);
}

TEST_F(CompletionPort, AcceptsWhenSomebodyWaits) {
  support::Listener listener;
  const PortTag tag =
      platform::port_add(port_, listener.socket(), PortSocket::kListener, 0, nullptr);
  const int client = Kalvo_SOCK_Connect(&listener.address, -1);
  EXPECT_TRUE(Quiet());
  int first;
  int second;
  platform::port_accept(port_, tag, 11, &first);
  platform::port_accept(port_, tag, 12, &second);
  ASSERT_TRUE(Next());
  EXPECT_EQ(completion_.operation, PortOperation::kAccept);
  EXPECT_EQ(completion_.key, 11u);
  EXPECT_EQ(completion_.context, &first);
  EXPECT_EQ(completion_.addressLength, 16);
  EXPECT_TRUE(platform::descriptor_is_open(completion_.socket));
  EXPECT_EQ(fcntl(completion_.socket, F_GETFD), FD_CLOEXEC);
  close(completion_.socket);

  // Without a descriptor the client waits, and nothing spins.
  const int another = Kalvo_SOCK_Connect(&listener.address, -1);
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  rlimit none = limit;
  none.rlim_cur = static_cast<rlim_t>(another) + 3;
  setrlimit(RLIMIT_NOFILE, &none);
  std::vector<int> held;
  for (int number; (number = dup(client)) >= 0;) held.push_back(number);
  const clock_t before = clock();
  EXPECT_FALSE(Next(5));
  EXPECT_LT(clock() - before, CLOCKS_PER_SEC / 10);
  for (const int number : held) close(number);
  EXPECT_TRUE(Next());
  EXPECT_EQ(completion_.key, 12u);
  setrlimit(RLIMIT_NOFILE, &limit);
  close(completion_.socket);
  close(another);

  platform::port_accept(port_, tag, 13, nullptr);
  platform::port_remove(port_, tag);
  close(Kalvo_SOCK_Connect(&listener.address, -1));
  EXPECT_TRUE(Quiet());
  close(client);
}

TEST_F(CompletionPort, DatagramsAreToldOneByOne) {
  Kalvo_SocketAddr address;
  address.Init("127.0.0.1", 0);
  const int ours = Kalvo_SOCK_OpenUdpForAddr(&address, 1);
  getsockname(ours, address.GetInfo()->ai_addr, &address.GetInfo()->ai_addrlen);
  address.ReInit();
  const PortTag tag = platform::port_add(port_, ours, PortSocket::kDatagram, 1, nullptr);
  for (int i = 0; i < 3; ++i) Kalvo_SOCK_Send(ours, &address, "abc", 3);
  EXPECT_TRUE(Quiet());
  char room[10];
  for (int i = 0; i < 3; ++i) {
    platform::port_read(port_, tag, PortReadAfter::kTaken);
    ASSERT_TRUE(Next());
    EXPECT_EQ(recv(ours, room, 10, 0), 3);
  }
  platform::port_read(port_, tag, PortReadAfter::kTaken);
  EXPECT_TRUE(Quiet());
  platform::port_read_later(port_, tag, 30);
  const support::Stopwatch watch;
  EXPECT_TRUE(Next());
  EXPECT_GE(watch.Milliseconds(), 29);
  close(ours);
}

}  // namespace
