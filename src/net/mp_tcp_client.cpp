#include "net/mp_tcp_client.h"

#include <memory>

#include "net/socket_managers.h"
#include "text/mp_string.h"

MP_TcpClient::MP_TcpClient() { Kalvo_SOCK_Init(); }

void MP_TcpClient::InitLocal(const char* host, int port) {
  if (id_ != 0) return;
  localAddr.Init(host, port);
  bound_ = true;
}

unsigned long MP_TcpClient::Connect(Kalvo_TcpClientHandler* handler, const char* host, int port) {
  if (id_ != 0 || host == nullptr) return 0;
  peerAddr.Init(host, port);
  if (manager_ == nullptr) manager_ = engine_ = socket_managers::GetManager(MANAGER_SHARED);
  if (manager_ == nullptr) return 0;
  const unsigned long id = manager_->Connect(handler);
  // The engine has told its own id already, and a call of the handler may have closed it since.
  if (engine_ == nullptr) id_ = static_cast<std::uint32_t>(id);
  return id;
}

void MP_TcpClient::Close() {
  const std::uint32_t id = id_;
  if (id == 0) return;
  if (manager_ != nullptr) manager_->Close(id);
  id_ = 0;
}

int MP_TcpClient::SendData(const char* data, int length) {
  const std::uint32_t id = id_;
  if (id == 0) return -1;
  if (data == nullptr || length < 1 || manager_ == nullptr) return 0;
  if (engine_ != nullptr) return engine_->SendBytes(id, data, length) > 0 ? length : 0;
  auto copy = std::make_unique<Kalvo_String>();
  copy->memcpy(data, length);
  Kalvo_String* given = copy.release();
  const int result = manager_->Send(id, given);
  if (result > 0) return length;
  delete given;
  return 0;
}

int MP_TcpClient::SendData(Kalvo_String*& data) {
  const std::uint32_t id = id_;
  if (id == 0) return -1;
  return manager_ != nullptr ? manager_->Send(id, data) : 0;
}

int MP_TcpClient::Print(const char* format, va_list args) {
  if (id_ == 0) return -1;
  Kalvo_String text;
  text.vsprintf(format, args);
  const MP_String& bytes = MP_String::Of(text);
  return SendData(bytes.Content(), bytes.Length());
}

void MP_TcpClient::SetManager(Kalvo_SocketManagerHelper* manager) {
  manager_ = manager;
  engine_ = socket_managers::FindManager(manager);
}

void MP_TcpClient::Adopt(MP_SocketManager* manager, std::uint32_t id) {
  manager_ = manager;
  engine_ = manager;
  id_ = id;
}
