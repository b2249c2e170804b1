// MP_FileStream: what is behind a Kalvo_FileStream. A reader and a writer, as far as it has
// them, on one descriptor, which it owns.

#ifndef KALVOBASE_SRC_FILES_MP_FILE_STREAM_H_
#define KALVOBASE_SRC_FILES_MP_FILE_STREAM_H_

#include <cstdarg>
#include <memory>

#include "files/mp_stream_reader.h"
#include "files/mp_stream_writer.h"

class MP_FileStream {
 public:
  MP_FileStream() = default;
  MP_FileStream(const MP_FileStream&) = delete;
  MP_FileStream& operator=(const MP_FileStream&) = delete;
  ~MP_FileStream() { Close(); }

  int Open(const char* name, int flags, int permissions);
  void Attach(int descriptor, int mode);
  void Detach();
  void Close();
  long Seek(int offset, int whence);
  int descriptor() const { return descriptor_; }

  int ReadByte(char* out) { return reader_ ? reader_->ReadByte(out) : kNoSide; }
  int ReadBlock(char* out, int n) { return reader_ ? reader_->ReadBlock(out, n) : kNoSide; }
  int ReadOrdered(void* number, int n) {
    return reader_ ? reader_->ReadOrdered(number, n) : kNoSide;
  }
  template <class Stored, class Number>
  int ReadNarrow(Number* number) {
    return reader_ ? reader_->ReadNarrow<Stored>(number) : kNoSide;
  }
  const char* ReadLine(bool strip, int maxLength) {
    return reader_ ? reader_->ReadLine(strip, maxLength) : nullptr;
  }

  int WriteOrdered(const void* number, int n) {
    return writer_ ? writer_->WriteOrdered(number, n) : kNoSide;
  }
  int PutRun(int c, int n) { return writer_ ? writer_->PutRun(c, n) : kNoSide; }
  int WriteBlock(const char* p, int n) { return writer_ ? writer_->WriteBlock(p, n) : kNoSide; }
  int Flush() { return writer_ ? writer_->Flush() : -1; }
  int VPrintf(const char* format, va_list args) {
    return writer_ ? writer_->VPrintf(format, args) : -1;
  }
  char GetLastByte() const { return writer_ ? writer_->GetLastByte() : '\0'; }

 private:
  static constexpr int kNoSide = -2;  // asked of a stream without a reader, or a writer

  void AttachSides(int descriptor);

  std::unique_ptr<MP_StreamReader> reader_;
  std::unique_ptr<MP_StreamWriter> writer_;
  int descriptor_ = -1;
};

#endif  // KALVOBASE_SRC_FILES_MP_FILE_STREAM_H_
