#include "kalvobase/tcp_stream.h"
#include "net/mp_tcp_stream.h"

Kalvo_TcpStream::Kalvo_TcpStream() : impl_(new MP_TcpStream) {}
Kalvo_TcpStream::Kalvo_TcpStream(const Kalvo_TcpStream& other) = default;
Kalvo_TcpStream& Kalvo_TcpStream::operator=(const Kalvo_TcpStream& other) = default;
Kalvo_TcpStream::~Kalvo_TcpStream() { delete impl_; }

// --- The connection -----------------------------------------------------------------

int Kalvo_TcpStream::Connect(const char* host, int port) { return impl_->Connect(host, port); }

int Kalvo_TcpStream::DisConnect() {
  impl_->DisConnect();
  return 1;
}

void Kalvo_TcpStream::Attach(int socket) { impl_->Attach(socket); }
void Kalvo_TcpStream::Detach() { impl_->Detach(); }
void Kalvo_TcpStream::CloseSocket(int socket) { impl_->CloseSocket(socket); }
int Kalvo_TcpStream::GetHandle() { return impl_->socket(); }
Kalvo_SocketAddr* Kalvo_TcpStream::GetLocalAddr() { return &impl_->localAddr; }
Kalvo_SocketAddr* Kalvo_TcpStream::GetRemoteAddr() { return &impl_->peerAddr; }
void Kalvo_TcpStream::SetNetOrderFlag(int flag) { impl_->SetOrderFlag(flag); }
void Kalvo_TcpStream::SetPrivateData(void* data) { impl_->privateData = data; }
void* Kalvo_TcpStream::GetPrivateData() { return impl_->privateData; }

// --- Reading ------------------------------------------------------------------------

int Kalvo_TcpStream::Read(char& c) { return impl_->reader().ReadByte(&c); }

int Kalvo_TcpStream::Read(unsigned char& c) {
  return impl_->reader().ReadByte(reinterpret_cast<char*>(&c));
}

int Kalvo_TcpStream::Read(short& v) { return impl_->reader().ReadOrdered(&v, 2); }
int Kalvo_TcpStream::Read(unsigned short& v) { return impl_->reader().ReadOrdered(&v, 2); }
int Kalvo_TcpStream::Read(int& v) { return impl_->reader().ReadOrdered(&v, 4); }
int Kalvo_TcpStream::Read(unsigned int& v) { return impl_->reader().ReadOrdered(&v, 4); }
int Kalvo_TcpStream::Read(long& v) { return impl_->reader().ReadNarrow<Kalvo_Long>(&v); }
int Kalvo_TcpStream::Read(unsigned long& v) { return impl_->reader().ReadNarrow<Kalvo_ULong>(&v); }
int Kalvo_TcpStream::Read(float& v) { return impl_->reader().ReadOrdered(&v, 4); }
int Kalvo_TcpStream::Read(double& v) { return impl_->reader().ReadOrdered(&v, 8); }
int Kalvo_TcpStream::Read(long double& v) { return impl_->reader().ReadNarrow<double>(&v); }

int Kalvo_TcpStream::Read(char* buffer, int length) {
  return impl_->reader().ReadBlock(buffer, length);
}

const char* Kalvo_TcpStream::ReadLine(int strip, int maxLength) {
  return impl_->reader().ReadLine(strip != 0, maxLength);
}

void Kalvo_TcpStream::ReadIgnore(int count) { impl_->reader().Skip(count); }
int Kalvo_TcpStream::RawRead() { return impl_->reader().RawRead(); }
int Kalvo_TcpStream::GetDataSizeInBuff() { return impl_->reader().Unread(); }

// --- Writing ------------------------------------------------------------------------

int Kalvo_TcpStream::Write(char c, int count) { return impl_->writer().PutRun(c, count); }
int Kalvo_TcpStream::Write(unsigned char c, int count) { return impl_->writer().PutRun(c, count); }
int Kalvo_TcpStream::Write(short v) { return impl_->writer().WriteOrdered(&v, 2); }
int Kalvo_TcpStream::Write(unsigned short v) { return impl_->writer().WriteOrdered(&v, 2); }
int Kalvo_TcpStream::Write(int v) { return impl_->writer().WriteOrdered(&v, 4); }
int Kalvo_TcpStream::Write(unsigned int v) { return impl_->writer().WriteOrdered(&v, 4); }
int Kalvo_TcpStream::Write(long v) { return Write(static_cast<int>(v)); }
int Kalvo_TcpStream::Write(unsigned long v) { return Write(static_cast<unsigned int>(v)); }
int Kalvo_TcpStream::Write(float v) { return impl_->writer().WriteOrdered(&v, 4); }
int Kalvo_TcpStream::Write(double v) { return impl_->writer().WriteOrdered(&v, 8); }
int Kalvo_TcpStream::Write(long double v) { return Write(static_cast<double>(v)); }

int Kalvo_TcpStream::Write(const char* data, int length) {
  return impl_->writer().WriteBlock(data, length);
}

int Kalvo_TcpStream::Write() { return impl_->writer().Flush(); }

int Kalvo_TcpStream::Printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = impl_->writer().VPrintf(format, args);
  va_end(args);
  return n;
}

int Kalvo_TcpStream::VPrintf(const char* format, va_list args) {
  return impl_->writer().VPrintf(format, args);
}

unsigned char Kalvo_TcpStream::GetLastWriteChar() {
  return static_cast<unsigned char>(impl_->writer().GetLastByte());
}
