// Objects in a row, which owns them. Objects have `order`, which is the row's.

#ifndef KALVOBASE_SRC_CONFIG_ROW_H_
#define KALVOBASE_SRC_CONFIG_ROW_H_

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

// Removing the first or the last costs no more than adding one, however many there are.
template <class T>
class Row {
 public:
  using Items = std::vector<std::unique_ptr<T>>;

  std::size_t size() const { return items_.size() - first_; }
  T& operator[](std::size_t i) const { return *items_[first_ + i]; }

  // An `i` beyond either end means the last. The row must not be empty.
  T& AtOrLast(int i) const {
    const std::size_t place = static_cast<std::size_t>(i);
    return *(i >= 0 && place < size() ? items_[first_ + place] : items_.back());
  }

  T* Add(std::unique_ptr<T> object) {
    object->order = nextOrder_++;
    items_.push_back(std::move(object));
    return items_.back().get();
  }

  std::size_t PlaceOf(const T& object) const {
    const auto found = std::lower_bound(
        begin(), end(), object.order,
        [](const std::unique_ptr<T>& item, std::size_t order) { return item->order < order; });
    return static_cast<std::size_t>(found - begin());
  }

  void Remove(const T& object) {
    const std::size_t place = PlaceOf(object);
    if (place > 0) {
      items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(first_ + place));
      return;
    }
    items_[first_++].reset();
    if (first_ <= items_.size() / 2) return;
    items_.erase(items_.begin(), begin());
    first_ = 0;
  }

  // Hands over all objects.
  Items TakeAll() {
    Items all(std::make_move_iterator(items_.begin() + static_cast<std::ptrdiff_t>(first_)),
              std::make_move_iterator(items_.end()));
    items_.clear();
    first_ = 0;
    return all;
  }

  typename Items::const_iterator begin() const {
    return items_.begin() + static_cast<std::ptrdiff_t>(first_);
  }
  typename Items::const_iterator end() const { return items_.end(); }

 private:
  Items items_;  // with nothing in front of first_
  std::size_t first_ = 0;
  std::size_t nextOrder_ = 0;
};

#endif  // KALVOBASE_SRC_CONFIG_ROW_H_
