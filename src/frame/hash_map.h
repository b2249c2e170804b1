// A small hash map with a fixed number of chains, for tables that are built once and looked
// up in for ever.
//
// Keys are compared with whatever can be compared with them, and hashes are the caller's: a
// look-up by a text builds no string.

#ifndef KALVOBASE_SRC_FRAME_HASH_MAP_H_
#define KALVOBASE_SRC_FRAME_HASH_MAP_H_

#include <cstdint>
#include <new>
#include <utility>

#include "frame/block_pool.h"

template <class Key, class Value, std::uint32_t kBuckets>
class HashMap {
 public:
  HashMap() = default;
  HashMap(const HashMap&) = delete;
  HashMap& operator=(const HashMap&) = delete;

  ~HashMap() {
    for (Node* node : buckets_) {
      while (node != nullptr) {
        Node* gone = std::exchange(node, node->next);
        gone->~Node();
        nodes_.Give(gone);
      }
    }
  }

  // Null if there is no such key.
  template <class LookUp>
  Value* Find(const LookUp& key, std::uint32_t hash) const {
    for (Node* node = buckets_[hash % kBuckets]; node != nullptr; node = node->next) {
      if (node->hash == hash && node->key == key) return &node->value;
    }
    return nullptr;
  }

  // Replaces the value of a key that is there.
  template <class LookUp>
  void Put(const LookUp& key, std::uint32_t hash, Value value) {
    if (Value* found = Find(key, hash)) {
      *found = std::move(value);
      return;
    }
    Key copy(key);  // which may throw
    void* memory = nodes_.Take();
    if (memory == nullptr) throw std::bad_alloc();
    Node*& chain = buckets_[hash % kBuckets];
    chain = new (memory) Node{chain, hash, std::move(copy), std::move(value)};
  }

 private:
  struct Node {
    Node* next;
    std::uint32_t hash;
    Key key;
    Value value;
  };

  Node* buckets_[kBuckets] = {};
  BlockPool<Node, 10, 10, 0> nodes_;
};

#endif  // KALVOBASE_SRC_FRAME_HASH_MAP_H_
