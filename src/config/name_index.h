// Finds objects by their names. The objects have `name`, which stays as it is while they are
// in the index, and `hash`, which is the index's.

#ifndef KALVOBASE_SRC_CONFIG_NAME_INDEX_H_
#define KALVOBASE_SRC_CONFIG_NAME_INDEX_H_

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

template <class T>
class NameIndex {
 public:
  // Null if there is none.
  T* Find(std::string_view name) const {
    if (slots_.empty()) return nullptr;
    const std::size_t hash = Hash(name);
    for (std::size_t i = Home(hash); slots_[i] != nullptr; i = After(i)) {
      if (slots_[i]->hash == hash && slots_[i]->name == name) return slots_[i];
    }
    return nullptr;
  }

  // The name must not be there yet.
  void Add(T* object) {
    if ((count_ + 1) * 2 > slots_.size()) Grow();
    object->hash = Hash(object->name);
    Place(object);
    ++count_;
  }

  // Moves up what stood behind the object because its own place was taken.
  void Remove(const T* object) {
    std::size_t hole = Home(object->hash);
    while (slots_[hole] != object) hole = After(hole);
    for (std::size_t i = After(hole); slots_[i] != nullptr; i = After(i)) {
      if (Distance(Home(slots_[i]->hash), i) < Distance(hole, i)) continue;
      slots_[hole] = slots_[i];
      hole = i;
    }
    slots_[hole] = nullptr;
    --count_;
  }

  void Clear() {
    slots_.clear();
    count_ = 0;
  }

 private:
  static std::size_t Hash(std::string_view name) { return std::hash<std::string_view>()(name); }
  std::size_t Home(std::size_t hash) const { return hash & (slots_.size() - 1); }
  std::size_t After(std::size_t i) const { return (i + 1) & (slots_.size() - 1); }
  std::size_t Distance(std::size_t from, std::size_t to) const {
    return (to - from) & (slots_.size() - 1);
  }

  void Place(T* object) {
    std::size_t i = Home(object->hash);
    while (slots_[i] != nullptr) i = After(i);
    slots_[i] = object;
  }

  void Grow() {
    std::vector<T*> old(slots_.empty() ? 4 : slots_.size() * 2);  // a power of two
    old.swap(slots_);
    for (T* object : old) {
      if (object != nullptr) Place(object);
    }
  }

  std::vector<T*> slots_;  // at most half of them taken
  std::size_t count_ = 0;
};

#endif  // KALVOBASE_SRC_CONFIG_NAME_INDEX_H_
