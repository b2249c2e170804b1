#include "frame.h"

namespace {

constexpr int kHeader = 4;
constexpr unsigned int kLongest = 1 << 20;

}  // namespace

Kalvo_String Frame(Kalvo_KValueTable* table) {
  Kalvo_String form;
  table->Dump(&form);
  char header[kHeader];
  NB_ToBuf(header, static_cast<unsigned int>(form.length()));
  Kalvo_String frame;
  frame.memcpy(header, kHeader);
  frame.memcat(form.c_str(), static_cast<int>(form.length()));
  return frame;
}

void FrameReader::Add(const void* bytes, long count) {
  bytes_.memcat(bytes, static_cast<int>(count));
}

FrameReader::Result FrameReader::Take(Kalvo_KValueTable* table) {
  if (bytes_.length() < kHeader) return kNotYet;
  unsigned int length = 0;
  NB_ToValue(bytes_.c_str(), length);
  if (length == 0 || length > kLongest) return kWrong;
  if (bytes_.length() < kHeader + length) return kNotYet;
  const int size = static_cast<int>(length);
  if (table->Import(bytes_.c_str() + kHeader, size) != length) return kWrong;
  bytes_.Delete(0, kHeader + size);
  return kTaken;
}
