#include "files/mp_file_stream.h"

#include "files/path.h"
#include "platform/file.h"
#include "platform/kept_error.h"

int MP_FileStream::Open(const char* name, int flags, int permissions) {
  const bool readOnly = (flags & ~platform::kOpenBinary) == platform::kOpenReadOnly;
  platform::KeptError error;
  const std::string system = platform::system_path(name);
  const int descriptor = readOnly ? platform::file_open(system, flags, permissions)
                                  : path::SafeOpen(name, flags, permissions);
  error.Note();
  if (descriptor >= 0) Attach(descriptor, readOnly ? 0 : 2);
  return descriptor;
}

// One side that is missing is made, one that is not wanted goes, and what it held with it.
void MP_FileStream::Attach(int descriptor, int mode) {
  descriptor_ = descriptor;
  if (mode == 1) {
    reader_.reset();
  } else if (!reader_) {
    reader_ = std::make_unique<MP_StreamReader>();
  }
  if (mode == 0) {
    writer_.reset();
  } else if (!writer_) {
    writer_ = std::make_unique<MP_StreamWriter>();
  }
  AttachSides(descriptor);
}

void MP_FileStream::AttachSides(int descriptor) {
  if (reader_) {
    reader_->SetSource(StreamKind::kFile, MP_StreamCore::kHostOrder);
    reader_->Attach(descriptor);
  }
  if (writer_) {
    writer_->SetSink(StreamKind::kFile, MP_StreamCore::kHostOrder);
    writer_->Attach(descriptor);
  }
}

void MP_FileStream::Detach() {
  if (reader_) reader_->Detach();
  if (writer_) writer_->Detach();
  descriptor_ = -1;
}

void MP_FileStream::Close() {
  const int descriptor = descriptor_;
  if (descriptor < 0) return;
  Detach();
  platform::file_close(descriptor);
}

long MP_FileStream::Seek(int offset, int whence) {
  if (reader_) reader_->Detach();
  if (writer_) writer_->Detach();
  const std::int64_t position = platform::file_seek(descriptor_, offset, whence);
  AttachSides(descriptor_);
  return static_cast<long>(position);
}
