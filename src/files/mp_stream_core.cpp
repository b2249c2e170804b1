#include "files/mp_stream_core.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>

namespace {

constexpr std::int32_t kGrowthStep = 256;

}  // namespace

MP_StreamCore::MP_StreamCore(char* firstBlock, int firstBlockSize, int capacity, bool lineFlag)
    : Kalvo_StringCursor{firstBlock, firstBlock},
      block_(firstBlock),
      firstBlock_(firstBlock),
      blockSize_(firstBlockSize),
      capacity_(capacity),
      lineFlag_(lineFlag) {
  *block_ = '\0';
  UpdateLimit();
}

MP_StreamCore::~MP_StreamCore() {
  if (block_ != firstBlock_) std::free(block_);
}

int MP_StreamCore::LineHook() { return -1; }

int MP_StreamCore::FillBuffer() { return 0; }

int MP_StreamCore::ReadDirect(char*, int) { return kNotDirect; }

int MP_StreamCore::WriteDirect(const char*, int) { return kNotDirect; }

int MP_StreamCore::DrainBuffer() { return Reserve(capacity_); }

void MP_StreamCore::UpdateLimit() { limit = block_ + std::min(blockSize_ - 1, capacity_); }

bool MP_StreamCore::EnsureBlock(std::int64_t content) {
  if (content < blockSize_) return true;
  if (content > kMaxCapacity) return false;
  const std::int64_t enlarged =
      std::min(std::int64_t{blockSize_} + blockSize_ / 2, std::int64_t{INT_MAX});
  const std::size_t wanted[] = {static_cast<std::size_t>(std::max(content + 1, enlarged)),
                                static_cast<std::size_t>(content + 1)};
  const std::size_t length = static_cast<std::size_t>(Length());
  for (const std::size_t size : wanted) {
    const bool keep = block_ == firstBlock_;
    char* block = static_cast<char*>(keep ? std::malloc(size) : std::realloc(block_, size));
    if (block == nullptr) continue;                    // without the reserve it may fit
    if (keep) std::memcpy(block, block_, length + 1);  // with the terminator, if one stands
    block_ = block;
    end = block + length;
    blockSize_ = static_cast<std::int32_t>(size);
    UpdateLimit();
    return true;
  }
  return false;
}

bool MP_StreamCore::GrowCapacity(std::int64_t bytes) {
  const std::int64_t possible = kMaxCapacity - capacity_;
  if (bytes > possible) return false;
  const std::int64_t step = std::min(std::max<std::int64_t>(bytes, kGrowthStep), possible);
  capacity_ += static_cast<std::int32_t>(step);
  UpdateLimit();
  return true;
}

int MP_StreamCore::Reserve(int n) {
  if (n < 1) return -1;
  const std::int64_t content = std::int64_t{Length()} + n;
  if (!EnsureBlock(content)) return -1;
  if (content > capacity_ && !GrowCapacity(content - capacity_)) return -1;
  return Free();
}

int MP_StreamCore::MakeRoom() {
  while (Free() < 1) {
    const int drained = DrainBuffer();
    if (drained < 1) return drained;
  }
  return EnsureBlock(std::int64_t{Length()} + 1) ? 1 : -1;
}

std::ptrdiff_t MP_StreamCore::OffsetOf(const char* p) const {
  const std::less<const char*> before;
  return before(p, block_) || before(end, p) ? -1 : p - block_;
}

int MP_StreamCore::WriteBlock(const char* p, int n) {
  if (p == nullptr) return 0;
  if (n < 0) n = static_cast<int>(std::min<std::size_t>(std::strlen(p), INT_MAX));
  for (int left = n; left > 0;) {
    if (end == limit) {
      const std::ptrdiff_t offset = OffsetOf(p);
      const int room = MakeRoom();
      if (room < 1) {
        ClearLastByte();
        return room;
      }
      if (offset >= 0) p = block_ + offset;
    }
    if (end == block_ && left > capacity_) {
      // What comes last stays in the buffer, as if all had gone through it.
      const int direct = WriteDirect(p, WholeBuffers(left - 1));
      if (direct > 0) {
        p += direct;
        left -= direct;
        continue;
      }
      if (direct != kNotDirect) {
        ClearLastByte();
        return direct;
      }
    }
    const int chunk = static_cast<int>(std::min<std::ptrdiff_t>(left, limit - end));
    std::memmove(end, p, static_cast<std::size_t>(chunk));
    Commit(chunk);
    p += chunk;
    left -= chunk;
  }
  return n;
}

int MP_StreamCore::PutRun(int c, int n) {
  int result = n;
  if (static_cast<char>(c) == '\n') {
    for (; n > 0; --n) result = std::min(PutByte(c), 1);
    return result;
  }
  while (n > 0) {
    const int room = end == limit ? MakeRoom() : 1;
    if (room < 1) {  // this one is lost; there may be room for the next
      result = room - 1;
      --n;
      continue;
    }
    const int chunk = static_cast<int>(std::min<std::ptrdiff_t>(n, limit - end));
    std::memset(end, c, static_cast<std::size_t>(chunk));
    Commit(chunk);
    n -= chunk;
    result = 1;
  }
  return result;
}

// Byte by byte, for a number that meets the end of the buffer or holds a line feed.
int MP_StreamCore::WriteBytesOrdered(const char* bytes, int n) {
  const bool backwards = Turned();
  for (int i = 0; i < n; ++i) {
    if (PutByte(bytes[backwards ? n - 1 - i : i]) < 0) return -1;
  }
  return n;
}

void MP_StreamCore::Advance(int n) {
  if (n < 1) n = static_cast<int>(std::strlen(end));
  if (n > 0) Commit(n);
}

int MP_StreamCore::Refill() {
  SetUnread(block_, block_);
  return FillBuffer();
}

int MP_StreamCore::ReadBlock(char* out, int n) {
  if (out == nullptr || n < 1) return 0;
  for (int left = n; left > 0;) {
    if (end == limit) {
      const int direct = left >= capacity_ ? ReadDirect(out, WholeBuffers(left)) : kNotDirect;
      if (direct > 0) {
        out += direct;
        left -= direct;
        continue;
      }
      const int filled = direct == kNotDirect ? Refill() : direct;
      if (filled < 0) return filled;
      if (filled == 0) return n - left;
    }
    const int chunk = std::min(left, Unread());
    std::memcpy(out, end, static_cast<std::size_t>(chunk));
    end += chunk;
    out += chunk;
    left -= chunk;
  }
  return n;
}

int MP_StreamCore::ReadBytesOrdered(char* bytes, int n) {
  const bool backwards = Turned();
  for (int i = 0; i < n; ++i) {
    if (ReadByte(&bytes[backwards ? n - 1 - i : i]) < 1) return -1;
  }
  return n;
}

int MP_StreamCore::Skip(int n) {
  const int skipped = n < 1 ? Unread() : std::min(n, Unread());
  end += skipped;
  if (end == limit) SetUnread(block_, block_);
  return skipped;
}
