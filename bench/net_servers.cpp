#include "net_servers.h"

#include <event2/buffer.h>
#include <event2/bufferevent.h>
#include <event2/event.h>
#include <event2/listener.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <unistd.h>
#include <uv.h>

#include <boost/asio.hpp>
#include <cstdlib>
#include <memory>
#include <vector>

#include "kalvobase/kalvobase.h"

namespace net_servers {
namespace {

constexpr std::size_t kBufferSize = 65536;
constexpr int kBacklog = 4096;

sockaddr_in AnyPort() {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

int PortOf(int socket) {
  sockaddr_in address = {};
  socklen_t length = sizeof(address);
  getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
  return ntohs(address.sin_port);
}

// --- KalvoBase ------------------------------------------------------------------------

class Connection : public Kalvo_TcpClientHandler {
 public:
  explicit Connection(Service service) : service_(service) {}
  ~Connection() override { Close(); }

  void* AllocBufferForRead(long& size) override {
    if (buffer_.size() < static_cast<std::size_t>(size)) {
      buffer_.resize(static_cast<std::size_t>(size));
    }
    return buffer_.data();
  }
  int OnDataOk(void* data, long length) override {
    SendData(static_cast<const char*>(data), static_cast<int>(length));
    return 0;
  }
  void OnConnectOk(Kalvo_SocketAddr*, int) override {
    if (service_ == Service::kGreet) SendData("!", 1);
  }
  int OnConnectFaild(Kalvo_SocketAddr*, int) override { return -1; }
  int OnDisConnect(Kalvo_SocketAddr*, int) override {
    delete this;
    return -1;
  }

 private:
  const Service service_;
  std::vector<char> buffer_;
};

class Server : public Kalvo_TcpServerHandler {
 public:
  explicit Server(Service service) : service_(service) {}
  ~Server() override { Close(); }
  Kalvo_TcpClientHandler* OnAcceptClient(Kalvo_SocketAddr*) override {
    return new Connection(service_);
  }

 private:
  const Service service_;
};

class Datagrams : public Kalvo_UdpHandler {
 public:
  ~Datagrams() override { Close(); }
  void* AllocBufferForRead(long&) override { return buffer_; }
  int OnDataOk(void* data, long length, Kalvo_SocketAddr* from, Kalvo_SocketAddr*) override {
    SendData(from, static_cast<const char*>(data), static_cast<int>(length));
    return 0;
  }

 private:
  char buffer_[kBufferSize];
};

}  // namespace

void ServeKalvoBase(Service service, const TellPort& tell) {
  if (service == Service::kUdpEcho) {
    Datagrams port;
    port.Open("127.0.0.1", 0);
    tell(port.GetLocalAddr()->GetPort());
    for (;;) pause();
  }
  Server server(service);
  server.Listen("127.0.0.1", 0);
  tell(server.GetLocalAddr()->GetPort());
  for (;;) pause();
}

// --- Boost.Asio -----------------------------------------------------------------------

namespace {

using boost::asio::ip::tcp;
using boost::asio::ip::udp;
using boost::system::error_code;

class AsioConnection : public std::enable_shared_from_this<AsioConnection> {
 public:
  explicit AsioConnection(tcp::socket socket) : socket_(std::move(socket)) {}

  void Start(Service service) {
    socket_.set_option(tcp::no_delay(true));
    if (service == Service::kGreet) {
      buffer_[0] = '!';
      Write(1);
    } else {
      Read();
    }
  }

 private:
  void Read() {
    socket_.async_read_some(
        boost::asio::buffer(buffer_),
        [self = shared_from_this()](const error_code& error, std::size_t length) {
          if (!error) self->Write(length);
        });
  }
  void Write(std::size_t length) {
    boost::asio::async_write(socket_, boost::asio::buffer(buffer_, length),
                             [self = shared_from_this()](const error_code& error, std::size_t) {
                               if (!error) self->Read();
                             });
  }

  tcp::socket socket_;
  char buffer_[kBufferSize];
};

class AsioServer {
 public:
  AsioServer(boost::asio::io_context* context, Service service)
      : acceptor_(*context, {boost::asio::ip::address_v4::loopback(), 0}), service_(service) {
    acceptor_.listen(kBacklog);
    Accept();
  }
  int port() const { return acceptor_.local_endpoint().port(); }

 private:
  void Accept() {
    acceptor_.async_accept([this](const error_code& error, tcp::socket socket) {
      if (!error) std::make_shared<AsioConnection>(std::move(socket))->Start(service_);
      Accept();
    });
  }

  tcp::acceptor acceptor_;
  const Service service_;
};

class AsioDatagrams {
 public:
  explicit AsioDatagrams(boost::asio::io_context* context)
      : socket_(*context, {boost::asio::ip::address_v4::loopback(), 0}) {
    Receive();
  }
  int port() const { return socket_.local_endpoint().port(); }

 private:
  void Receive() {
    socket_.async_receive_from(
        boost::asio::buffer(buffer_), from_, [this](const error_code& error, std::size_t length) {
          if (!error) {
            error_code ignored;
            socket_.send_to(boost::asio::buffer(buffer_, length), from_, 0, ignored);
          }
          Receive();
        });
  }

  udp::socket socket_;
  udp::endpoint from_;
  char buffer_[kBufferSize];
};

}  // namespace

void ServeAsio(Service service, const TellPort& tell) {
  boost::asio::io_context context(1);  // one thread runs it
  std::unique_ptr<AsioDatagrams> datagrams;
  std::unique_ptr<AsioServer> server;
  if (service == Service::kUdpEcho) {
    datagrams = std::make_unique<AsioDatagrams>(&context);
    tell(datagrams->port());
  } else {
    server = std::make_unique<AsioServer>(&context, service);
    tell(server->port());
  }
  context.run();
  std::abort();
}

// --- libuv ----------------------------------------------------------------------------

namespace {

// As its guide shows an echo server.
struct UvWriteRequest {
  uv_write_t write;
  uv_buf_t buffer;
};

void UvClose(uv_handle_t* handle) {
  uv_close(handle, [](uv_handle_t* closed) { delete reinterpret_cast<uv_tcp_t*>(closed); });
}

// Takes the buffer, which was allocated.
void UvWrite(uv_stream_t* stream, char* bytes, std::size_t length) {
  auto* const request = static_cast<UvWriteRequest*>(std::malloc(sizeof(UvWriteRequest)));
  request->buffer = uv_buf_init(bytes, static_cast<unsigned>(length));
  uv_write(&request->write, stream, &request->buffer, 1, [](uv_write_t* write, int) {
    auto* const written = reinterpret_cast<UvWriteRequest*>(write);
    std::free(written->buffer.base);
    std::free(written);
  });
}

void UvAllocate(uv_handle_t*, std::size_t suggested, uv_buf_t* buffer) {
  *buffer =
      uv_buf_init(static_cast<char*>(std::malloc(suggested)), static_cast<unsigned>(suggested));
}

void UvRead(uv_stream_t* stream, ssize_t length, const uv_buf_t* buffer) {
  if (length > 0) {
    UvWrite(stream, buffer->base, static_cast<std::size_t>(length));
    return;
  }
  if (length < 0) UvClose(reinterpret_cast<uv_handle_t*>(stream));
  std::free(buffer->base);
}

}  // namespace

void ServeLibuv(Service service, const TellPort& tell) {
  uv_loop_t loop;
  uv_loop_init(&loop);
  uv_tcp_t listener;
  uv_tcp_init(&loop, &listener);
  listener.data = &service;
  const sockaddr_in address = AnyPort();
  uv_tcp_bind(&listener, reinterpret_cast<const sockaddr*>(&address), 0);
  uv_listen(reinterpret_cast<uv_stream_t*>(&listener), kBacklog, [](uv_stream_t* server, int) {
    auto* const connection = new uv_tcp_t;
    uv_tcp_init(server->loop, connection);
    auto* const stream = reinterpret_cast<uv_stream_t*>(connection);
    if (uv_accept(server, stream) != 0) {
      UvClose(reinterpret_cast<uv_handle_t*>(connection));
      return;
    }
    uv_tcp_nodelay(connection, 1);
    if (*static_cast<Service*>(server->data) == Service::kGreet) {
      auto* const greeting = static_cast<char*>(std::malloc(1));
      *greeting = '!';
      UvWrite(stream, greeting, 1);
    }
    uv_read_start(stream, UvAllocate, UvRead);
  });
  uv_os_fd_t descriptor;
  uv_fileno(reinterpret_cast<uv_handle_t*>(&listener), &descriptor);
  tell(PortOf(descriptor));
  uv_run(&loop, UV_RUN_DEFAULT);
  std::abort();
}

// --- libevent -------------------------------------------------------------------------

void ServeLibevent(Service service, const TellPort& tell) {
  event_base* const base = event_base_new();
  const sockaddr_in address = AnyPort();
  evconnlistener* const listener = evconnlistener_new_bind(
      base,
      [](evconnlistener* from, evutil_socket_t socket, sockaddr*, int, void* context) {
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
        bufferevent* const connection =
            bufferevent_socket_new(evconnlistener_get_base(from), socket, BEV_OPT_CLOSE_ON_FREE);
        bufferevent_setcb(
            connection,
            [](bufferevent* one, void*) {
              bufferevent_write_buffer(one, bufferevent_get_input(one));
            },
            nullptr, [](bufferevent* one, short, void*) { bufferevent_free(one); }, nullptr);
        bufferevent_enable(connection, EV_READ | EV_WRITE);
        if (*static_cast<Service*>(context) == Service::kGreet) {
          bufferevent_write(connection, "!", 1);
        }
      },
      &service, LEV_OPT_CLOSE_ON_FREE, kBacklog, reinterpret_cast<const sockaddr*>(&address),
      sizeof(address));
  tell(PortOf(evconnlistener_get_fd(listener)));
  event_base_dispatch(base);
  std::abort();
}

}  // namespace net_servers
