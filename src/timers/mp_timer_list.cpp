#include "timers/mp_timer_list.h"

#include <algorithm>

// How many are due before `due`, or no later. Which half of the list that is in is up to
// chance, so the search computes its way instead of branching.
std::size_t MP_TimerList::CountUpTo(MP_TimerDue due, bool included) const {
  const MP_TimerDue* from = slots_->due;
  std::size_t n = count_;
  while (n > 0) {
    const std::size_t half = (n + 1) / 2;
    const bool before = included ? !(due < from[half - 1]) : from[half - 1] < due;
    from += half * static_cast<std::size_t>(before);
    n -= half;
  }
  return static_cast<std::size_t>(from - slots_->due);
}

void MP_TimerList::Add(MP_TimerDue due, std::uint16_t place) {
  if (slots_ == nullptr) slots_ = std::make_unique<Slots>();
  Slots& slots = *slots_;
  const bool last = count_ == 0 || !(due < slots.due[count_ - 1]);
  const std::size_t at = last ? count_ : CountUpTo(due, true);
  std::copy_backward(slots.due + at, slots.due + count_, slots.due + count_ + 1);
  std::copy_backward(slots.place + at, slots.place + count_, slots.place + count_ + 1);
  slots.due[at] = due;
  slots.place[at] = place;
  ++count_;
}

void MP_TimerList::Remove(MP_TimerDue due, std::uint16_t place) {
  std::size_t at = CountUpTo(due, false);
  while (slots_->place[at] != place) ++at;
  Erase(at, 1);
}

void MP_TimerList::Erase(std::size_t at, std::size_t n) {
  Slots& slots = *slots_;
  std::copy(slots.due + at + n, slots.due + count_, slots.due + at);
  std::copy(slots.place + at + n, slots.place + count_, slots.place + at);
  count_ -= n;
}

bool MP_TimerList::HasExact(std::uint64_t time) const {
  bool exact = false;
  for (std::size_t i = 0; i < count_ && slots_->due[i].time() <= time; ++i) {
    exact = exact || (slots_->due[i].time() == time && slots_->due[i].IsExact());
  }
  return exact;
}

void MP_TimerList::TakeDue(std::uint64_t time, std::vector<std::uint16_t>* places) {
  const std::size_t taken = CountUpTo(MP_TimerDue(time, false), true);
  places->insert(places->end(), slots_->place, slots_->place + taken);
  Erase(0, taken);
}

std::uint8_t MP_TimerLists::Arm(MP_TimerDue due, std::uint16_t place) {
  while (lists_[firstOpen_].IsFull()) ++firstOpen_;
  lists_[firstOpen_].Add(due, place);
  used_ = std::max(used_, firstOpen_ + 1);
  return static_cast<std::uint8_t>(firstOpen_);
}

void MP_TimerLists::Disarm(std::uint8_t list, MP_TimerDue due, std::uint16_t place) {
  lists_[list].Remove(due, place);
  firstOpen_ = std::min<std::size_t>(firstOpen_, list);
}

std::uint64_t MP_TimerLists::TakeDue(std::uint64_t now, std::uint64_t latest,
                                     std::vector<std::uint16_t>* places) {
  const std::uint64_t time = FiringTime(now);
  std::uint64_t next = latest;
  for (std::size_t i = 0; i < used_; ++i) {
    MP_TimerList& list = lists_[i];
    if (!list.IsEmpty() && list.First().time() <= time) {
      list.TakeDue(time, places);
      firstOpen_ = std::min(firstOpen_, i);
    }
    if (!list.IsEmpty()) next = std::min(next, list.First().time());
  }
  return next;
}

// Timers that are due by this time fire at `now`. Timers that are due already fire alone. Only if
// there are none, those that are due next fire early: so none overtakes one that is due before it,
// and what a firing sets back does not fire with it.
std::uint64_t MP_TimerLists::FiringTime(std::uint64_t now) const {
  std::uint64_t next = now + MP_TimerDue::kSlack + 1;
  for (std::size_t i = 0; i < used_; ++i) {
    if (!lists_[i].IsEmpty()) next = std::min(next, lists_[i].First().time());
  }
  if (next <= now || next > now + MP_TimerDue::kSlack) return now;
  const bool exact = std::any_of(lists_, lists_ + used_,
                                 [next](const MP_TimerList& list) { return list.HasExact(next); });
  return exact ? now : next;
}
