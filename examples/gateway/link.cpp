#include "link.h"

#include <algorithm>

Link::~Link() { Close(); }

void* Link::AllocBufferForRead(long& size) {
  size = std::min(size, static_cast<long>(sizeof(buffer_)));
  return buffer_;
}

void Link::OnConnectOk(Kalvo_SocketAddr*, int) {}
int Link::OnConnectFaild(Kalvo_SocketAddr*, int) { return -1; }

int Link::OnDisConnect(Kalvo_SocketAddr*, int error) {
  if (name_.length() > 0) fleet_->Lose(name_.c_str(), error);
  server_->Remove(this);
  return -1;
}

// Each table is answered with one byte. Who sends anything else is cut off.
int Link::OnDataOk(void* data, long length) {
  frames_.Add(data, length);
  for (;;) {
    Kalvo_KValueTable table;
    const FrameReader::Result result = frames_.Take(&table);
    if (result == FrameReader::kNotYet) return 0;
    if (result == FrameReader::kWrong || !fleet_->Take(&table, &name_)) return -1;
    SendData("!", 1);
  }
}

// Connections may end while this closes them: each is deleted by whoever takes it out.
LinkServer::~LinkServer() {
  Close();
  for (;;) {
    Link* link = nullptr;
    {
      Kalvo_AutoLock guard(&lock_);
      if (links_.empty()) return;
      link = *links_.begin();
      links_.erase(links_.begin());
    }
    delete link;
  }
}

Kalvo_TcpClientHandler* LinkServer::OnAcceptClient(Kalvo_SocketAddr*) {
  Link* link = new Link(this, fleet_);
  Kalvo_AutoLock guard(&lock_);
  links_.insert(link);
  return link;
}

void LinkServer::Remove(Link* link) {
  {
    Kalvo_AutoLock guard(&lock_);
    if (links_.erase(link) == 0) return;
  }
  delete link;
}
