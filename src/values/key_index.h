// The hash map of a table: from keys to entries.

#ifndef KALVOBASE_SRC_VALUES_KEY_INDEX_H_
#define KALVOBASE_SRC_VALUES_KEY_INDEX_H_

#include <cstdint>
#include <memory>

#include "frame/block_pool.h"
#include "values/mp_key.h"

class MP_TableEntry;

// An entry stays where it is found when somebody changes the key that the table handed out,
// so the node reads the entry's key only until that changes, and has one of its own then.
struct KeyNode {
  KeyNode* next;
  MP_TableEntry* entry;
  const MP_Key* key;
  std::unique_ptr<MP_Key> own;  // null while `key` is the entry's
  std::uint32_t hash;
  bool ignoresCase;

  // Copies the key that it reads.
  void TakeOwnKey();
};

// 97 chains, the newest node first. The nodes of a small index are in one chain, where each
// keeps to those that it would share a chain with. Everything is given back with the last
// node.
class KeyIndex {
 public:
  KeyIndex() = default;
  KeyIndex(const KeyIndex&) = delete;
  KeyIndex& operator=(const KeyIndex&) = delete;
  ~KeyIndex() { Clear(); }

  // The first node of its chain with an equal key, or null. `hash` is that of the cut key.
  KeyNode* Find(const KeyView& key, std::uint32_t hash);

  // A new node for the key of an entry, cut if it holds zero bytes.
  KeyNode* Add(std::uint32_t hash, MP_TableEntry* entry);

  void Remove(KeyNode* node);

  // For when all entries go.
  void Clear();
  void Swap(KeyIndex& other);

 private:
  static constexpr std::uint32_t kBuckets = 97;
  static constexpr std::uint32_t kMostInOneChain = 8;

  KeyNode*& Chain(std::uint32_t hash) {
    return buckets_ != nullptr ? buckets_[hash % kBuckets] : oneChain_;
  }
  void SpreadOut();
  void DestroyChain(KeyNode* node);

  KeyNode* oneChain_ = nullptr;  // unless there are buckets
  std::unique_ptr<KeyNode*[]> buckets_;
  std::uint32_t count_ = 0;
  BlockPool<KeyNode, 2, 128, 0> nodes_;
};

#endif  // KALVOBASE_SRC_VALUES_KEY_INDEX_H_
