// Kalvo_TcpStream: a blocking TCP client with buffers, or a wrapper of any connected socket.
//
//   Kalvo_TcpStream stream;
//   if (stream.Connect("localhost", port) < 0) return Kalvo_SOCK_GetLastError();
//   stream.Printf("GET %s HTTP/1.0\r\n\r\n", "/");
//   while (const char* line = stream.ReadLine(1, -1)) std::puts(line);
//
// Reads and writes go through buffers of 8,192 bytes, so that many small values cost one
// system call. What is written reaches the other side when the buffer is full, after a line
// feed, with Write() and with DisConnect.
//
// Calls block as long as they must. No signal of a broken pipe is raised. One thread may
// read while another writes, and a third may close the socket; all else is for one thread at a
// time.

#ifndef KALVOBASE_TCP_STREAM_H_
#define KALVOBASE_TCP_STREAM_H_

#include <cstdarg>

#include "kalvobase/socket.h"
#include "kalvobase/types.h"

class MP_TcpStream;

// A copy shares the connection of its source with no count of users: of the handles that
// share one exactly one may be destroyed, and after that the others must not be used.
class KALVO_API Kalvo_TcpStream {
 public:
  // No socket.
  Kalvo_TcpStream();
  Kalvo_TcpStream(const Kalvo_TcpStream& other);
  Kalvo_TcpStream& operator=(const Kalvo_TcpStream& other);

  // As DisConnect.
  virtual ~Kalvo_TcpStream();

  // --- The connection -----------------------------------------------------------

  // Connects to the first address of `host`, and waits as long as that takes. Returns the
  // socket; 1 if the stream is connected to this address and port already; -1 on failure
  // and for a null `host`. A connection to somewhere else ends first.
  int Connect(const char* host, int port);

  // Sends what is in the buffer and ends: a socket of Connect is closed, one of Attach is
  // not. Returns 1.
  int DisConnect();

  // Disconnects and takes a connected socket, which stays the caller's. Turns on its
  // no-delay option.
  void Attach(int socket);

  // Sends what is in the buffer, drops what is unread, and reads and writes no more. The
  // socket stays open until DisConnect.
  void Detach();

  // Closes a socket; for -1 the stream's own, unflushed, which ends its connection also for
  // a thread that waits in a read or a write: this may be called beside them. The stream takes
  // no note but that it does not use that socket any more.
  void CloseSocket(int socket);

  // The socket, or -1.
  int GetHandle();

  // The addresses of both sides; they belong to the stream.
  Kalvo_SocketAddr* GetLocalAddr();
  Kalvo_SocketAddr* GetRemoteAddr();

  // Not 0, as at the start: numbers go most significant byte first, which is the order of
  // networks. 0: least significant byte first.
  void SetNetOrderFlag(int flag);

  // Anything of the caller's; null at the start.
  void SetPrivateData(void* data);
  void* GetPrivateData();

  // --- Reading ------------------------------------------------------------------

  // The byte's value plus 1, so 1 to 256; 0 when the other side has closed, negative on
  // failure.
  int Read(char& c);
  int Read(unsigned char& c);

  // Numbers of 2 bytes; of 4 bytes, `long` included; of 8 bytes. How many bytes, or -1 if
  // one is missing.
  int Read(short& v);
  int Read(unsigned short& v);
  int Read(int& v);
  int Read(unsigned int& v);
  int Read(long& v);
  int Read(unsigned long& v);
  int Read(float& v);
  int Read(double& v);
  int Read(long double& v);

  // Waits for `length` bytes. Their number, which is smaller only if the other side has
  // closed; negative on failure.
  int Read(char* buffer, int length);

  // The next line as a text that is good until the next ReadLine; null behind the last.
  // `strip` not 0 leaves out its CR and LF bytes. With `maxLength` other than -1 a line of
  // more bytes than that gives null as soon as they have come, and the next call goes on
  // behind them.
  const char* ReadLine(int strip, int maxLength);

  // Skips up to `count` bytes that have been received already, for a `count` below 1 all.
  void ReadIgnore(int count);

  // Receives once into the buffer. The number of unread bytes; 0 if the other side has
  // closed, negative on failure.
  int RawRead();

  // The number of bytes that have been received and not read.
  int GetDataSizeInBuff();

  // --- Writing ------------------------------------------------------------------

  // Puts `c` `count` times. 1, or negative on failure; a `count` below 1 is returned.
  int Write(char c, int count);
  int Write(unsigned char c, int count);

  // Numbers of 2, of 4 and of 8 bytes, as they are read. How many bytes, or -1.
  int Write(short v);
  int Write(unsigned short v);
  int Write(int v);
  int Write(unsigned int v);
  int Write(long v);
  int Write(unsigned long v);
  int Write(float v);
  int Write(double v);
  int Write(long double v);

  // Writes `length` bytes; a negative `length` means the text `data`. Their number, 0 for
  // null, negative on failure. Line feeds among them send nothing.
  int Write(const char* data, int length);

  // Sends what is in the buffer. Above 0, or negative on failure, after which the buffer is
  // empty all the same.
  int Write();

  // As Kalvo_String::sprintf. A line feed in `format` sends what is in the buffer, one in an
  // argument does not. The number of bytes; -1 on failure and without a socket.
  int Printf(const char* format, ...);
  int VPrintf(const char* format, va_list args);

  // The last byte that was written.
  unsigned char GetLastWriteChar();

 private:
  MP_TcpStream* impl_;
};

#endif  // KALVOBASE_TCP_STREAM_H_
