// Two handlers that play a byte to and fro for ever.

#ifndef KALVOBASE_TESTS_HOST_PING_H_
#define KALVOBASE_TESTS_HOST_PING_H_

#include <kalvobase/kalvobase.h>

#include <atomic>

class Ping : public Kalvo_TcpClientHandler {
 public:
  ~Ping() override { Close(); }
  void* AllocBufferForRead(long& size) override {
    size = 1;
    return &byte_;
  }
  void OnConnectOk(Kalvo_SocketAddr*, int active) override {
    if (active == 1) SendData("p", 1);
  }
  int OnConnectFaild(Kalvo_SocketAddr*, int) override { return 1; }
  int OnDisConnect(Kalvo_SocketAddr*, int) override { return 1; }
  int OnDataOk(void* data, long) override {
    ++count;
    if (onData != nullptr) onData();
    SendData(static_cast<const char*>(data), 1);
    return 0;
  }

  std::atomic<int> count{0};
  void (*onData)() = nullptr;

 private:
  char byte_ = 0;
};

class Pong : public Kalvo_TcpServerHandler {
 public:
  ~Pong() override { Close(); }
  Kalvo_TcpClientHandler* OnAcceptClient(Kalvo_SocketAddr*) override { return &other; }

  // The client begins to connect to the server.
  void Start() {
    Listen("127.0.0.1", 0);
    client.Connect("127.0.0.1", GetLocalAddr()->GetPort());
  }

  Ping client;
  Ping other;
};

#endif  // KALVOBASE_TESTS_HOST_PING_H_
