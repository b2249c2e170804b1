// MP_ConnectQueue: the records that wait for their time to connect.

#ifndef KALVOBASE_SRC_NET_MP_CONNECT_QUEUE_H_
#define KALVOBASE_SRC_NET_MP_CONNECT_QUEUE_H_

#include <cstdint>

#include "net/mp_socket_item.h"

// A list of delays, each of which begins when the record ahead has gone. One that is put in
// between pushes those behind it back by its own.
//
// Its lock is innermost: records are put in and taken out by whoever holds their stateLock,
// without a look at the state of others.
class MP_ConnectQueue {
 public:
  // Puts a record in, behind those that are due no later; one that is in already is moved.
  void Schedule(MP_SocketItem* item, int delay);

  // Takes a record out. Nothing happens if it is not in.
  void Remove(MP_SocketItem* item);

  // A pass over what is due begins. Records that are put in from now on wait for the next one.
  void BeginPass();

  // The record ahead of those that wait for this pass; null if there is none.
  MP_SocketItem* Head();

  // Charges the record `elapsed` milliseconds. Returns kDue if that was enough: the record was
  // taken out, and `elapsed` is by how much it is late. Returns kNotDue, with `elapsed` 0, if not,
  // and kGone if the record does not wait for this pass any more.
  enum class Charged { kDue, kNotDue, kGone };
  Charged Charge(MP_SocketItem* item, int* elapsed);

 private:
  MP_Lock lock_;
  Kalvo_Queue items_{0, 0};
  std::uint32_t turn_ = 0;
};

#endif  // KALVOBASE_SRC_NET_MP_CONNECT_QUEUE_H_
