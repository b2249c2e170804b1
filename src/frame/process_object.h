// An object of which a process has one, made on first use.
//
// ProcessObjects are static and have no destructor: they serve from before the first
// static constructor to after the last static destructor of the host. klbase_fini frees
// what they hold; a later Get makes it anew, for hosts whose own static objects die late.

#ifndef KALVOBASE_SRC_FRAME_PROCESS_OBJECT_H_
#define KALVOBASE_SRC_FRAME_PROCESS_OBJECT_H_

#include <atomic>
#include <mutex>
#include <new>

template <class T>
class ProcessObject {
 public:
  constexpr ProcessObject() = default;
  ProcessObject(const ProcessObject&) = delete;
  ProcessObject& operator=(const ProcessObject&) = delete;

  // The object, made by the first of all callers. Its constructor must not ask for it. Null if
  // memory ran out; the next call tries again.
  T* Get() {
    T* object = object_.load(std::memory_order_acquire);
    if (object != nullptr) return object;
    std::lock_guard<std::mutex> guard(lock_);
    object = object_.load(std::memory_order_relaxed);
    if (object == nullptr) {
      object = new (std::nothrow) T;
      object_.store(object, std::memory_order_release);
    }
    return object;
  }

  // The object, if there is one.
  T* Peek() const { return object_.load(std::memory_order_acquire); }

  // Frees the object, if there is one. Nobody else may be using it.
  void Free() { delete object_.exchange(nullptr, std::memory_order_acq_rel); }

 private:
  std::atomic<T*> object_{nullptr};
  std::mutex lock_;
};

#endif  // KALVOBASE_SRC_FRAME_PROCESS_OBJECT_H_
