#include "text/mp_string.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cstring>

#include "text/text_bytes.h"

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::size_t Count(int n) { return static_cast<std::size_t>(n); }

}  // namespace

MP_String::MP_String() : MP_StreamCore(firstBlock_, kFirstBlockSize, kFirstCapacity, true) {}

MP_String::MP_String(const char* text) : MP_String() {
  const int n = text::Length(text);
  if (n > capacity()) Reserve(n);
  AppendText(text);
}

// As much of a step as the largest capacity leaves.
int MP_String::DrainBuffer() { return Reserve(std::min(256, kMaxCapacity - Length())); }

void MP_String::Clear() {
  quote_ = '\0';
  SetLength(0);
  *end = '\0';
}

// The capacity grows for the terminator too: a string that is full has none to spare.
void MP_String::Terminate() {
  if (Free() < 1) Reserve(256);
  *end = '\0';
}

// --- Assigning and appending --------------------------------------------------------

// The bytes are moved to the front before anything is cleared, since they may be a part
// of this string.
void MP_String::Assign(const char* bytes, int n) {
  const std::ptrdiff_t offset = bytes != nullptr ? OffsetOf(bytes) : -1;
  if (offset < 0) {
    Clear();
    Append(bytes, n);
    return;
  }
  // The terminator may be among the bytes.
  n = std::max(0, std::min(n, Length() - static_cast<int>(offset) + 1));
  n = static_cast<int>(std::min<std::ptrdiff_t>(n, limit - block_));
  std::memmove(block_, bytes, Count(n));
  quote_ = '\0';
  SetLength(n);
  Terminate();
}

void MP_String::AssignText(const char* text) { Assign(text, text::Length(text)); }

void MP_String::AssignText(const char* text, int n) {
  Assign(text, n < 0 ? text::Length(text) : text::LengthWithin(text, n));
}

void MP_String::Append(const char* bytes, int n) {
  if (bytes == nullptr || n < 1) return;
  if (n <= limit - end) {
    std::memmove(end, bytes, Count(n));
    end += n;
  } else {
    AppendGrowing(bytes, n);
  }
  Terminate();
}

// Gets one block for all of it first; the capacity grows in its own steps.
void MP_String::AppendGrowing(const char* bytes, int n) {
  const std::ptrdiff_t offset = OffsetOf(bytes);
  EnsureBlock(std::int64_t{Length()} + n);
  WriteBlock(offset < 0 ? bytes : block_ + offset, n);
}

void MP_String::AppendText(const char* text) { Append(text, text::Length(text)); }

void MP_String::AppendText(const char* text, int n) { Append(text, text::LengthWithin(text, n)); }

void MP_String::AppendRun(char c, int n) {
  if (n > limit - end) EnsureBlock(std::int64_t{Length()} + n);
  while (n > 0) {
    if (end == limit && MakeRoom() < 1) return;
    const int chunk = static_cast<int>(std::min<std::ptrdiff_t>(n, limit - end));
    std::memset(end, c, Count(chunk));
    end += chunk;
    n -= chunk;
  }
}

// --- Reading ------------------------------------------------------------------------

const char* MP_String::Text() {
  Terminate();
  return block_;
}

const char* MP_String::Right(int n) {
  Terminate();
  return end - std::max(0, std::min(n, Length()));
}

int MP_String::Compare(const char* text) {
  const int order = std::strcmp(Text(), text != nullptr ? text : "");
  return (order > 0) - (order < 0);
}

int MP_String::CompareNoCase(const char* text) {
  const char* a = Text();
  const char* b = text != nullptr ? text : "";
  for (;; ++a, ++b) {
    const int left = text::LowerAscii(static_cast<unsigned char>(*a));
    const int right = text::LowerAscii(static_cast<unsigned char>(*b));
    if (left != right) return left < right ? -1 : 1;
    if (left == '\0') return 0;
  }
}

// --- Editing in place ---------------------------------------------------------------

void MP_String::SetAt(int i, char c) {
  if (i >= 0 && i < Length()) block_[i] = c;
}

void MP_String::Truncate(int n) {
  if (n >= 0 && n < Length()) SetLength(n);
}

void MP_String::TruncateRight(int n) { SetLength(Length() - std::max(0, std::min(n, Length()))); }

void MP_String::Resize(int n, char c) {
  if (n > Length()) {
    AppendRun(c, n - Length());
  } else {
    Truncate(n);
  }
}

void MP_String::Delete(int position, int n) {
  position = std::max(position, 0);
  if (n < 1 || position >= Length()) return;
  n = std::min(n, Length() - position);
  char* hole = block_ + position;
  std::memmove(hole, hole + n, static_cast<std::size_t>(end - hole - n));
  end -= n;
}

// Moves the bytes from `position` on back by `n` and gives the gap, or null if there is
// no room for it.
char* MP_String::OpenGap(int position, int n) {
  if (n > limit - end && Reserve(n) < 0) return nullptr;
  char* gap = block_ + std::max(0, std::min(position, Length()));
  std::memmove(gap + n, gap, static_cast<std::size_t>(end - gap));
  end += n;
  return gap;
}

void MP_String::InsertFill(int position, char c, int n) {
  if (n < 1) return;
  if (char* gap = OpenGap(position, n)) std::memset(gap, c, Count(n));
}

void MP_String::Insert(int position, const char* bytes, int n) {
  if (bytes == nullptr) return;
  if (n < 0) n = text::Length(bytes);
  if (n == 0) return;
  if (OffsetOf(bytes) >= 0) {
    MP_String copy;
    copy.Append(bytes, n);
    Insert(position, copy.Content(), copy.Length());
    return;
  }
  if (char* gap = OpenGap(position, n)) std::memcpy(gap, bytes, Count(n));
}

void MP_String::ReplaceByte(char from, char to) { std::replace(block_, end, from, to); }

void MP_String::ReplaceAt(int position, char c) {
  if (position < Length()) {
    SetAt(position, c);
  } else {
    AppendRun(c, 1);
  }
}

void MP_String::Overwrite(int position, const char* bytes, int n) {
  if (bytes == nullptr) return;
  if (n < 0) n = text::Length(bytes);
  const std::int64_t first = std::max<std::int64_t>(position, 0);
  const std::int64_t last = std::min(std::int64_t{position} + n, std::int64_t{Length()});
  if (first >= last) return;
  std::memmove(block_ + first, bytes + (first - position), static_cast<std::size_t>(last - first));
}

// --- Replacing texts ----------------------------------------------------------------

int MP_String::Replace(int from, const char* what, const char* with) {
  from = std::max(from, 0);
  if (from >= Length() || text::Length(what) == 0) return -1;
  const char* found = std::strstr(Text() + from, what);
  if (found == nullptr) return -1;
  const int position = static_cast<int>(found - block_);
  const int whatLength = text::Length(what);
  MP_String replacement;  // `with` may be a part of this string
  replacement.AppendText(with);
  const int grows = replacement.Length() - whatLength;
  if (grows > 0 && Reserve(grows) < 0) return -1;
  Delete(position, whatLength);
  Insert(position, replacement.Content(), replacement.Length());
  return position + replacement.Length();
}

// In one pass over the content, which gives what repeated calls of Replace would: each
// of them goes on behind the text that the last one put in.
int MP_String::ReplaceAll(int from, const char* what, const char* with) {
  from = std::max(from, 0);
  const int whatLength = text::Length(what);
  if (from >= Length() || whatLength == 0) return 0;
  const int withLength = text::Length(with);
  int replaced = 0;
  MP_String result;
  const char* copied = Text();
  const char* search = copied + from;
  while (search < end) {
    const char* found = std::strstr(search, what);
    if (found == nullptr) break;
    result.Append(copied, static_cast<int>(found - copied));
    result.Append(with, withLength);
    copied = search = found + whatLength;
    ++replaced;
  }
  if (replaced == 0) return 0;
  result.Append(copied, static_cast<int>(end - copied));
  const std::int64_t grown = std::int64_t{replaced} * (withLength - whatLength);
  if (result.Length() != Length() + grown) return 0;  // there was no room for all of it
  SetLength(0);
  Append(result);
  return replaced;
}

// --- Blanks, case, order, width -----------------------------------------------------

void MP_String::TrimLeft() {
  const char* start = std::find_if_not(block_, end, IsBlank);
  Delete(0, static_cast<int>(start - block_));
}

void MP_String::TrimRight() {
  while (end != block_ && IsBlank(end[-1])) --end;
}

void MP_String::Trim() {
  TrimRight();
  TrimLeft();
}

void MP_String::MakeUpper() {
  std::transform(block_, end, block_, [](char c) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  });
}

void MP_String::MakeLower() {
  std::transform(block_, end, block_, [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
}

void MP_String::Reverse() { std::reverse(block_, end); }

void MP_String::Align(char mode, char c, int width) {
  const bool shorten = width < Length();
  switch (mode) {
    case 'L':
      Resize(width, c);
      break;
    case 'M':
      if (!shorten) InsertFill(0, c, (width - Length()) / 2);
      Resize(width, c);
      break;
    case 'R':
      if (shorten) {
        Delete(0, Length() - std::max(width, 0));
      } else {
        InsertFill(0, c, width - Length());
      }
      break;
    default:
      break;
  }
}
