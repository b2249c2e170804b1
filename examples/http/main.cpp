// A server that any HTTP/1.1 client can talk to: it tells each what it has asked for.
//
//   http [port]     a port of its own choice without one; it is told in the first line
//
// It serves until its standard input ends.

#include <kalvobase/kalvobase.h>

#include <algorithm>
#include <cstdio>
#include <set>

namespace {

constexpr char kHeadEnd[] = "\r\n\r\n";
constexpr unsigned long kLongestHead = 16384;

class Server;

// One client, as long as its connection stands.
class Client : public Kalvo_TcpClientHandler {
 public:
  explicit Client(Server* server) : server_(server) {}
  ~Client() override { Close(); }

  void* AllocBufferForRead(long& size) override {
    size = std::min(size, static_cast<long>(sizeof(buffer_)));
    return buffer_;
  }
  void OnConnectOk(Kalvo_SocketAddr*, int) override {}
  int OnConnectFaild(Kalvo_SocketAddr*, int) override { return -1; }
  int OnDisConnect(Kalvo_SocketAddr*, int) override;

  // Requests may come in pieces, and many at once. Bodies are not understood.
  int OnDataOk(void* data, long length) override {
    head_.memcat(data, static_cast<int>(length));
    int end = 0;
    while (head_.Find(0, kHeadEnd, end, 0) != nullptr) {
      if (!Answer()) return -1;
      head_.Delete(0, end + 4);
    }
    return head_.length() <= kLongestHead ? 0 : -1;
  }

 private:
  // Answers the request at the start of what has come. False if it is none.
  bool Answer() {
    int line = 0;
    head_.Find(0, "\r\n", line, 0);
    Kalvo_StringArray words;
    words.Split(Kalvo_String(head_.c_str(), line).c_str(), ' ', 1);
    if (words.GetSize() != 3) return false;
    Kalvo_String body;
    body.sprintf("%s %s\n", words[0]->c_str(), words[1]->c_str());
    const int shown = *words[0] == "HEAD" ? 0 : static_cast<int>(body.length());
    Kalvo_String* answer = new Kalvo_String;
    answer->sprintf("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: %d\r\n\r\n%.*s",
                    static_cast<int>(body.length()), shown, body.c_str());
    if (SendData(answer) < 1) delete answer;
    return true;
  }

  Server* server_;
  Kalvo_String head_;
  char buffer_[4096];
};

class Server : public Kalvo_TcpServerHandler {
 public:
  // Clients may go while this goes: each is deleted by whoever takes it out.
  ~Server() override {
    Close();
    while (Client* client = TakeFirst()) delete client;
  }

  Kalvo_TcpClientHandler* OnAcceptClient(Kalvo_SocketAddr*) override {
    Client* client = new Client(this);
    Kalvo_AutoLock guard(&lock_);
    clients_.insert(client);
    return client;
  }

  void Remove(Client* client) {
    {
      Kalvo_AutoLock guard(&lock_);
      if (clients_.erase(client) == 0) return;
    }
    delete client;
  }

 private:
  Client* TakeFirst() {
    Kalvo_AutoLock guard(&lock_);
    if (clients_.empty()) return nullptr;
    Client* client = *clients_.begin();
    clients_.erase(clients_.begin());
    return client;
  }

  Kalvo_Lock lock_;  // guards the clients
  std::set<Client*> clients_;
};

int Client::OnDisConnect(Kalvo_SocketAddr*, int) {
  server_->Remove(this);
  return -1;
}

}  // namespace

int main(int argc, char** argv) {
  Server server;
  const int port = argc > 1 ? static_cast<int>(Kalvo_String(argv[1]).ToInt(10)) : 0;
  if (server.Listen("127.0.0.1", port) == 0) {
    std::printf("port %d cannot be had\n", port);
    return 1;
  }
  std::printf("listening on port %d\n", server.GetLocalAddr()->GetPort());
  std::fflush(stdout);
  while (std::getchar() != EOF) {
  }
  return 0;
}
