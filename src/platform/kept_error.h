// The calling thread's error number, kept while a function cleans up.

#ifndef KALVOBASE_SRC_PLATFORM_KEPT_ERROR_H_
#define KALVOBASE_SRC_PLATFORM_KEPT_ERROR_H_

#include <cerrno>

namespace platform {

// Declare one before whatever is cleaned up at the end of the scope. Freeing memory and closing
// may change the error number; the end of this object sets it to what Note found.
class KeptError {
 public:
  KeptError() = default;
  KeptError(const KeptError&) = delete;
  KeptError& operator=(const KeptError&) = delete;
  ~KeptError() {
    if (noted_) errno = error_;
  }

  // Call this right after the call that may have failed.
  void Note() {
    error_ = errno;
    noted_ = true;
  }

 private:
  int error_ = 0;
  bool noted_ = false;
};

}  // namespace platform

#endif  // KALVOBASE_SRC_PLATFORM_KEPT_ERROR_H_
