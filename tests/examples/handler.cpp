#include "kalvobase/handler.h"

#include <vector>

#include "examples/example.h"
#include "support/sockets.h"

namespace {

#include "handler_1.inc"

}  // namespace

int main() {
  support::Listener listener;
  const int port = listener.port();
#include "handler_2.inc"
  const int peer = listener.Accept();
  assert(write(peer, "ping", 4) == 4);
  char answer[4];
  assert(recv(peer, answer, 4, MSG_WAITALL) == 4);
  assert(std::string(answer, 4) == "ping");
  close(peer);
}
