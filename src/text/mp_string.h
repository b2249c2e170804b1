// MP_String: what is behind a Kalvo_String. A stream core in writing mode with no
// destination: its buffer grows for ever.
//
// Texts that callers hand in may lie in this string's own block.

#ifndef KALVOBASE_SRC_TEXT_MP_STRING_H_
#define KALVOBASE_SRC_TEXT_MP_STRING_H_

#include <cstdarg>
#include <cstdint>
#include <memory>

#include "files/mp_stream_core.h"

class MP_String : public MP_StreamCore {
 public:
  static MP_String& Of(Kalvo_String& string) { return *string.impl(); }

  MP_String();
  explicit MP_String(const char* text);

  int LineHook() override { return 1; }
  int DrainBuffer() override;

  // --- Storage and editing: mp_string.cpp -----------------------------------------

  void Clear();
  void Assign(const char* bytes, int n);
  void Assign(const MP_String& other) { Assign(other.block_, other.Length()); }
  void AssignText(const char* text);
  void AssignText(const char* text, int n);
  void Append(const char* bytes, int n);
  void Append(const MP_String& other) { Append(other.block_, other.Length()); }
  void AppendText(const char* text);
  void AppendText(const char* text, int n);
  void AppendRun(char c, int n);

  // Counts `n` more bytes as written and gives the place where the caller puts them; null,
  // with nothing changed, if there is no room.
  char* Extend(int n) {
    if (n > limit - end && Reserve(n) < 0) return nullptr;
    char* place = end;
    end += n;
    return place;
  }

  // The content, terminated.
  const char* Text();
  const char* Content() const { return block_; }
  char At(int i) const { return i >= 0 && i < Length() ? block_[i] : '\0'; }
  const char* Right(int n);
  int Compare(const char* text);
  int CompareNoCase(const char* text);

  char quote() const { return quote_; }
  void SetQuote(char c) { quote_ = c; }

  void SetAt(int i, char c);
  void Truncate(int n);
  void TruncateRight(int n);
  void Resize(int n, char c);
  void Delete(int position, int n);
  void InsertFill(int position, char c, int n);
  void Insert(int position, const char* bytes, int n);
  void ReplaceByte(char from, char to);
  void ReplaceAt(int position, char c);
  void Overwrite(int position, const char* bytes, int n);
  int Replace(int from, const char* what, const char* with);
  int ReplaceAll(int from, const char* what, const char* with);
  void TrimLeft();
  void TrimRight();
  void Trim();
  void MakeUpper();
  void MakeLower();
  void Reverse();
  void Align(char mode, char c, int width);

  // --- Conversion and searching: mp_string_convert.cpp ----------------------------

  void Format(const char* format, va_list args);
  void AppendFormat(const char* format, va_list args);
  void InsertFormat(int position, const char* format, va_list args);
  std::int32_t ToInt(int base);
  double ToFloat();
  char ToChar();
  const char* Find(int start, const char* pattern, int& position, int patternLength);
  const char* FindLast(const char* pattern, int& position, int patternLength);
  int FindLastChar(char c) const;
  const char* MatchBrack(int start, const char* open, const char* close, int& openPosition,
                         int& closePosition);
  void FormatDate(long stamp, const char* format);
  void AppendDate(long stamp, const char* format);
  const char* AppendBase64(const char* bytes, int n);
  const char* AppendDecodedBase64(const char* text);
  const char* AppendDecodedBase64(const char* bytes, int n);

 private:
  // Most texts of a host are short: they need no second block of memory.
  static constexpr int kFirstBlockSize = 64;
  static constexpr int kFirstCapacity = 256;

  void AppendGrowing(const char* bytes, int n);
  void Terminate();
  MP_String* Scratch();
  MP_String* Formatted(const char* format, va_list args);
  MP_String* FormattedDate(long stamp, const char* format);
  char* OpenGap(int position, int n);

  std::unique_ptr<MP_String> scratch_;  // where formatted texts are written first
  char quote_ = '\0';
  alignas(8) char firstBlock_[kFirstBlockSize];  // numbers may be read from it in place
};

inline MP_String* Kalvo_String::impl() const { return static_cast<MP_String*>(cursor_); }

#endif  // KALVOBASE_SRC_TEXT_MP_STRING_H_
