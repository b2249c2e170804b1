#include "files/mp_stream_reader.h"

#include <cstring>

#include "platform/descriptor.h"
#include "platform/file.h"
#include "platform/socket.h"
#include "platform/wait_result.h"

namespace {

constexpr int kGrowth = 512;

const char* FindByte(const char* from, const char* to, char c) {
  return static_cast<const char*>(std::memchr(from, c, static_cast<std::size_t>(to - from)));
}

}  // namespace

MP_StreamReader::MP_StreamReader(int descriptor)
    : MP_StreamCore(firstBlock_, sizeof(firstBlock_), kStreamCapacity, true) {
  Attach(descriptor);
}

void MP_StreamReader::SetSource(StreamKind kind, int orderFlag) {
  kind_ = kind;
  SetOrderFlag(orderFlag);
}

void MP_StreamReader::Attach(int descriptor) {
  SetUnread(block_, block_);
  descriptor_ = descriptor;
}

// A socket that cannot even be waited for counts as a failed wait.
int MP_StreamReader::FillBuffer() {
  const int descriptor = descriptor_;
  const int unread = RawRead();
  const bool closed =
      unread == -2 && kind_ == StreamKind::kSocket && !platform::descriptor_is_open(descriptor);
  return closed ? -1 : unread;
}

// Makes room behind the unread bytes: by moving them to the front or, if they fill the
// block, by making that larger.
bool MP_StreamReader::MakeRoomBehind() {
  const int unread = Unread();
  if (limit < block_ + capacity()) return true;
  if (end == block_) {
    end = limit;  // as if they had been written
    const bool grown = Reserve(unread + kGrowth) > 0;
    SetUnread(block_, block_ + unread);
    return grown;
  }
  std::memmove(block_, end, static_cast<std::size_t>(unread));
  SetUnread(block_, block_ + unread);
  return true;
}

int MP_StreamReader::RawRead() {
  if (descriptor_ < 0) return -1;
  if (end == limit) SetUnread(block_, block_);
  if (!MakeRoomBehind()) return -1;
  const std::size_t room = static_cast<std::size_t>(block_ + capacity() - limit);
  std::int64_t n;
  for (;;) {
    n = kind_ == StreamKind::kFile ? platform::file_read(descriptor_, limit, room)
                                   : platform::socket_receive(descriptor_, limit, room);
    if (n != platform::kTransferWouldBlock) break;
    platform::descriptor_wait(descriptor_, platform::WaitFor::kReading, platform::kNoLimit);
  }
  if (n < 1) {
    descriptor_ = -1;
    return n == 0 ? 0 : -2;
  }
  limit += n;
  return Unread();
}

MP_String* MP_StreamReader::ReadLine(bool strip, int maxLength) {
  line_.Clear();
  int count = 0;
  for (;;) {
    if (end == limit && Refill() < 1) return line_.Length() > 0 ? &line_ : nullptr;
    const char* feed = FindByte(end, limit, '\n');
    if (!TakePiece(feed != nullptr ? feed : limit, strip, maxLength, &count)) return nullptr;
    if (feed == nullptr) continue;
    ++end;
    if (!strip) line_.Append("\n", 1);
    return &line_;
  }
}

// Takes bytes without a line feed into the line. False behind the first that is too many.
bool MP_StreamReader::TakePiece(const char* pieceEnd, bool strip, int maxLength, int* count) {
  while (end < pieceEnd) {
    const char* cr = FindByte(end, pieceEnd, '\r');
    const int run = static_cast<int>((cr != nullptr ? cr : pieceEnd) - end);
    if (maxLength != -1 && run > 0 && run > maxLength - *count) {
      end += maxLength - *count + 1;
      return false;
    }
    line_.Append(end, run);
    *count += run;
    end += run;
    if (cr == nullptr) return true;
    if (!strip) line_.Append("\r", 1);
    ++end;
  }
  return true;
}

const char* MP_StreamReader::ReadLineText(bool strip, int maxLength) {
  MP_String* line = ReadLine(strip, maxLength);
  return line != nullptr ? line->Text() : nullptr;
}
