#include "files/mp_stream_reader.h"

#include <algorithm>
#include <cstring>

#include "platform/descriptor.h"
#include "platform/file.h"
#include "platform/socket.h"
#include "platform/wait_result.h"

namespace {

constexpr int kGrowth = 512;

char* FindByte(char* from, char* to, char c) {
  return static_cast<char*>(std::memchr(from, c, static_cast<std::size_t>(to - from)));
}

}  // namespace

MP_StreamReader::MP_StreamReader(int descriptor)
    : MP_StreamCore(blocks_[0], sizeof(blocks_[0]), kStreamCapacity, true) {
  Attach(descriptor);
}

void MP_StreamReader::SetSource(StreamKind kind, int orderFlag) {
  kind_ = kind;
  SetOrderFlag(orderFlag);
}

void MP_StreamReader::Attach(int descriptor) {
  SetUnread(block_, block_);
  nextReturn_ = nullptr;
  descriptor_.Set(descriptor);
}

int MP_StreamReader::FillBuffer() {
  const int descriptor = descriptor_.Get();
  return Judge(descriptor, RawRead());
}

int MP_StreamReader::ReadDirect(char* out, int n) {
  const int descriptor = descriptor_.Get();
  return Judge(descriptor, Transfer(out, static_cast<std::size_t>(n)));
}

// A socket that cannot even be waited for counts as a failed wait.
int MP_StreamReader::Judge(int descriptor, int result) const {
  const bool closed =
      result == -2 && kind_ == StreamKind::kSocket && !platform::descriptor_is_open(descriptor);
  return closed ? -1 : result;
}

// One read, as RawRead tells it. The number of bytes that it gave.
int MP_StreamReader::Transfer(char* to, std::size_t room) {
  const StreamDescriptor::Use use(&descriptor_);
  const int descriptor = use.number();
  if (descriptor < 0) return -1;
  std::int64_t n;
  for (;;) {
    n = kind_ == StreamKind::kFile ? platform::file_read(descriptor, to, room)
                                   : platform::socket_receive(descriptor, to, room);
    if (n != platform::kTransferWouldBlock) break;
    platform::descriptor_wait(descriptor, platform::WaitFor::kReading, platform::kNoLimit);
  }
  if (n > 0) return static_cast<int>(n);
  descriptor_.Set(-1);
  return n == 0 ? 0 : -2;
}

// If the last line lies in the block, goes on in the other one.
void MP_StreamReader::LeaveLine() {
  if (lineBlock_ == block_) UseBlock(block_ == blocks_[0] ? blocks_[1] : blocks_[0]);
}

// Makes room behind the unread bytes: by moving them to the front or, if they fill the
// block, by making that larger.
bool MP_StreamReader::MakeRoomBehind() {
  const int unread = Unread();
  char* const first = end;
  if (unread > 0 && limit < block_ + capacity()) return true;
  if (unread == capacity()) {
    end = limit;  // as if they had been written
    const bool grown = Reserve(unread + kGrowth) > 0;
    SetUnread(block_, block_ + unread);
    return grown;
  }
  LeaveLine();
  std::memmove(block_, first, static_cast<std::size_t>(unread));
  SetUnread(block_, block_ + unread);
  return true;
}

int MP_StreamReader::RawRead() {
  if (descriptor_.Get() < 0) return -1;
  nextReturn_ = nullptr;
  if (!MakeRoomBehind()) return -1;
  const int n = Transfer(limit, static_cast<std::size_t>(block_ + capacity() - limit));
  if (n < 1) return n;
  limit += n;
  return Unread();
}

// The first CR in front of `lineEnd`, or that.
char* MP_StreamReader::FindReturn(char* lineEnd) {
  if (nextReturn_ == nullptr || nextReturn_ < end) {
    nextReturn_ = FindByte(end, limit, '\r');
    if (nextReturn_ == nullptr) nextReturn_ = limit;
  }
  return std::min(nextReturn_, lineEnd);
}

const char* MP_StreamReader::ReadLine(bool strip, int maxLength) {
  lineBlock_ = nullptr;
  char* const feed = FindByte(end, limit, '\n');
  if (feed == nullptr || !strip || capacity() > kStreamCapacity) {
    return CollectLine(strip, maxLength);
  }
  char* const lineEnd = FindReturn(feed);
  if (lineEnd < feed - 1 || (maxLength != -1 && lineEnd - end > maxLength)) {
    return CollectLine(strip, maxLength);
  }
  *lineEnd = '\0';
  const char* line = end;
  lineLength_ = static_cast<int>(lineEnd - end);
  end = feed + 1;
  lineBlock_ = block_;
  return line;
}

const char* MP_StreamReader::CollectLine(bool strip, int maxLength) {
  line_.Clear();
  int count = 0;
  for (bool ended = false; !ended;) {
    if (end == limit && Refill() < 1) {
      if (line_.Length() == 0) return nullptr;
      break;
    }
    char* const feed = FindByte(end, limit, '\n');
    if (!TakePiece(feed != nullptr ? feed : limit, strip, maxLength, &count)) return nullptr;
    if (feed == nullptr) continue;
    ++end;
    if (!strip) line_.Append("\n", 1);
    ended = true;
  }
  lineLength_ = line_.Length();
  return line_.Text();
}

// Takes bytes without a line feed into the line. False behind the first that is too many, or
// if they cannot be stored.
bool MP_StreamReader::TakePiece(char* pieceEnd, bool strip, int maxLength, int* count) {
  while (end < pieceEnd) {
    char* const stop = FindReturn(pieceEnd);
    const int run = static_cast<int>(stop - end);
    if (maxLength != -1 && run > 0 && run > maxLength - *count) {
      end += std::max(maxLength - *count, 0) + 1;
      return false;
    }
    const int before = line_.Length();
    line_.Append(end, run);
    if (line_.Length() - before < run) return false;
    *count += run;
    end = stop;
    if (end == pieceEnd) break;
    if (!strip) line_.Append("\r", 1);
    ++end;
  }
  return true;
}
