#include "kalvobase/tcp_stream.h"

#include <thread>

#include "examples/example.h"
#include "support/sockets.h"

namespace {

int Run(int port) {
#include "tcp_stream_1.inc"
  return 0;
}

}  // namespace

int main() {
  if (!support::HasLocalhost()) return NotHere("this machine has no name localhost");
  support::Listener listener;
  std::thread server([&] {
    const int peer = listener.Accept();
    Kalvo_TcpStream stream;
    stream.Attach(peer);
    assert(std::string(stream.ReadLine(1, -1)) == "GET / HTTP/1.0");
    stream.Printf("HTTP/1.0 200 OK\r\n\r\nhello\n");
    stream.DisConnect();
    close(peer);
  });
  Redirect(stdout);
  assert(Run(listener.port()) == 0);
  server.join();
  assert(Printed() == "HTTP/1.0 200 OK\n\nhello\n");
}
