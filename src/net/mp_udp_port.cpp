#include "net/mp_udp_port.h"

#include "net/socket_calls.h"
#include "net/socket_managers.h"
#include "platform/socket.h"
#include "text/mp_string.h"

MP_UdpPort::MP_UdpPort() : engine_(socket_managers::GetManager(MANAGER_SHARED)) {}

unsigned long MP_UdpPort::Open(Kalvo_UdpHandler* handler, const char* host, int port,
                               bool broadcast) {
  if (id_ != 0) return 0;
  if (!HasEngine()) engine_ = MP_EngineRef(socket_managers::GetManager(MANAGER_SHARED));
  const MP_EngineCall call(engine_);
  if (call.engine() == nullptr) return 0;
  localAddr.Init(host, port);
  bound_ = host != nullptr || port != 0;
  // The engine tells the id itself, since calls may come before this returns.
  return call.engine()->OpenUdp(handler, broadcast);
}

void MP_UdpPort::Close() {
  const std::uint32_t id = id_;
  if (id == 0) return;
  const std::uint32_t groupId = groupId_;
  socket = -1;
  groupSocket = -1;
  inGroup_ = false;
  const MP_EngineCall call(engine_);
  if (call.engine() != nullptr) {
    call.engine()->Close(id);
    if (groupId != 0) call.engine()->Close(groupId);
  }
  groupId_ = 0;
  id_ = 0;
}

int MP_UdpPort::SendData(Kalvo_SocketAddr* to, const char* data, int length) {
  if (id_ == 0) return -1;
  return net::SendTo(socket, to != nullptr ? &MP_SocketAddr::Of(*to) : nullptr, data, length);
}

int MP_UdpPort::Print(Kalvo_SocketAddr* to, const char* format, va_list args) {
  if (id_ == 0) return -1;
  Kalvo_String text;
  text.vsprintf(format, args);
  const MP_String& bytes = MP_String::Of(text);
  return SendData(to, bytes.Content(), bytes.Length());
}

void MP_UdpPort::EnableBroadcast(int on) {
  if (id_ != 0) platform::socket_set_broadcast(socket, on);
}

const char* MP_UdpPort::OwnAddress() const {
  const MP_SocketAddr& local = MP_SocketAddr::Of(localAddr);
  return local.isGroup() ? nullptr : local.internetBytes();
}

void MP_UdpPort::AddGroup(const char* address) {
  inGroup_ = false;
  if (address == nullptr) return;
  platform::parse_internet_address(address, group_);
  const char* const own = OwnAddress();
  inGroup_ = platform::socket_set_group_interface(socket, own) == 0 &&
             platform::socket_join_group(GroupSocket(), group_, own) == 0;
}

void MP_UdpPort::LeaveGroup() {
  if (!inGroup_) return;
  platform::socket_leave_group(GroupSocket(), group_, OwnAddress());
  inGroup_ = false;
}
