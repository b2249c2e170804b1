// MP_StreamWriter: a buffer that goes to a descriptor: when it is full, at every line feed
// that is put as a byte of its own, and when it is told to.

#ifndef KALVOBASE_SRC_FILES_MP_STREAM_WRITER_H_
#define KALVOBASE_SRC_FILES_MP_STREAM_WRITER_H_

#include <cstdarg>

#include "files/mp_stream_core.h"
#include "files/stream_descriptor.h"
#include "files/stream_kind.h"

// It owns no descriptor and closes none. What cannot be written is lost: there is no second
// attempt.
class MP_StreamWriter : public MP_StreamCore {
 public:
  explicit MP_StreamWriter(int descriptor = -1);

  void SetSink(StreamKind kind, int orderFlag);

  // Drops what is in the buffer and takes a descriptor, or none.
  void Attach(int descriptor);

  // Flushes and lets go of the descriptor.
  void Detach();

  // For another thread, which closes the descriptor: Forget lets go of it alone, whatever is
  // in the buffer, and WaitUntilUnused comes back when no transfer uses it any more.
  void Forget() { descriptor_.Set(-1); }
  void WaitUntilUnused() const { descriptor_.WaitUntilUnused(); }

  int descriptor() const { return descriptor_.Get(); }

  // Writes out what is in the buffer. The capacity, now free, or what DrainBuffer gave.
  int Flush();

  // As Flush. -1 without a descriptor or if a wait failed, -3 if a write failed.
  int DrainBuffer() override;
  int WriteDirect(const char* p, int n) override;
  int LineHook() override { return Flush(); }

  // The number of bytes, or -1 if they could not be put or there is no descriptor.
  int Printf(const char* format, ...);
  int VPrintf(const char* format, va_list args);

 private:
  int Send(const char* from, const char* to);
  std::int64_t Transfer(int descriptor, const char* data, std::size_t size);

  StreamKind kind_ = StreamKind::kFile;
  StreamDescriptor descriptor_;
  bool pipe_ = false;  // a file that takes care
  char firstBlock_[kStreamCapacity + 1];
};

#endif  // KALVOBASE_SRC_FILES_MP_STREAM_WRITER_H_
