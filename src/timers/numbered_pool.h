// A pool of entries that are named by 32-bit numbers, and recognise a number that is stale.
//
// A number has the entry's group in bits 24 to 31, its index in the group in bits 16 to 23, and
// in bits 0 to 15 a count that runs from 1 to 65535 and starts over, so it is never 0.

#ifndef KALVOBASE_SRC_TIMERS_NUMBERED_POOL_H_
#define KALVOBASE_SRC_TIMERS_NUMBERED_POOL_H_

#include <cstdint>
#include <memory>
#include <new>

// `Entry` has the members `std::uint32_t id`, which is 0 while it is free, `std::uint16_t place`
// and `Entry* nextFree`, which all belong to the pool.
template <class Entry>
class NumberedPool {
 public:
  static constexpr int kGroupSize = 256;
  static constexpr int kMaxGroups = 256;

  NumberedPool() = default;
  NumberedPool(const NumberedPool&) = delete;
  NumberedPool& operator=(const NumberedPool&) = delete;

  // Whether Take would find an entry; if not, AddGroup may help.
  bool HasFree() const { return firstFree_ != nullptr; }

  // False if there are as many as there can be, or memory ran out.
  bool AddGroup() {
    if (groupCount_ == kMaxGroups) return false;
    std::unique_ptr<Entry[]> group(new (std::nothrow) Entry[kGroupSize]);
    if (group == nullptr) return false;
    for (int i = 0; i < kGroupSize; ++i) {
      group[i].place = static_cast<std::uint16_t>(groupCount_ << 8 | i);
      Append(&group[i]);
    }
    groups_[groupCount_++] = std::move(group);
    return true;
  }

  int groupCount() const { return groupCount_; }

  // The entry that has been free the longest, with a new number.
  Entry* Take() {
    Entry* const entry = firstFree_;
    firstFree_ = entry->nextFree;
    if (firstFree_ == nullptr) lastFree_ = nullptr;
    sequence_ = sequence_ < 0xFFFF ? sequence_ + 1 : 1;
    entry->id = std::uint32_t{entry->place} << 16 | sequence_;
    return entry;
  }

  void Give(Entry* entry) {
    entry->id = 0;
    Append(entry);
  }

  // The entry at the place that a number tells, whatever its own number is; null if there is no
  // such place.
  Entry* At(std::uint32_t id) const {
    const std::unique_ptr<Entry[]>& group = groups_[id >> 24];
    return group != nullptr ? &group[id >> 16 & 0xFF] : nullptr;
  }

 private:
  void Append(Entry* entry) {
    entry->nextFree = nullptr;
    (lastFree_ != nullptr ? lastFree_->nextFree : firstFree_) = entry;
    lastFree_ = entry;
  }

  std::unique_ptr<Entry[]> groups_[kMaxGroups];
  int groupCount_ = 0;
  Entry* firstFree_ = nullptr;
  Entry* lastFree_ = nullptr;
  std::uint32_t sequence_ = 0;
};

#endif  // KALVOBASE_SRC_TIMERS_NUMBERED_POOL_H_
