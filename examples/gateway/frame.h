// How tables travel: the length of the binary form, 4 bytes in network order, then the form.

#ifndef GATEWAY_FRAME_H_
#define GATEWAY_FRAME_H_

#include <kalvobase/kalvobase.h>

// The bytes that are sent for a table.
Kalvo_String Frame(Kalvo_KValueTable* table);

// Puts frames together from what comes in, which is a stranger's.
class FrameReader {
 public:
  // What has come.
  void Add(const void* bytes, long count);

  // Takes the next frame that is whole. kWrong: what has come is no frame, and never will be.
  enum Result { kTaken, kNotYet, kWrong };
  Result Take(Kalvo_KValueTable* table);

 private:
  Kalvo_String bytes_;
};

#endif  // GATEWAY_FRAME_H_
