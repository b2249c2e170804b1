#include "kalvobase/socket.h"

#include <thread>

#include "examples/example.h"
#include "kalvobase/text.h"
#include "support/sockets.h"

namespace {

int Run(int port) {
#include "socket_1.inc"
  assert(std::string(answer.c_str()) == "hello\n");
  return 0;
}

}  // namespace

int main() {
  if (!support::HasLocalhost()) return NotHere("this machine has no name localhost");
  support::Listener listener;
  std::thread server([&] {
    const int peer = listener.Accept();
    char request[6];
    assert(recv(peer, request, 6, MSG_WAITALL) == 6 && write(peer, request, 6) == 6);
    close(peer);
  });
  assert(Run(listener.port()) == 0);
  server.join();
  Kalvo_SocketAddr deaf;  // has a port and does not listen
  deaf.Init("127.0.0.1", 0);
  const int unheard = Kalvo_SOCK_OpenTcpForAddr(&deaf, 1);
  getsockname(unheard, deaf.GetInfo()->ai_addr, &deaf.GetInfo()->ai_addrlen);
  deaf.ReInit();
  assert(Run(deaf.GetPort()) == 10061);
  close(unheard);
}
