// The descriptor of a stream, which one thread uses and another may take away.

#ifndef KALVOBASE_SRC_FILES_STREAM_DESCRIPTOR_H_
#define KALVOBASE_SRC_FILES_STREAM_DESCRIPTOR_H_

#include <atomic>

#include "platform/clock.h"

class StreamDescriptor {
 public:
  int Get() const { return number_; }
  void Set(int number) { number_ = number; }

  // Waits until no Use has a descriptor from before the last Set, so that the descriptor can
  // be closed. Whoever uses it must be on his way out.
  void WaitUntilUnused() const {
    while (used_) platform::sleep_ms(1);
  }

  // Keeps the descriptor from being closed while a transfer runs.
  class Use {
   public:
    explicit Use(StreamDescriptor* descriptor) : descriptor_(descriptor) {
      descriptor_->used_ = true;  // before the number is looked at
      number_ = descriptor_->number_;
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { descriptor_->used_ = false; }

    int number() const { return number_; }  // -1 for none

   private:
    StreamDescriptor* const descriptor_;
    int number_;
  };

 private:
  std::atomic<int> number_{-1};
  std::atomic<bool> used_{false};
};

#endif  // KALVOBASE_SRC_FILES_STREAM_DESCRIPTOR_H_
