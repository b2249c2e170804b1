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

// When the engine's Connect returns, calls of the handler may have closed the connection already,
// or destroyed this; so the engine itself tells the id.
unsigned long MP_TcpClient::Connect(Kalvo_TcpClientHandler* handler, const char* host, int port) {
  if (id_ != 0 || host == nullptr) return 0;
  peerAddr.Init(host, port);
  if (hosts_ != nullptr) {
    const unsigned long id = hosts_->Connect(handler);
    id_ = static_cast<std::uint32_t>(id);
    return id;
  }
  {
    const MP_EngineCall call(engine_);
    if (call.engine() != nullptr) return call.engine()->Connect(handler);
  }
  engine_ = MP_EngineRef(socket_managers::GetManager(MANAGER_SHARED));
  const MP_EngineCall call(engine_);
  return call.engine() != nullptr ? call.engine()->Connect(handler) : 0;
}

void MP_TcpClient::Close() {
  const std::uint32_t id = id_;
  if (id == 0) return;
  if (hosts_ != nullptr) {
    hosts_->Close(id);
  } else {
    const MP_EngineCall call(engine_);
    if (call.engine() != nullptr) call.engine()->Close(id);
  }
  id_ = 0;
}

int MP_TcpClient::SendData(const char* data, int length) {
  const std::uint32_t id = id_;
  if (id == 0) return -1;
  if (data == nullptr || length < 1) return 0;
  return SendBytes(id, data, length) > 0 ? length : 0;
}

int MP_TcpClient::SendBytes(std::uint32_t id, const char* data, int length) {
  if (hosts_ == nullptr) {
    const MP_EngineCall call(engine_);
    return call.engine() != nullptr ? call.engine()->SendBytes(id, data, length) : 0;
  }
  auto copy = std::make_unique<Kalvo_String>();
  copy->memcpy(data, length);
  Kalvo_String* given = copy.release();
  const int result = hosts_->Send(id, given);
  if (result < 1) delete given;
  return result;
}

int MP_TcpClient::SendData(Kalvo_String*& data) {
  const std::uint32_t id = id_;
  if (id == 0) return -1;
  if (hosts_ != nullptr) return hosts_->Send(id, data);
  const MP_EngineCall call(engine_);
  return call.engine() != nullptr ? call.engine()->Send(id, data) : 0;
}

int MP_TcpClient::Print(const char* format, va_list args) {
  if (id_ == 0) return -1;
  Kalvo_String text;
  text.vsprintf(format, args);
  const MP_String& bytes = MP_String::Of(text);
  return SendData(bytes.Content(), bytes.Length());
}

void MP_TcpClient::SetManager(Kalvo_SocketManagerHelper* manager) {
  MP_SocketManager* const engine = socket_managers::FindManager(manager);
  engine_ = MP_EngineRef(engine);
  hosts_ = engine == nullptr ? manager : nullptr;
}

void MP_TcpClient::Adopt(MP_SocketManager* engine, std::uint32_t id) {
  engine_ = MP_EngineRef(engine);
  hosts_ = nullptr;
  id_ = id;
}
