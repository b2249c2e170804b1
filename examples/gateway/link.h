// The gateway's side of its connections.

#ifndef GATEWAY_LINK_H_
#define GATEWAY_LINK_H_

#include <kalvobase/kalvobase.h>

#include <set>

#include "fleet.h"
#include "frame.h"

class LinkServer;

// The connection of one agent, which exists as long as it stands.
class Link : public Kalvo_TcpClientHandler {
 public:
  Link(LinkServer* server, Fleet* fleet) : server_(server), fleet_(fleet) {}
  ~Link() override;

  void* AllocBufferForRead(long& size) override;
  void OnConnectOk(Kalvo_SocketAddr* peer, int active) override;
  int OnConnectFaild(Kalvo_SocketAddr* peer, int error) override;
  int OnDisConnect(Kalvo_SocketAddr* peer, int error) override;
  int OnDataOk(void* data, long length) override;

 private:
  LinkServer* server_;
  Fleet* fleet_;
  FrameReader frames_;
  Kalvo_String name_;  // of the agent, once it has told it
  char buffer_[16384];
};

// Takes the agents' connections.
class LinkServer : public Kalvo_TcpServerHandler {
 public:
  // What they tell goes to `fleet`, which must outlive this.
  explicit LinkServer(Fleet* fleet) : fleet_(fleet) {}
  ~LinkServer() override;

  Kalvo_TcpClientHandler* OnAcceptClient(Kalvo_SocketAddr* peer) override;

  // A connection has ended, which is deleted. Called by itself.
  void Remove(Link* link);

 private:
  Fleet* fleet_;
  Kalvo_Lock lock_;  // guards the links
  std::set<Link*> links_;
};

#endif  // GATEWAY_LINK_H_
