#include "uplink.h"

#include <algorithm>

#include "beacon.h"
#include "frame.h"

namespace {

constexpr int kRetryMs = 200;
constexpr unsigned long kPollMs = 5;

}  // namespace

Uplink::Uplink(Kalvo_Log* log) : log_(log), finder_(this), connected_(1, 0, nullptr) {}

Uplink::~Uplink() {
  finder_.Close();  // which may connect
  Close();
}

bool Uplink::Start(int beaconPort) { return finder_.OpenBroadCastPort("0.0.0.0", beaconPort) != 0; }

bool Uplink::WaitUntilConnected(unsigned long ms) { return connected_.Wait(ms) == 0; }

bool Uplink::Send(Kalvo_KValueTable* table) {
  if (connected_.Wait(0) != 0) return false;
  Kalvo_String* frame = new Kalvo_String(Frame(table));
  if (SendData(frame) > 0) {
    sent_.Inc();
    return true;
  }
  delete frame;
  return false;
}

bool Uplink::WaitForAnswers(unsigned long ms) {
  for (unsigned long waited = 0; waited < ms && answered() < sent(); waited += kPollMs) {
    Kalvo_Thread_Sleep(kPollMs);
  }
  return answered() == sent();
}

// An answer is one byte.
void* Uplink::AllocBufferForRead(long& size) {
  size = std::min(size, static_cast<long>(sizeof(answers_)));
  return answers_;
}

int Uplink::OnDataOk(void*, long length) {
  answered_.Add(static_cast<int>(length));
  return 0;
}

void Uplink::OnConnectOk(Kalvo_SocketAddr* peer, int) {
  log_->Trace(1, "connected to %s port %d", peer->GetAddr(), peer->GetPort());
  connections_.Inc();
  connected_.Set();
}

int Uplink::OnConnectFaild(Kalvo_SocketAddr*, int) { return kRetryMs; }

int Uplink::OnDisConnect(Kalvo_SocketAddr*, int error) {
  connected_.Reset();
  log_->Trace(1, "the gateway is gone: error %d", error);
  return kRetryMs;
}

void* Uplink::Finder::AllocBufferForRead(long& size) {
  size = std::min(size, static_cast<long>(sizeof(datagram_)));
  return datagram_;
}

// The first beacon is enough.
int Uplink::Finder::OnDataOk(void* data, long length, Kalvo_SocketAddr* from, Kalvo_SocketAddr*) {
  const int port = BeaconPort(static_cast<const char*>(data), length);
  if (port == 0) return 0;
  return uplink_->Connect(from->GetAddr(), port) != 0 ? -1 : 0;
}
