#include "concurrency/mp_queue_item.h"

#include <algorithm>
#include <new>

namespace {

constexpr std::uint32_t kSmallestBlock = 4;
constexpr std::uint32_t kLargestBlock = 256;

}  // namespace

struct MP_QueueItemPool::Block {
  Block* next;
  MP_QueueItem* items;
};

bool MP_QueueItemPool::AddBlock() {
  const std::uint32_t count = std::clamp(total_, kSmallestBlock, kLargestBlock);
  MP_QueueItem* items = new (std::nothrow) MP_QueueItem[count];
  if (items == nullptr) return false;
  Block* block = new (std::nothrow) Block{blocks_, items};
  if (block == nullptr) {
    delete[] items;
    return false;
  }
  blocks_ = block;
  for (std::uint32_t i = count; i > 0; --i) {
    items[i - 1].next = spares_;
    spares_ = &items[i - 1];
  }
  total_ += count;
  return true;
}

void MP_QueueItemPool::FreeBlocks() {
  while (blocks_ != nullptr) {
    Block* block = blocks_;
    blocks_ = block->next;
    delete[] block->items;
    delete block;
  }
  spares_ = nullptr;
  total_ = 0;
}
