// MP_StreamCore: the byte buffer under strings and streams. One that is written to and one
// that is read from are never the same; both have one cursor, `end`, and one place, `limit`,
// where the cursor needs service.
//
// Writing: `end` points behind the content, where the block always has a byte for a
// terminator, and at `limit` MakeRoom is needed. The buffer has a capacity, which is what its
// users see: how much it holds before DrainBuffer must make room. Behind it stands a block of
// memory that follows the content and grows by half when it is full, so that the steps in
// which a capacity grows cost no copy each, however the allocator places the block.
//
// Reading: the unread bytes lie from `end` to `limit`. When none are left, FillBuffer gets
// more.

#ifndef KALVOBASE_SRC_FILES_MP_STREAM_CORE_H_
#define KALVOBASE_SRC_FILES_MP_STREAM_CORE_H_

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kalvobase/text.h"
#include "platform/byte_order.h"

class MP_StreamCore : public Kalvo_StringCursor {
 public:
  MP_StreamCore(const MP_StreamCore&) = delete;
  MP_StreamCore& operator=(const MP_StreamCore&) = delete;
  virtual ~MP_StreamCore();

  // Called after a line feed that PutByte stored, if the line flag is set. Above 0 on
  // success.
  virtual int LineHook();

  // Called when all bytes have been read, to get more. The number of bytes that are unread
  // now, 0 at the end of the data, negative on failure.
  virtual int FillBuffer();

  // Called when the buffer is full, to make room. Above 0 on success.
  virtual int DrainBuffer();

  // Called in place of these two for blocks that the empty buffer is too small for: move bytes
  // straight between the caller and the other end. The number of bytes; 0 at the end of the
  // data; negative on failure; kNotDirect if there is no such way.
  virtual int ReadDirect(char* out, int n);
  virtual int WriteDirect(const char* p, int n);

  static constexpr int kNotDirect = INT_MIN;

  // --- Writing ----------------------------------------------------------------------

  // Appends a byte. The byte as 0 to 255, or what failed, less 1.
  int PutByte(int c);

  // Puts a byte `n` times. 1 or what failed, as the last of them gave it; `n` if that is
  // below 1.
  int PutRun(int c, int n);

  // Appends `n` bytes, which may lie in this buffer; a negative `n` means the text `p`.
  // Calls no line hook. Returns the number of bytes, 0 for a null `p`, or what DrainBuffer
  // gave.
  int WriteBlock(const char* p, int n);

  // The same for a block that fits as it is, from elsewhere; false, with nothing done, if it
  // does not fit.
  bool TryWrite(const char* p, int n) {
    if (n < 1 || n > limit - end) return false;
    std::memcpy(end, p, static_cast<std::size_t>(n));
    Commit(n);
    return true;
  }

  // Appends the `n` bytes, 1, 2, 4 or 8, of a number in the order that the order flag tells:
  // most significant byte first, or with the flag 0 least significant byte first. A byte 10
  // among them counts as a line feed. `n` or -1.
  int WriteOrdered(const void* number, int n);

  // Makes the capacity reach `n` bytes behind the content and backs them with memory. The
  // free bytes, or -1 if `n` is below 1 or the bytes cannot be had.
  int Reserve(int n);

  // Counts bytes as written that someone else stored behind the content: `n` of them, or
  // for `n` below 1 those up to the first zero byte.
  void Advance(int n);

  // Where the next byte goes and how many fit, for whoever stores bytes and then commits them.
  char* End() { return end; }
  int Room() const { return static_cast<int>(limit - end); }
  void Commit(int n) {
    end += n;
    lastInBlock_ = true;
  }

  // The last byte that was written. It is read from the block while it stands there: who
  // reads a byte right after a wider write waits for that.
  char GetLastByte() const { return lastInBlock_ && end != block_ ? end[-1] : lastByte_; }
  void ClearLastByte() {
    lastByte_ = '\0';
    lastInBlock_ = false;
  }

  // The free bytes of the capacity.
  int Free() const { return capacity_ - Length(); }

  int Length() const { return static_cast<int>(end - block_); }

  // The offset of `p` in the content, its end included, or -1 if it points elsewhere.
  std::ptrdiff_t OffsetOf(const char* p) const;

  // --- Reading ----------------------------------------------------------------------

  // The next byte as 0 to 255; at the end of the data or on failure what FillBuffer gave,
  // less 1.
  int GetByte();

  // The next byte, and its value plus 1; 0 at the end of the data, negative on failure.
  int ReadByte(char* out);

  // Copies bytes until it has `n` of them or the data ends, and returns how many; 0 for `n`
  // below 1. A failure of FillBuffer is returned, whatever was copied before it.
  int ReadBlock(char* out, int n);

  // The `n` bytes, 1, 2, 4 or 8, of a number that WriteOrdered wrote. `n`; or -1 if the data
  // ends inside of it, with a part of `number` changed.
  int ReadOrdered(void* number, int n);

  // The same for a number that is kept wider than it is read. Unchanged on failure.
  template <class Stored, class Number>
  int ReadNarrow(Number* number) {
    Stored stored;
    const int n = ReadOrdered(&stored, sizeof(stored));
    if (n > 0) *number = stored;
    return n;
  }

  // Skips up to `n` unread bytes, for `n` below 1 all of them; gets no more. How many.
  int Skip(int n);

  int Unread() const { return static_cast<int>(limit - end); }

  // --- The order of numbers ---------------------------------------------------------

  // The flag with which numbers lie as the host has them in memory.
  static constexpr int kHostOrder = platform::kLeastSignificantFirst ? 0 : 1;

  int orderFlag() const { return orderFlag_; }
  void SetOrderFlag(int flag) { orderFlag_ = flag; }

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

  // Drops all content; its last byte was written nevertheless.
  void Drop() {
    lastByte_ = GetLastByte();
    lastInBlock_ = false;
    end = block_;
  }

  // Makes bytes of the block the unread ones.
  void SetUnread(char* first, char* last) {
    end = first;
    limit = last;
  }

  // Goes on in another block of the derived object, as large as its first.
  void UseBlock(char* block) { block_ = firstBlock_ = block; }

  // As much of `n` bytes as fills whole buffers.
  int WholeBuffers(int n) const { return n / capacity_ * capacity_; }

  // Gets more bytes when none are unread: what FillBuffer gave.
  int Refill();

  int capacity() const { return capacity_; }

  char* block_;

 private:
  void UpdateLimit();
  int WriteBytesOrdered(const char* bytes, int n);
  int ReadBytesOrdered(char* bytes, int n);
  bool Turned() const { return (orderFlag_ != 0) == platform::kLeastSignificantFirst; }
  static bool HasLineFeed(const char* bytes, int n);

  char* firstBlock_;
  std::int32_t blockSize_;
  std::int32_t capacity_;
  std::int32_t orderFlag_ = 1;
  const bool lineFlag_;
  char lastByte_ = '\0';
  bool lastInBlock_ = false;
};

inline int MP_StreamCore::PutByte(int c) {
  if (end == limit) {
    const int room = MakeRoom();
    if (room < 1) return room - 1;
  }
  *end = static_cast<char>(c);
  Commit(1);
  if (static_cast<char>(c) == '\n' && lineFlag_) {
    const int hooked = LineHook();
    return hooked > 0 ? '\n' : hooked - 1;
  }
  return static_cast<unsigned char>(c);
}

// Whether one of up to 8 bytes is a line feed, found in all of them at once.
inline bool MP_StreamCore::HasLineFeed(const char* bytes, int n) {
  constexpr std::uint64_t kOnes = 0x0101010101010101u;
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, static_cast<std::size_t>(n));
  word ^= kOnes * '\n';
  return ((word - kOnes) & ~word & (kOnes << 7)) != 0;
}

inline int MP_StreamCore::WriteOrdered(const void* number, int n) {
  const char* bytes = static_cast<const char*>(number);
  if (n > limit - end || HasLineFeed(bytes, n)) return WriteBytesOrdered(bytes, n);
  platform::copy_numbers(end, bytes, 1, static_cast<std::size_t>(n), Turned());
  Commit(n);
  return n;
}

inline int MP_StreamCore::GetByte() {
  if (end == limit) {
    const int filled = Refill();
    if (filled < 1) return filled - 1;
  }
  return static_cast<unsigned char>(*end++);
}

inline int MP_StreamCore::ReadByte(char* out) {
  const int byte = GetByte();
  if (byte >= 0) *out = static_cast<char>(byte);
  return byte + 1;
}

inline int MP_StreamCore::ReadOrdered(void* number, int n) {
  char* bytes = static_cast<char*>(number);
  if (n > limit - end) return ReadBytesOrdered(bytes, n);
  platform::copy_numbers(bytes, end, 1, static_cast<std::size_t>(n), Turned());
  end += n;
  return n;
}

#endif  // KALVOBASE_SRC_FILES_MP_STREAM_CORE_H_
