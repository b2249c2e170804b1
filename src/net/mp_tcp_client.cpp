#include "net/mp_tcp_client.h"

#include <algorithm>
#include <memory>
#include <new>

#include "net/socket_managers.h"
#include "platform/process.h"
#include "text/mp_string.h"

MP_TcpClient::MP_TcpClient() : forks_(platform::fork_count()) { Kalvo_SOCK_Init(); }

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
  // Once more if the engine has accepted another connection for this handler meanwhile.
  for (std::uint32_t id = id_; id != 0; id = id_) {
    CloseCurrent(id);
    for (const std::uint32_t one : TakeEarlier()) {
      const MP_EngineCall call(engine_);
      if (call.engine() != nullptr) call.engine()->CloseOf(this, one);
    }
    id_.compare_exchange_strong(id, 0);
  }
}

void MP_TcpClient::CloseCurrent(std::uint32_t id) {
  if (hosts_ != nullptr) {
    hosts_->Close(id);
    return;
  }
  const MP_EngineCall call(engine_);
  if (call.engine() != nullptr) call.engine()->Close(id);
}

std::vector<std::uint32_t> MP_TcpClient::TakeEarlier() {
  if (forks_ != platform::fork_count()) lock_.TakeOver();  // a thread of the parent may hold it
  forks_ = platform::fork_count();
  std::vector<std::uint32_t> earlier;
  const MP_ShieldedGuard guard(&lock_);
  earlier.swap(earlier_);
  return earlier;
}

int MP_TcpClient::SendData(const char* data, int length) {
  const std::uint32_t id = id_;
  if (id == 0) return -1;
  const int size = data != nullptr && length > 0 ? length : 0;
  return SendBytes(id, data, size) > 0 ? length : 0;
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

bool MP_TcpClient::Reserve(MP_SocketManager* engine, const Kalvo_SocketAddr& local,
                           const Kalvo_SocketAddr& peer) {
  if (hosts_ != nullptr) {
    Close();
    hosts_ = nullptr;
  }
  if (!ReserveFor(engine)) return false;
  try {
    const std::uint32_t before = id_;
    if (before != 0) KeepEarlier(engine, before);
    localAddr = local;
    peerAddr = peer;
    return true;
  } catch (const std::bad_alloc&) {
    SetReserved(false);
    throw;
  }
}

// Two servers may return the handler at the same time. The first one to come has it.
bool MP_TcpClient::ReserveFor(MP_SocketManager* engine) {
  const MP_ShieldedGuard guard(&lock_);
  const MP_EngineCall call(engine_);
  const std::uint32_t before = id_;
  if (call.engine() != engine) {
    const auto isOpen = [&call](std::uint32_t id) { return call.engine()->IsOpen(id); };
    const bool serves = call.engine() != nullptr &&
                        (isOpen(before) || std::any_of(earlier_.begin(), earlier_.end(), isOpen));
    if (reserved_ || serves) return false;
    earlier_.clear();
    engine_ = MP_EngineRef(engine);
  } else if (call.engine()->IsMadeByHost(before)) {
    return false;
  }
  reserved_ = true;
  return true;
}

void MP_TcpClient::SetReserved(bool reserved) {
  const MP_ShieldedGuard guard(&lock_);
  reserved_ = reserved;
}

void MP_TcpClient::Adopt(std::uint32_t id) {
  id_ = id;
  SetReserved(false);
}

// The ids of connections that have ended are dropped each time that their number has doubled.
void MP_TcpClient::KeepEarlier(MP_SocketManager* engine, std::uint32_t id) {
  if (!engine->KeepAddresses(id, &localAddr, &peerAddr)) return;
  const MP_ShieldedGuard guard(&lock_);
  if (earlier_.size() == earlier_.capacity()) {
    const auto ended = [engine](std::uint32_t one) { return !engine->IsOpen(one); };
    earlier_.erase(std::remove_if(earlier_.begin(), earlier_.end(), ended), earlier_.end());
    earlier_.reserve(2 * earlier_.size() + 8);
  }
  earlier_.push_back(id);
}
