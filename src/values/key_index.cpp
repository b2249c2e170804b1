#include "values/key_index.h"

#include <new>
#include <utility>

#include "values/table_entry.h"

// Two keys that both heed case, or both ignore it, are equal only if their hashes are. A
// key of the one sort can equal one of the other with another hash, if the two fell into
// one bucket.
KeyNode* KeyIndex::Find(const KeyView& key, std::uint32_t hash) {
  const bool ignoresCase = key.caseFlag == 0;
  for (KeyNode* node = Chain(hash); node != nullptr; node = node->next) {
    if (node->hash != hash) {
      if (node->ignoresCase == ignoresCase) continue;
      if (node->hash % kBuckets != hash % kBuckets) continue;
    }
    if (node->key->View() == key) return node;
  }
  return nullptr;
}

void KeyNode::TakeOwnKey() {
  if (own != nullptr) return;
  own = std::make_unique<MP_Key>(key->View());
  entry->keyBody.SetReader(nullptr);
  key = own.get();
}

KeyNode* KeyIndex::Add(std::uint32_t hash, MP_TableEntry* entry) {
  if (buckets_ == nullptr && count_ == kMostInOneChain) SpreadOut();
  const KeyView view = entry->keyBody.View();
  std::unique_ptr<MP_Key> cut;
  if (view.holdsZeros) cut = std::make_unique<MP_Key>(view.Cut());
  void* memory = nodes_.Take();
  if (memory == nullptr) throw std::bad_alloc();
  KeyNode*& chain = Chain(hash);
  const MP_Key* key = cut != nullptr ? cut.get() : &entry->keyBody;
  chain = new (memory) KeyNode{chain, entry, key, std::move(cut), hash, view.caseFlag == 0};
  if (chain->own == nullptr) entry->keyBody.SetReader(chain);
  ++count_;
  return chain;
}

void KeyIndex::SpreadOut() {
  buckets_ = std::make_unique<KeyNode*[]>(kBuckets);
  KeyNode* oldestFirst = nullptr;
  for (KeyNode* node = std::exchange(oneChain_, nullptr); node != nullptr;) {
    KeyNode* next = std::exchange(node->next, oldestFirst);
    oldestFirst = std::exchange(node, next);
  }
  while (oldestFirst != nullptr) {
    KeyNode* node = std::exchange(oldestFirst, oldestFirst->next);
    node->next = std::exchange(Chain(node->hash), node);
  }
}

void KeyIndex::Remove(KeyNode* node) {
  KeyNode** link = &Chain(node->hash);
  while (*link != node) link = &(*link)->next;
  *link = node->next;
  if (node->own == nullptr) node->entry->keyBody.SetReader(nullptr);
  node->~KeyNode();
  nodes_.Give(node);
  if (--count_ == 0) buckets_.reset();
}

void KeyIndex::Clear() {
  DestroyChain(std::exchange(oneChain_, nullptr));
  for (std::uint32_t i = 0; count_ != 0; ++i) DestroyChain(buckets_[i]);
  buckets_.reset();
  nodes_.GiveAll();
}

void KeyIndex::DestroyChain(KeyNode* node) {
  for (; node != nullptr; --count_) std::exchange(node, node->next)->~KeyNode();
}

void KeyIndex::Swap(KeyIndex& other) {
  std::swap(oneChain_, other.oneChain_);
  std::swap(buckets_, other.buckets_);
  std::swap(count_, other.count_);
  nodes_.Swap(other.nodes_);
}
