// The agent's way to the receiver.

#ifndef GATEWAY_UPLINK_H_
#define GATEWAY_UPLINK_H_

#include <kalvobase/kalvobase.h>

// Tables over TCP: the length of the binary form, 4 bytes in network order, then the form.
class Uplink {
 public:
  // False if nobody listens there.
  bool Connect(const char* host, int port);

  // Whether it went out. Does nothing without a connection; one that fails is given up.
  bool Send(Kalvo_KValueTable* table);

  // How many tables went out whole, as far as this side can tell.
  int sent() const { return sent_; }

 private:
  Kalvo_TcpStream stream_;
  bool connected_ = false;
  int sent_ = 0;
};

#endif  // GATEWAY_UPLINK_H_
