#include "files/mp_stream_writer.h"

#include "platform/descriptor.h"
#include "platform/file.h"
#include "platform/socket.h"
#include "platform/wait_result.h"
#include "text/format_engine.h"

MP_StreamWriter::MP_StreamWriter(int descriptor)
    : MP_StreamCore(firstBlock_, sizeof(firstBlock_), kStreamCapacity, true) {
  Attach(descriptor);
}

void MP_StreamWriter::SetSink(StreamKind kind, int orderFlag) {
  kind_ = kind;
  SetOrderFlag(orderFlag);
}

void MP_StreamWriter::Attach(int descriptor) {
  Drop();
  descriptor_.Set(descriptor);
  pipe_ = kind_ == StreamKind::kFile && descriptor >= 0 && platform::file_is_pipe(descriptor);
}

void MP_StreamWriter::Detach() {
  Flush();
  Attach(-1);
}

int MP_StreamWriter::Flush() {
  if (Length() == 0) return Free();
  return DrainBuffer();
}

std::int64_t MP_StreamWriter::Transfer(int descriptor, const char* data, std::size_t size) {
  if (kind_ == StreamKind::kSocket) return platform::socket_send(descriptor, data, size);
  if (pipe_) return platform::pipe_write(descriptor, data, size);
  return platform::file_write(descriptor, data, size);
}

int MP_StreamWriter::DrainBuffer() {
  const char* const to = end;
  Drop();  // whatever comes of it
  const int sent = Send(block_, to);
  return sent > 0 ? Free() : sent;
}

int MP_StreamWriter::WriteDirect(const char* p, int n) {
  const int sent = Send(p, p + n);
  return sent > 0 ? n : sent;
}

// 1 if all bytes went out, or what DrainBuffer gives.
int MP_StreamWriter::Send(const char* from, const char* to) {
  const StreamDescriptor::Use use(&descriptor_);
  const int descriptor = use.number();
  if (descriptor < 0) return -1;
  while (from < to) {
    const std::int64_t n = Transfer(descriptor, from, static_cast<std::size_t>(to - from));
    if (n == platform::kTransferWouldBlock) {
      platform::descriptor_wait(descriptor, platform::WaitFor::kWriting, platform::kNoLimit);
      continue;
    }
    if (n == 0) return -1;
    if (n < 0) {
      // A socket that cannot even be waited for counts as a failed wait.
      const bool closed = kind_ == StreamKind::kSocket && !platform::descriptor_is_open(descriptor);
      return closed ? -1 : -3;
    }
    from += n;
  }
  return 1;
}

int MP_StreamWriter::Printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = VPrintf(format, args);
  va_end(args);
  return n;
}

// A conversion that does not fit makes the buffer larger. So that it does not grow for ever,
// one that has outgrown its first size is sent before more comes.
int MP_StreamWriter::VPrintf(const char* format, va_list args) {
  if (descriptor_.Get() < 0) return -1;
  if (Length() >= kStreamCapacity && DrainBuffer() < 1) return -1;
  return text::Format(this, format, args);
}
