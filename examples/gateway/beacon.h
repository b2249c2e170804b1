// The gateway's beacon: tells everybody around where it is.

#ifndef GATEWAY_BEACON_H_
#define GATEWAY_BEACON_H_

#include <kalvobase/kalvobase.h>

// Sends a datagram again and again, as long as it lives.
class Beacon : private Kalvo_UdpHandler, private Kalvo_Timer {
 public:
  Beacon();
  ~Beacon() override;

  // Tells of `port` to all that listen at `beaconPort`. Close to hand: this machine.
  bool Start(int beaconPort, int port);

  long sent() { return sent_.Get(); }

 private:
  void OnTimer(unsigned long id, unsigned long count, unsigned long owner, unsigned long attr,
               unsigned long seq, const char* data) override;
  void* AllocBufferForRead(long& size) override;
  int OnDataOk(void* data, long length, Kalvo_SocketAddr* from, Kalvo_SocketAddr* local) override;

  Kalvo_SocketAddr everybody_;
  int port_;
  unsigned long timer_;
  Kalvo_Counter sent_;
  char nothing_[1];
};

// The port that a datagram tells of; 0 if it is none of a beacon's.
int BeaconPort(const char* datagram, long length);

#endif  // GATEWAY_BEACON_H_
