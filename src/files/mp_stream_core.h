// MP_StreamCore: the byte buffer under strings and streams, its writing side.
//
// The buffer has a capacity, which is what its users see: how much it holds before
// DrainBuffer must make room. Behind it stands a block of memory that follows the content
// and grows by half when it is full, so that the steps in which a capacity grows cost no copy
// each, however the allocator places the block. `end` points behind the content, where the
// block always has a byte for a terminator, and `limit` to where MakeRoom is needed.

#ifndef KALVOBASE_SRC_FILES_MP_STREAM_CORE_H_
#define KALVOBASE_SRC_FILES_MP_STREAM_CORE_H_

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kalvobase/text.h"

class MP_StreamCore : public Kalvo_StringCursor {
 public:
  MP_StreamCore(const MP_StreamCore&) = delete;
  MP_StreamCore& operator=(const MP_StreamCore&) = delete;
  virtual ~MP_StreamCore();

  // Called after a line feed that PutByte stored, if the line flag is set. Above 0 on
  // success.
  virtual int LineHook();

  // Called when the buffer is full, to make room. Above 0 on success.
  virtual int DrainBuffer();

  // Appends a byte. The byte as 0 to 255, or what failed, less 1.
  int PutByte(int c);

  // Appends `n` bytes, which may lie in this buffer; a negative `n` means the text `p`.
  // Calls no line hook. Returns the number of bytes, 0 for a null `p`, or what DrainBuffer
  // gave.
  int WriteBlock(const char* p, int n);

  // The same for a block that fits as it is, from elsewhere; false, with nothing done, if it
  // does not fit.
  bool TryWrite(const char* p, int n) {
    if (n < 1 || n > limit - end) return false;
    std::memcpy(end, p, static_cast<std::size_t>(n));
    end += n;
    lastByte_ = end[-1];
    return true;
  }

  // Appends the `n` bytes of a number in the order that the order flag tells: most
  // significant byte first, or with the flag 0 least significant byte first. `n` or -1.
  int WriteOrdered(const void* number, int n);

  // Makes the capacity reach `n` bytes behind the content and backs them with memory. The
  // free bytes, or -1 if `n` is below 1 or the bytes cannot be had.
  int Reserve(int n);

  // Counts bytes as written that someone else stored behind the content: `n` of them, or
  // for `n` below 1 those up to the first zero byte.
  void Advance(int n);

  // Where the next byte goes, for whoever stores what Reserve made room for.
  char* End() { return end; }

  char GetLastByte() const { return lastByte_; }
  void ClearLastByte() { lastByte_ = 0; }
  int orderFlag() const { return orderFlag_; }
  void SetOrderFlag(int flag) { orderFlag_ = flag; }

  // The free bytes of the capacity.
  int BufferedBytes() const { return capacity_ - Length(); }

  int Length() const { return static_cast<int>(end - block_); }

  // The offset of `p` in the content, its end included, or -1 if it points elsewhere.
  std::ptrdiff_t OffsetOf(const char* p) const;

 protected:
  static constexpr std::int32_t kMaxCapacity = INT_MAX - 1;  // leaves the terminator its byte

  // Starts on a block of the derived object's own, which is used until the content
  // outgrows it.
  MP_StreamCore(char* firstBlock, int firstBlockSize, int capacity, bool lineFlag);

  // Makes the block hold `content` bytes and a terminator. False if it cannot be had.
  bool EnsureBlock(std::int64_t content);

  // Adds at least `bytes` and at least 256 to the capacity. False beyond the limit.
  bool GrowCapacity(std::int64_t bytes);

  // Makes room for one byte at least: 1, or what DrainBuffer gave.
  int MakeRoom();

  // Drops the content behind `length`.
  void SetLength(int length) { end = block_ + length; }

  int capacity() const { return capacity_; }

  char* block_;

 private:
  void UpdateLimit();

  char* const firstBlock_;
  std::int32_t blockSize_;
  std::int32_t capacity_;
  std::int32_t orderFlag_ = 1;
  const bool lineFlag_;
  char lastByte_ = 0;
};

inline int MP_StreamCore::PutByte(int c) {
  if (end == limit) {
    const int room = MakeRoom();
    if (room < 1) return room - 1;
  }
  lastByte_ = *end++ = static_cast<char>(c);
  if (lastByte_ == '\n' && lineFlag_) {
    const int hooked = LineHook();
    return hooked > 0 ? '\n' : hooked - 1;
  }
  return static_cast<unsigned char>(c);
}

#endif  // KALVOBASE_SRC_FILES_MP_STREAM_CORE_H_
