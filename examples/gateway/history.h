// Samples in a file, and what they add up to.

#ifndef GATEWAY_HISTORY_H_
#define GATEWAY_HISTORY_H_

#include <kalvobase/kalvobase.h>

// Writes a table's binary form to a file, and reads it back. False if that did not work.
bool SaveTable(Kalvo_KValueTable* table, const char* path);
bool LoadTable(Kalvo_KValueTable* table, const char* path);

// Adds each number of `sample`, and of the tables in it, to the number of the same name in
// `total`. Texts and times are left alone.
void AddUp(Kalvo_KValueTable* total, Kalvo_KValueTable* sample);

// Divides each number by `count`.
void DivideAll(Kalvo_KValueTable* table, long count);

// Prints a table line by line, tables in it indented. Numbers without a unit of their own get
// `unit`.
void PrintTree(Kalvo_KValueTable* table, int indent, const char* unit = "");

#endif  // GATEWAY_HISTORY_H_
