// Texts that the operating system tells about the machine.

#ifndef GATEWAY_MACHINE_H_
#define GATEWAY_MACHINE_H_

#include <kalvobase/kalvobase.h>

// The name of the operating system, as it likes to be called.
Kalvo_String SystemName();

// The whole text of a file; empty if it cannot be read.
Kalvo_String ReadText(const char* path);

// The words of a line, however many blanks stand between and in front of them.
void SplitWords(Kalvo_String* line, Kalvo_StringArray* words);

#endif  // GATEWAY_MACHINE_H_
