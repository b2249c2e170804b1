// The agent's connection to the gateway, which makes itself again whenever it is lost.

#ifndef GATEWAY_UPLINK_H_
#define GATEWAY_UPLINK_H_

#include <kalvobase/kalvobase.h>

// It finds the gateway by its beacon. What is sent while there is no connection is lost.
class Uplink : public Kalvo_TcpClientHandler {
 public:
  // Lines about the connection go to `log`, which must outlive this.
  explicit Uplink(Kalvo_Log* log);
  ~Uplink() override;

  // Listens for the beacon, and connects when it has come. False if the port cannot be opened.
  bool Start(int beaconPort);

  // Waits up to `ms` milliseconds for the connection.
  bool WaitUntilConnected(unsigned long ms);

  // Whether it is on its way. The gateway answers each table.
  bool Send(Kalvo_KValueTable* table);

  // Waits up to `ms` milliseconds until all that was sent was answered.
  bool WaitForAnswers(unsigned long ms);

  long sent() { return sent_.Get(); }
  long answered() { return answered_.Get(); }
  long connections() { return connections_.Get(); }

  void* AllocBufferForRead(long& size) override;
  void OnConnectOk(Kalvo_SocketAddr* peer, int active) override;
  int OnConnectFaild(Kalvo_SocketAddr* peer, int error) override;
  int OnDisConnect(Kalvo_SocketAddr* peer, int error) override;
  int OnDataOk(void* data, long length) override;

 private:
  // Hears where the gateway is.
  class Finder : public Kalvo_UdpHandler {
   public:
    explicit Finder(Uplink* uplink) : uplink_(uplink) {}
    ~Finder() override { Close(); }
    void* AllocBufferForRead(long& size) override;
    int OnDataOk(void* data, long length, Kalvo_SocketAddr* from, Kalvo_SocketAddr* local) override;

   private:
    Uplink* uplink_;
    char datagram_[256];
  };

  Kalvo_Log* log_;
  Finder finder_;
  Kalvo_Event connected_;  // set while there is a connection
  Kalvo_Counter sent_;
  Kalvo_Counter answered_;
  Kalvo_Counter connections_;
  char answers_[4096];
};

#endif  // GATEWAY_UPLINK_H_
