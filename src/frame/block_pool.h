// Memory for objects of one type, in blocks of growing size, so that most objects cost no
// allocation. All blocks go back when the last object does, unless the pool is small.

#ifndef KALVOBASE_SRC_FRAME_BLOCK_POOL_H_
#define KALVOBASE_SRC_FRAME_BLOCK_POOL_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

// Blocks of `kSmallest` objects first and of `kLargest` at last. A pool of up to `kKept`
// objects keeps its memory.
template <class T, std::uint32_t kSmallest, std::uint32_t kLargest, std::uint32_t kKept>
class BlockPool {
 public:
  BlockPool() = default;
  BlockPool(const BlockPool&) = delete;
  BlockPool& operator=(const BlockPool&) = delete;
  ~BlockPool() { FreeBlocks(); }

  // Uninitialised memory for one object; null if memory ran out.
  void* Take() {
    Slot* slot = spares_;
    if (slot != nullptr) {
      spares_ = slot->next;
    } else if (fresh_ != freshEnd_ || AddBlock()) {
      slot = fresh_++;
    } else {
      return nullptr;
    }
    ++used_;
    return slot;
  }

  // Takes back the memory of an object that has been destroyed.
  void Give(void* memory) {
    Slot* slot = static_cast<Slot*>(memory);
    slot->next = spares_;
    spares_ = slot;
    if (--used_ == 0 && total_ > kKept) FreeBlocks();
  }

  // Takes back all objects at once, when they have been destroyed.
  void GiveAll() {
    FreeBlocks();
    used_ = 0;
  }

  void Swap(BlockPool& other) {
    std::swap(spares_, other.spares_);
    std::swap(fresh_, other.fresh_);
    std::swap(freshEnd_, other.freshEnd_);
    std::swap(blocks_, other.blocks_);
    std::swap(total_, other.total_);
    std::swap(used_, other.used_);
  }

 private:
  union Slot {
    Slot* next;
    alignas(T) unsigned char object[sizeof(T)];
  };

  struct alignas(Slot) Block {
    Block* next;
  };

  bool AddBlock() {
    const std::uint32_t count = std::clamp(total_, kSmallest, kLargest);
    void* memory = ::operator new(sizeof(Block) + count * sizeof(Slot), std::nothrow);
    if (memory == nullptr) return false;
    blocks_ = new (memory) Block{blocks_};
    fresh_ = static_cast<Slot*>(static_cast<void*>(blocks_ + 1));
    freshEnd_ = fresh_ + count;
    total_ += count;
    return true;
  }

  void FreeBlocks() {
    while (blocks_ != nullptr) {
      Block* block = blocks_;
      blocks_ = block->next;
      ::operator delete(block);
    }
    spares_ = fresh_ = freshEnd_ = nullptr;
    total_ = 0;
  }

  Slot* spares_ = nullptr;  // given back, chained by `next`
  Slot* fresh_ = nullptr;   // never used yet, up to freshEnd_
  Slot* freshEnd_ = nullptr;
  Block* blocks_ = nullptr;
  std::uint32_t total_ = 0;
  std::uint32_t used_ = 0;
};

#endif  // KALVOBASE_SRC_FRAME_BLOCK_POOL_H_
