#include "files/mp_file_stream.h"
#include "kalvobase/file.h"
#include "platform/file.h"

Kalvo_FileStream::Kalvo_FileStream() : impl_(new MP_FileStream) {}
Kalvo_FileStream::Kalvo_FileStream(const Kalvo_FileStream& other) = default;
Kalvo_FileStream& Kalvo_FileStream::operator=(const Kalvo_FileStream& other) = default;
Kalvo_FileStream::~Kalvo_FileStream() { delete impl_; }

int Kalvo_FileStream::Open(const char* name, int flags, int permission) {
  return impl_->Open(name, flags, permission);
}

void Kalvo_FileStream::Attach(int fd, int mode) { impl_->Attach(fd, mode); }
void Kalvo_FileStream::Detach() { impl_->Detach(); }
void Kalvo_FileStream::Close() { impl_->Close(); }
long Kalvo_FileStream::Seek(int offset, int whence) { return impl_->Seek(offset, whence); }
int Kalvo_FileStream::IsOpen() { return impl_->descriptor() >= 0 ? 1 : 0; }
int Kalvo_FileStream::GetHandle() { return impl_->descriptor(); }
int Kalvo_FileStream::GetErrorCode() { return platform::last_file_error(); }

// --- Reading ------------------------------------------------------------------------

int Kalvo_FileStream::Read(char& c) { return impl_->ReadByte(&c); }
int Kalvo_FileStream::Read(unsigned char& c) {
  return impl_->ReadByte(reinterpret_cast<char*>(&c));
}
int Kalvo_FileStream::Read(short& v) { return impl_->ReadOrdered(&v, 2); }
int Kalvo_FileStream::Read(unsigned short& v) { return impl_->ReadOrdered(&v, 2); }
int Kalvo_FileStream::Read(int& v) { return impl_->ReadOrdered(&v, 4); }
int Kalvo_FileStream::Read(unsigned int& v) { return impl_->ReadOrdered(&v, 4); }
int Kalvo_FileStream::Read(long& v) { return impl_->ReadNarrow<Kalvo_Long>(&v); }
int Kalvo_FileStream::Read(unsigned long& v) { return impl_->ReadNarrow<Kalvo_ULong>(&v); }
int Kalvo_FileStream::Read(float& v) { return impl_->ReadOrdered(&v, 4); }
int Kalvo_FileStream::Read(double& v) { return impl_->ReadOrdered(&v, 8); }
int Kalvo_FileStream::Read(long double& v) { return impl_->ReadNarrow<double>(&v); }
int Kalvo_FileStream::Read(char* buf, int n) { return impl_->ReadBlock(buf, n); }

const char* Kalvo_FileStream::ReadLine(int strip, int maxLength) {
  return impl_->ReadLine(strip != 0, maxLength);
}

// --- Writing ------------------------------------------------------------------------

int Kalvo_FileStream::Write(short v) { return impl_->WriteOrdered(&v, 2); }
int Kalvo_FileStream::Write(unsigned short v) { return impl_->WriteOrdered(&v, 2); }
int Kalvo_FileStream::Write(int v) { return impl_->WriteOrdered(&v, 4); }
int Kalvo_FileStream::Write(unsigned int v) { return impl_->WriteOrdered(&v, 4); }
int Kalvo_FileStream::Write(long v) { return Write(static_cast<int>(v)); }
int Kalvo_FileStream::Write(unsigned long v) { return Write(static_cast<unsigned int>(v)); }
int Kalvo_FileStream::Write(float v) { return impl_->WriteOrdered(&v, 4); }
int Kalvo_FileStream::Write(double v) { return impl_->WriteOrdered(&v, 8); }
int Kalvo_FileStream::Write(long double v) { return Write(static_cast<double>(v)); }
int Kalvo_FileStream::Write(char c, int n) { return impl_->PutRun(c, n); }
int Kalvo_FileStream::Write(unsigned char c, int n) { return impl_->PutRun(c, n); }
int Kalvo_FileStream::Write(const char* p, int n) { return impl_->WriteBlock(p, n); }
int Kalvo_FileStream::Write() { return impl_->Flush(); }

int Kalvo_FileStream::Printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = impl_->VPrintf(format, args);
  va_end(args);
  return n;
}

int Kalvo_FileStream::VPrintf(const char* format, va_list args) {
  return impl_->VPrintf(format, args);
}

unsigned char Kalvo_FileStream::GetLastWriteChar() {
  return static_cast<unsigned char>(impl_->GetLastByte());
}
