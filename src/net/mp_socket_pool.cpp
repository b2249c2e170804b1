#include "net/mp_socket_pool.h"

#include <new>

#include "net/mp_null_handler.h"
#include "net/mp_udp_port.h"
#include "platform/socket.h"

template <class Do>
void MP_SocketPool::ForEach(Do what) {
  for (std::atomic<Block*>& block : itemTable_) {
    if (block == nullptr) continue;
    for (std::atomic<MP_SocketItem*>& slot : block.load()->items) {
      MP_SocketItem* const item = slot;
      if (item != nullptr) what(item);
    }
  }
}

MP_SocketPool::~MP_SocketPool() {
  ForEach([](MP_SocketItem* item) {
    if (item->socket >= 0) {
      platform::socket_shutdown(item->socket);
      platform::socket_close(item->socket);
    }
    delete item;
  });
  for (std::atomic<Block*>& block : itemTable_) delete block.load();
}

void MP_SocketPool::Abandon() {
  ForEach([](MP_SocketItem* item) {
    if (item->type == SOCK_KIND_UDP) {
      MP_UdpPort& port = MP_UdpPort::Of(*static_cast<Kalvo_UdpHandler*>(item->handler));
      port.socket = -1;
      port.groupSocket = -1;
    }
    item->type = SOCK_KIND_FREE;
    item->id = item->id & ~MP_SocketItem::kGenerationMask;
    if (item->socket >= 0) platform::socket_close(item->socket);
    item->socket = -1;
  });
}

MP_SocketItem* MP_SocketPool::Alloc() {
  const MP_ShieldedGuard guard(&tableLock_);
  auto* item = static_cast<MP_SocketItem*>(freeItems_.RemoveItemAtHead(0));
  if (item == nullptr) item = AddItem();
  if (item == nullptr) return nullptr;
  item->id = (item->id & ~MP_SocketItem::kGenerationMask) | generation_;
  generation_ = (generation_ + 1) & MP_SocketItem::kGenerationMask;
  if (generation_ == 0) generation_ = 1;
  return item;
}

MP_SocketItem* MP_SocketPool::AddItem() {
  if (itemCount_ == kMaxItems) return nullptr;
  std::atomic<Block*>& block = itemTable_[itemCount_ / kBlockSize];
  if (block == nullptr) block = new (std::nothrow) Block;
  auto* const item = block != nullptr ? new (std::nothrow) MP_SocketItem : nullptr;
  if (item == nullptr) return nullptr;
  item->id = static_cast<std::uint32_t>(itemCount_) << 16;
  block.load()->items[itemCount_ % kBlockSize] = item;
  ++itemCount_;
  return item;
}

MP_SocketItem* MP_SocketPool::Find(std::uint32_t id) const {
  const std::uint32_t place = id >> 16;
  Block* const block = itemTable_[place / kBlockSize];
  if (block == nullptr) return nullptr;
  MP_SocketItem* const item = block->items[place % kBlockSize];
  return item != nullptr && item->id == id && !item->IsIdle() ? item : nullptr;
}

void MP_SocketPool::Free(MP_SocketItem* item) {
  const MP_Guard state(&item->stateLock);
  if (item->IsIdle()) return;
  connectQueue_->Remove(item);
  {
    const MP_Guard send(&item->sendLock);
    CloseSocket(item);
    item->id = item->id & ~MP_SocketItem::kGenerationMask;
    item->type = SOCK_KIND_FREE;
    item->handler = MP_NullHandler::Get();
    item->connected = false;
    item->reconnect = false;
    item->bindAddr = nullptr;
    item->localAddr = nullptr;
    item->peerAddr = nullptr;
    item->sends.Clear();
    item->lastSendTick = 0;
    item->DropInput();
    item->acceptOwner = nullptr;
    item->acceptIndex = -1;
    item->ofGroups = false;
  }
  const MP_ShieldedGuard guard(&tableLock_);
  freeItems_.AddItemAtTail(item);
}

void MP_SocketPool::CloseSocket(MP_SocketItem* item) {
  item->sends.Clear();
  item->sendError = 0;
  const int socket = item->socket;
  if (socket < 0) return;
  platform::port_remove(port_, item->tag);
  item->socket = -1;  // first, for a child that is forked in between
  item->tag = 0;
  if (item->type != SOCK_KIND_UDP) platform::socket_shutdown(socket);
  platform::socket_close(socket);
}
