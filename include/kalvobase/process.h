// Where the program lives, and its millisecond clock.
//
//   Kalvo_String dir;
//   unsigned long started = Kalvo_THREAD_GetTickCount();
//   std::printf("running from %s\n", Kalvo_GetExePath(&dir));
//   Kalvo_Thread_Sleep(50);
//   unsigned int passed = static_cast<unsigned int>(Kalvo_THREAD_GetTickCount() - started);
//
// All of these may be called from any thread.

#ifndef KALVOBASE_PROCESS_H_
#define KALVOBASE_PROCESS_H_

#include "kalvobase/types.h"

class Kalvo_String;

extern "C" {

// Each of these three stores a text in *s and returns the text of *s, valid until
// the next call on *s that can edit it. A null s gives "". The text is empty if
// the system does not tell the path.

// The full path of the program's executable file.
KALVO_API const char* Kalvo_GetExeFullName(Kalvo_String* s);

// The same path up to its last separator, the separator left out. A path without
// a separator stays whole.
KALVO_API const char* Kalvo_GetExePath(Kalvo_String* s);

// What follows the last separator of the same path, suffix included.
KALVO_API const char* Kalvo_GetExeBaseName(Kalvo_String* s);

// Suspends the calling thread for `ms` milliseconds, of which the low 32 bits
// count: 0 only gives up the thread's turn, 0xFFFFFFFF sleeps for ever. Neither signals nor
// a change of the wall clock cut it short.
KALVO_API void Kalvo_Thread_Sleep(unsigned long ms);

// Milliseconds of a steady clock, 0 to 0xFFFFFFFF, wrapping after 49.7 days.
// Subtract two readings in 32 bits to get an interval.
KALVO_API unsigned long Kalvo_THREAD_GetTickCount(void);
}

#endif  // KALVOBASE_PROCESS_H_
