// Handlers that remember what the engine told them and do as a test says.

#ifndef KALVOBASE_TESTS_SUPPORT_HANDLERS_H_
#define KALVOBASE_TESTS_SUPPORT_HANDLERS_H_

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "kalvobase/handler.h"

namespace support {

constexpr std::chrono::seconds kGenerous{30};

// What has happened, as words: "ok 1", "failed 10061", "lost 0".
class Events {
 public:
  void Add(const std::string& event) {
    const std::lock_guard<std::mutex> guard(lock_);
    events_.push_back(event);
    changed_.notify_all();
  }
  void AddBytes(const char* data, long length) {
    const std::lock_guard<std::mutex> guard(lock_);
    bytes_.append(data, static_cast<std::size_t>(length));
    changed_.notify_all();
  }

  // False if it does not come true in time.
  bool Wait(const std::function<bool(const std::vector<std::string>&, const std::string&)>& what,
            std::chrono::milliseconds limit = kGenerous) {
    std::unique_lock<std::mutex> guard(lock_);
    return changed_.wait_for(guard, limit, [&] { return what(events_, bytes_); });
  }
  bool WaitForCount(std::size_t count, std::chrono::milliseconds limit = kGenerous) {
    return Wait([=](const auto& events, const auto&) { return events.size() >= count; }, limit);
  }
  bool WaitForBytes(std::size_t count, std::chrono::milliseconds limit = kGenerous) {
    return Wait([=](const auto&, const auto& bytes) { return bytes.size() >= count; }, limit);
  }
  std::vector<std::string> all() {
    const std::lock_guard<std::mutex> guard(lock_);
    return events_;
  }
  std::string bytes() {
    const std::lock_guard<std::mutex> guard(lock_);
    return bytes_;
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<std::string> events_;
  std::string bytes_;
};

class Client : public Kalvo_TcpClientHandler {
 public:
  ~Client() override { Close(); }

  void* AllocBufferForRead(long& size) override {
    if (onAlloc) onAlloc(size);
    buffer_.resize(static_cast<std::size_t>(size > 0 ? size : 0));
    return buffer_.data();
  }
  void OnConnectOk(Kalvo_SocketAddr*, int active) override {
    events.Add("ok " + std::to_string(active));
    if (onOk) onOk();
  }
  int OnConnectFaild(Kalvo_SocketAddr*, int error) override {
    events.Add("failed " + std::to_string(error));
    return onFailed ? onFailed() : -1;
  }
  int OnDisConnect(Kalvo_SocketAddr* peer, int error) override {
    if (onPeer) onPeer(peer);
    events.Add("lost " + std::to_string(error));
    return onLost ? onLost() : -1;
  }
  int OnDataOk(void* data, long length) override {
    events.AddBytes(static_cast<const char*>(data), length);
    return onData ? onData(static_cast<const char*>(data), length) : 0;
  }

  Events events;
  std::function<void(long&)> onAlloc;
  std::function<void()> onOk;
  std::function<int()> onFailed;
  std::function<int()> onLost;
  std::function<int(const char*, long)> onData;
  std::function<void(Kalvo_SocketAddr*)> onPeer;  // of a connection that has ended

 private:
  std::vector<char> buffer_;
};

// Listens on a port of 127.0.0.1, and keeps its clients until it goes.
class Server : public Kalvo_TcpServerHandler {
 public:
  explicit Server(std::function<void(Client*)> prepare = nullptr) : prepare_(std::move(prepare)) {
    id = Listen("127.0.0.1", 0);
  }
  ~Server() override { Close(); }

  Kalvo_TcpClientHandler* OnAcceptClient(Kalvo_SocketAddr*) override {
    if (onAccept && !onAccept()) return nullptr;
    auto client = std::make_unique<Client>();
    if (prepare_) prepare_(client.get());
    const std::lock_guard<std::mutex> guard(lock_);
    clients_.push_back(std::move(client));
    accepted.Add("client");
    return clients_.back().get();
  }

  int port() { return GetLocalAddr()->GetPort(); }

  // The client that came at this place, when its connection stands.
  Client* At(std::size_t place) {
    if (!accepted.WaitForCount(place + 1)) return nullptr;
    Client* client;
    {
      const std::lock_guard<std::mutex> guard(lock_);
      client = clients_[place].get();
    }
    return client->events.WaitForCount(1) ? client : nullptr;
  }
  Client* first() { return At(0); }

  unsigned long id;
  Events accepted;
  std::function<bool()> onAccept;

 private:
  const std::function<void(Client*)> prepare_;
  std::mutex lock_;
  std::vector<std::unique_ptr<Client>> clients_;
};

}  // namespace support

#endif  // KALVOBASE_TESTS_SUPPORT_HANDLERS_H_
