// Kalvo_String, the library's string and byte buffer, and Kalvo_StringArray.
//
//   Kalvo_String line;
//   line.sprintf("%-8s|%6.2f|", "load", 0.25);  // "load    |  0.25|"
//   line.replace_all(0, "|", " ");
//   Kalvo_StringArray words;
//   words.Split(line.c_str(), ' ', 1);  // "load", "0.25"
//
// A string is a sequence of bytes, zero bytes included. Positions and counts are
// byte counts; no operation knows a multi-byte character. A position or count out
// of range is no error: each operation tells what it does instead. A string holds
// at most 2,147,483,646 bytes; what does not fit, or what no memory can be had for,
// is not stored, and what was stored stays.
//
// Null texts count as empty ones unless an operation tells otherwise. A pointer
// that a string hands out is good until the next call on that string that can edit
// it, c_str included. It may be given back to the same string as an argument.
//
// One object belongs to one thread at a time, its const operations included: c_str
// writes the terminator, ToInt trims.

#ifndef KALVOBASE_TEXT_H_
#define KALVOBASE_TEXT_H_

#include <cstdarg>

#include "kalvobase/types.h"

class MP_HeldString;
class MP_String;
class MP_StringArray;

// The front of every string's implementation: where the next byte goes, and up to where
// bytes may go before the library must make room. It stands here for the one operation
// that is too small for a call into the library.
struct Kalvo_StringCursor {
  char* end;
  char* limit;
};

class KALVO_API Kalvo_String {
 public:
  // --- Making and assigning -----------------------------------------------------

  // Empty.
  Kalvo_String();

  // A copy of the text `s`.
  Kalvo_String(const char* s);

  // As strncpy(s, n).
  Kalvo_String(const char* s, int n);

  // `n` bytes `c`; empty if `n` is below 1.
  Kalvo_String(char c, int n);

  // The whole content, zero bytes included, but neither quote nor order flag.
  Kalvo_String(const Kalvo_String& other);
  Kalvo_String& operator=(const Kalvo_String& other);

  virtual ~Kalvo_String();

  // Replaces the content by the text `s`. One operation in two forms.
  Kalvo_String& operator=(const char* s);
  Kalvo_String* strcpy(const char* s);

  // Replaces the content by at most `n` bytes of `s`, up to its terminator. A
  // negative `n` means the whole text. No byte behind the first `n` is read.
  Kalvo_String* strncpy(const char* s, int n);

  // Replaces the content by exactly `n` bytes; by none if `n` is below 1.
  Kalvo_String* memcpy(const void* p, int n);

  // Empties the string and sets its quote to 0, as every replacing operation does.
  void Reset();

  // --- Appending ----------------------------------------------------------------

  Kalvo_String* strcat(const char* s);

  // At most `n` bytes of `s`, up to its terminator. Nothing if `n` is below 1: unlike
  // in strncpy a negative `n` does not mean the whole text.
  Kalvo_String* strncat(const char* s, int n);

  // Exactly `n` bytes; nothing if `n` is below 1.
  Kalvo_String* memcat(const void* p, int n);

  // `n` bytes `c`; nothing if `n` is below 1.
  Kalvo_String* addch(char c, int n);

  // --- Reading ------------------------------------------------------------------

  // Number of bytes.
  unsigned long length() const;

  // The content with a terminator behind it. Never null.
  const char* c_str() const;
  operator const char*() const;

  // The byte at `i`, or 0 if `i` lies outside the string. The index is an int; the
  // other widths are there so that any integer picks an overload.
  char GetAt(int i) const;
  char operator[](int i) const;
  char operator[](unsigned int i) const;
  char operator[](long i) const;
  char operator[](unsigned long i) const;
  char operator[](long long i) const;
  char operator[](unsigned long long i) const;

  // The last `n` bytes, terminated: the whole content if `n` reaches the length, ""
  // if `n` is 0 or less.
  const char* right(int n) const;

  // Compares the content up to its first zero byte with `s`, as unsigned bytes: -1, 0
  // or 1. CompareNoCase takes A to Z for a to z.
  int Compare(const char* s) const;
  int CompareNoCase(const char* s) const;

  // The quote character that the text was written with in an INI file; 0 for none.
  char GetQuote() const;
  void SetQuote(char c);

  // --- Editing in place ---------------------------------------------------------

  // Stores `c` at `i`; nothing if `i` lies outside the string.
  void SetAt(int i, char c);

  // Keeps the first `n` bytes; nothing if `n` is negative or reaches the length.
  Kalvo_String* truncate(int n);

  // Removes the last `n` bytes, all of them if `n` reaches the length.
  Kalvo_String* truncate_right(int n);

  // Cuts the string to `n` bytes or fills it up to `n` bytes with `c`. A negative `n`
  // does nothing.
  void resize(int n, char c);

  // Removes up to `n` bytes at `pos`. A negative `pos` counts as 0; nothing if `pos`
  // reaches the length or `n` is below 1.
  Kalvo_String* Delete(int pos, int n);

  // Inserts `n` bytes `c`, or `n` bytes of `s` (a negative `n` means the whole text),
  // before `pos`. A negative `pos` counts as 0, and one at or beyond the end appends.
  Kalvo_String* insert_char(int pos, char c, int n);
  Kalvo_String* insert_string(int pos, const char* s, int n);

  // Every byte `from` becomes `to`.
  Kalvo_String* replace(char from, char to);

  // Stores `c` at `pos`, or appends it once if `pos` lies at or beyond the end.
  Kalvo_String* replace(int pos, char c);

  // Overwrites the bytes from `pos` with `n` bytes of `s` (a negative `n` means the
  // whole text). The string never grows: what would lie beyond its end is dropped. So
  // is what would lie before its start.
  Kalvo_String* replace(int pos, const char* s, int n);

  // Replaces the first occurrence of the text `what` at or behind `from`; the search
  // ends at the first zero byte. Returns the position behind the new text, where a
  // following search should start, or -1 if nothing was found. An empty `what` is
  // never found.
  int replace(int from, const char* what, const char* with);

  // The same for all occurrences; new text is not searched again. Returns their
  // number.
  int replace_all(int from, const char* what, const char* with);

  // Remove blanks, that is spaces and tabs and no other bytes.
  void TrimLeft();
  void TrimRight();
  void Trim();

  Kalvo_String* MakeUpper();
  Kalvo_String* MakeLower();
  void MakeReverse();

  // Brings the string to `width` bytes, padding with `c`: 'L' keeps and pads on the
  // right, 'M' centres, 'R' keeps the right part and pads on the left. An odd byte of
  // padding goes to the right. Any other mode does nothing.
  Kalvo_String* Align(char mode, char c, int width);

  // --- Binary writes ------------------------------------------------------------

  // Append a number's bytes: 2 for the short kinds, 4 for int, long and float, 8 for
  // double and long double, which is stored as a double. Most significant byte first,
  // unless the order flag was set to 0. Return the number of bytes, or -1 if they
  // could not be stored.
  int Write(char v);
  int Write(unsigned char v);
  int Write(short v);
  int Write(unsigned short v);
  int Write(int v);
  int Write(unsigned int v);
  int Write(long v);
  int Write(unsigned long v);
  int Write(float v);
  int Write(double v);
  int Write(long double v);

  // Appends `n` bytes as they stand; a negative `n` means the length of the text `p`.
  // A null `p` gives 0.
  int Write(const char* p, int n);

  // 0: least significant byte first. Anything else, 1 at the start: most significant
  // byte first. No other operation changes or copies the flag.
  void SetOrderFlag(int flag);

  // --- Formatting ---------------------------------------------------------------

  // The library's own printf. Conversions: %d %u %o %x %X %c %s %e %f %g %p, %% and %m
  // (the text of the current errno). Flags: at most one '-', then at most one '+', then
  // at most one '0', in this order. Width and precision are digits or '*'; "l" takes a
  // long of which 32 bits count, "ll" and "I64" take 64 bits. A width is exact: a
  // shorter output is padded to it, a longer one is cut to its first bytes. A precision
  // of 0 prints all of a %s, and a null %s prints nothing. Any other conversion prints
  // nothing and takes no argument.
  //
  // The first two replace the content, the next two append, the last two insert before
  // `pos` as insert_string does.
  Kalvo_String* sprintf(const char* fmt, ...);
  Kalvo_String* vsprintf(const char* fmt, va_list args);
  Kalvo_String* sprintf_append(const char* fmt, ...);
  Kalvo_String* vsprintf_append(const char* fmt, va_list args);
  Kalvo_String* insert(int pos, const char* fmt, ...);
  Kalvo_String* vinsert(int pos, const char* fmt, va_list args);

  // --- Numbers ------------------------------------------------------------------

  // Trims the string and reads a 32-bit number from it. Base 16 takes digits of either
  // case, and an 'x' starts the number anew; base 2 takes '0' and '1'; any other base
  // means decimal. Reading stops at the first other byte; 0 if there is no number.
  long ToInt(int base) const;

  double ToFloat() const;

  // One character out of its notation: a backslash with n, r, t, 0 or a backslash (any
  // other byte gives a blank), 0x and hexadecimal digits, or a decimal number. A '0'
  // that does not start a 0x stands for itself.
  char ToChar() const;

  // --- Dates --------------------------------------------------------------------

  // The date language: yyyy or yy year, mm month, dd day, hh hour, mi minute, kk
  // quarter of the hour (1 to 4), ss second, each in lower or upper case.
  //
  // Reads a time stamp, local time, out of the text. A text that names no date after
  // 1970 gives a span: minus its seconds. So "hh:mi:ss" on "01:01:01" gives -3661.
  long ToTime(const char* fmt) const;

  // Prints a time stamp in local time; a `t` below 14400 is a span of -t seconds. The
  // letters D, H, K, M, S and Y that start no directive are dropped, other bytes are
  // copied. The first form replaces the content.
  Kalvo_String* FormatDate(long t, const char* fmt);
  Kalvo_String* Append_FormatDate(long t, const char* fmt);

  // The seconds of the period that the last directive of `fmt` names: 60 for
  // "hh:mi", 2592000 for a month, 31536000 for a year or none.
  static long GetTimePeriod(const char* fmt);

  // --- Searching ----------------------------------------------------------------

  // Looks for `patlen` bytes of `pat` (below 1: the text `pat`) from `start` on, a
  // negative `start` counting as 0. Gives a pointer to the occurrence and its position
  // in `pos`, or null and -1. The pass does not step back: a byte that breaks a partial
  // match is not compared with the start of `pat` again, so "ab" is not found in "aab".
  const char* Find(int start, const char* pat, int& pos, int patlen);

  // The same from the end to the start, comparing `pat` from its last byte.
  const char* FindLast(const char* pat, int& pos, int patlen);

  // The position of the last byte `c`, or -1.
  int FindLastChar(char c) const;

  // Finds the text `open` from `start` on and the text `close` that belongs to it, one
  // further for each `open` in between up to the first `close`. Gives a pointer to the
  // opening and both positions; null with -1 for what is missing.
  const char* MatchBrack(int start, const char* open, const char* close, int& openpos,
                         int& closepos);

  // --- Base64 -------------------------------------------------------------------

  // Appends the Base64 form of `n` bytes, with a line feed after each 80 characters of
  // whole groups. Returns c_str().
  const char* Base64Encode(const char* p, int n);

  // Appends the bytes of a Base64 text; joined texts decode as one. Line ends are
  // skipped and end a group of four; any other byte outside the alphabet ends the
  // decoding. Returns c_str().
  const char* Base64Decode(const char* text);
  const char* Base64Decode(const char* p, int n);

 private:
  friend class MP_HeldString;
  friend class MP_String;
  explicit Kalvo_String(MP_String& held);
  MP_String* impl() const;
  Kalvo_String* AppendRun(char c, int n);

  Kalvo_StringCursor* cursor_;
};

inline Kalvo_String* Kalvo_String::addch(char c, int n) {
  if (n != 1 || cursor_->end == cursor_->limit) return AppendRun(c, n);
  *cursor_->end++ = c;
  return this;
}

// 1 if lengths and bytes are equal, else 0; a null `s` is equal to nothing.
KALVO_API int operator==(const Kalvo_String& a, const char* s);
KALVO_API int operator==(const Kalvo_String& a, const Kalvo_String& b);

// Non-zero if they are unequal, else 0.
KALVO_API int operator!=(const Kalvo_String& a, const char* s);
KALVO_API int operator!=(const Kalvo_String& a, const Kalvo_String& b);

// An ordered list of strings. It is a linked list: access by position walks from the
// nearer end. Positions follow Kalvo_Queue: a negative one and one beyond the end mean
// the last element, or the place behind it where something is inserted.
//
// The strings that operations return belong to the array. They can be edited in place
// and stay good until their element is removed.
//
// One object belongs to one thread at a time.
class KALVO_API Kalvo_StringArray {
 public:
  Kalvo_StringArray();
  Kalvo_StringArray(const Kalvo_StringArray& other);
  ~Kalvo_StringArray();

  // Copies the elements, each as text up to its first zero byte.
  Kalvo_StringArray& operator=(const Kalvo_StringArray& other);

  int GetSize() const;

  // An element; null only in an empty array.
  Kalvo_String* GetAt(int i) const;
  Kalvo_String* operator[](int i) const;
  Kalvo_String* GetTail() const;

  // Adds an element at the tail, with the content of strncpy(s, n) or with the whole
  // content of `s`. Returns it.
  Kalvo_String* Add(const char* s, int n);
  Kalvo_String* Add(const Kalvo_String& s);

  // Inserts a new element before `i`; nothing is replaced. Returns it.
  Kalvo_String* SetAt(int i, const char* s, int n);
  Kalvo_String* SetAt(int i, const Kalvo_String& s);

  // Inserts `n` copies of `s` before `i`, one by one. Returns the one made first; null
  // if `n` is below 1.
  Kalvo_String* InsertAt(int i, const char* s, int n);
  Kalvo_String* InsertAt(int i, const Kalvo_String& s, int n);

  // Inserts copies of the elements of `a` before `i`, as text up to their first zero
  // byte. Returns the first copy; null if `a` is null or empty.
  Kalvo_String* InsertAt(int i, Kalvo_StringArray* a);

  // Adds copies of all elements of `other`, as text up to their first zero byte.
  // Returns the new size.
  int Append(const Kalvo_StringArray& other);

  // RemoveAll, then Append. An array copied onto itself stays as it is.
  void Copy(const Kalvo_StringArray& other);

  // Removes up to `n` elements from `i` on; none if `i` is negative or beyond the end.
  void RemoveAt(int i, int n);
  void RemoveTail();
  void RemoveAll();

  // Splits `text` at each byte `sep` and returns the new size. With `merge` not 0 a run
  // of separators counts as one. The first form makes no element of an empty text or
  // behind a trailing separator. The second always adds the last token, even if it is
  // empty, and goes on behind zero bytes, though an element ends at one. A null `text`
  // gives an empty array; `text` may be an element of this array.
  int Split(const char* text, char sep, int merge);
  int Split(Kalvo_String* text, char sep, int merge);

  // 1 if sizes and contents are equal, else 0.
  friend KALVO_API int operator==(const Kalvo_StringArray& a, const Kalvo_StringArray& b);

 private:
  friend class MP_StringArray;

  MP_StringArray* impl_;
};

KALVO_API int operator==(const Kalvo_StringArray& a, const Kalvo_StringArray& b);

// 1 if sizes or contents differ, else 0.
KALVO_API int operator!=(const Kalvo_StringArray& a, const Kalvo_StringArray& b);

#endif  // KALVOBASE_TEXT_H_
