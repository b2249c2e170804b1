// MP_StreamReader: a buffer that a descriptor fills.

#ifndef KALVOBASE_SRC_FILES_MP_STREAM_READER_H_
#define KALVOBASE_SRC_FILES_MP_STREAM_READER_H_

#include "files/mp_stream_core.h"
#include "files/stream_descriptor.h"
#include "files/stream_kind.h"
#include "text/mp_string.h"

// It owns no descriptor and closes none. After the end of the data, and after a failure, it
// has none any more.
class MP_StreamReader : public MP_StreamCore {
 public:
  explicit MP_StreamReader(int descriptor = -1);

  void SetSource(StreamKind kind, int orderFlag);

  // Drops all unread bytes and takes a descriptor, or none.
  void Attach(int descriptor);
  void Detach() { Attach(-1); }

  // For another thread, which closes the descriptor: Forget lets go of it alone, whatever is
  // in the buffer, and WaitUntilUnused comes back when no transfer uses it any more.
  void Forget() { descriptor_.Set(-1); }
  void WaitUntilUnused() const { descriptor_.WaitUntilUnused(); }

  int FillBuffer() override;
  int ReadDirect(char* out, int n) override;

  // Reads once, behind what is unread. The number of unread bytes; 0 if the source has
  // ended; -1 without a descriptor, or if there is no memory for more; -2 on failure.
  int RawRead();

  // The next line, terminated, with its CR and LF bytes or, if `strip` is set, with none of
  // any; a last line needs no LF. Null behind the last, and as soon as a line has more than
  // `maxLength` bytes that are neither, unless that is -1, or more than can be stored: its
  // rest can still be read. Good until the next call, whatever else is done to the reader.
  const char* ReadLine(bool strip, int maxLength);

  // The length of the last line, zero bytes included.
  int LineLength() const { return lineLength_; }

 private:
  int Transfer(char* to, std::size_t room);
  int Judge(int descriptor, int result) const;
  bool MakeRoomBehind();
  void LeaveLine();
  char* FindReturn(char* lineEnd);
  const char* CollectLine(bool strip, int maxLength);
  bool TakePiece(char* pieceEnd, bool strip, int maxLength, int* count);

  StreamKind kind_ = StreamKind::kFile;
  StreamDescriptor descriptor_;

  // A line that lies whole in the block is given out where it is. Until the next one, what
  // fills the buffer goes to the other block.
  char* lineBlock_ = nullptr;   // where the last line lies; null if not in a block
  char* nextReturn_ = nullptr;  // the first CR behind `end`, or `limit`; null if unknown
  int lineLength_ = 0;
  MP_String line_;  // for all other lines
  char blocks_[2][kStreamCapacity + 1];
};

#endif  // KALVOBASE_SRC_FILES_MP_STREAM_READER_H_
