#include "beacon.h"

namespace {

constexpr char kGreeting[] = "kalvobase gateway at port ";
constexpr int kGreetingLength = sizeof(kGreeting) - 1;
constexpr unsigned long kIntervalMs = 250;
constexpr char kEverybody[] = "127.255.255.255";

}  // namespace

Beacon::Beacon() : port_(0), timer_(0) {}

Beacon::~Beacon() {
  ClearTimer(timer_);
  Close();
}

bool Beacon::Start(int beaconPort, int port) {
  port_ = port;
  everybody_.Init(kEverybody, beaconPort);
  if (Open(nullptr, 0) == 0) return false;
  EnableBroadcast(1);
  timer_ = SetRepeatTimer(0xFFFFFFFF, kIntervalMs, 0, 0, 0, nullptr);
  return timer_ != 0;
}

void Beacon::OnTimer(unsigned long, unsigned long, unsigned long, unsigned long, unsigned long,
                     const char*) {
  if (Printf(&everybody_, "%s%d", kGreeting, port_) > 0) sent_.Inc();
}

// Nobody has anything to tell a beacon.
void* Beacon::AllocBufferForRead(long& size) {
  size = 1;
  return nothing_;
}

int Beacon::OnDataOk(void*, long, Kalvo_SocketAddr*, Kalvo_SocketAddr*) { return 0; }

int BeaconPort(const char* datagram, long length) {
  if (length <= kGreetingLength) return 0;
  const Kalvo_String greeting(datagram, kGreetingLength);
  if (greeting != kGreeting) return 0;
  return static_cast<int>(
      Kalvo_String(datagram + kGreetingLength, static_cast<int>(length) - kGreetingLength)
          .ToInt(10));
}
