// The armed timers: lists of at most 256, each sorted by the time at which they are due.
//
// A pass over them looks at the first of each list and nothing else. A short list in one piece
// of memory is changed faster than a long one or a tree. To the lists a timer is a place in the
// pool of records.

#ifndef KALVOBASE_SRC_TIMERS_MP_TIMER_LIST_H_
#define KALVOBASE_SRC_TIMERS_MP_TIMER_LIST_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

// When a timer is due, in milliseconds on the service's clock, and whether it may fire up to
// kSlack milliseconds early. Later times are greater.
class MP_TimerDue {
 public:
  static constexpr std::uint64_t kSlack = 4;

  MP_TimerDue() = default;
  MP_TimerDue(std::uint64_t time, bool exact) : bits_(time << 1 | (exact ? 1 : 0)) {}

  std::uint64_t time() const { return bits_ >> 1; }
  bool IsExact() const { return (bits_ & 1) != 0; }

  bool operator<(MP_TimerDue other) const { return time() < other.time(); }

 private:
  std::uint64_t bits_ = 0;
};

class MP_TimerList {
 public:
  static constexpr std::size_t kCapacity = 256;

  bool IsEmpty() const { return count_ == 0; }
  bool IsFull() const { return count_ == kCapacity; }

  // Puts a timer behind those that are due no later. Throws std::bad_alloc only for the first
  // one that the list ever gets.
  void Add(MP_TimerDue due, std::uint16_t place);

  // Takes out one that is in the list.
  void Remove(MP_TimerDue due, std::uint16_t place);

  // When the first is due; the list is not empty.
  MP_TimerDue First() const { return slots_->due[0]; }

  // True if a timer that is due at that time must not fire early.
  bool HasExact(std::uint64_t time) const;

  // Moves those that are due by `time` to the end of `*places`, in their order. That has room.
  void TakeDue(std::uint64_t time, std::vector<std::uint16_t>* places);

 private:
  struct Slots {
    MP_TimerDue due[kCapacity];
    std::uint16_t place[kCapacity];
  };

  std::size_t CountUpTo(MP_TimerDue due, bool included) const;
  void Erase(std::size_t at, std::size_t n);

  std::unique_ptr<Slots> slots_;
  std::size_t count_ = 0;
};

// All lists. A timer goes to the first one that has room.
class MP_TimerLists {
 public:
  static constexpr std::size_t kCount = 256;

  // Returns the number of the list, which Disarm needs.
  std::uint8_t Arm(MP_TimerDue due, std::uint16_t place);
  void Disarm(std::uint8_t list, MP_TimerDue due, std::uint16_t place);

  // Moves the places of the timers that fire at `now` to the end of `*places`, which has room.
  // Returns when the next timer is due, or `latest` if none is before that.
  std::uint64_t TakeDue(std::uint64_t now, std::uint64_t latest,
                        std::vector<std::uint16_t>* places);

 private:
  std::uint64_t FiringTime(std::uint64_t now) const;

  MP_TimerList lists_[kCount];
  std::size_t firstOpen_ = 0;  // the lists in front of this one are full
  std::size_t used_ = 0;       // the lists from this one on were never used
};

#endif  // KALVOBASE_SRC_TIMERS_MP_TIMER_LIST_H_
