// MP_XIni: what is behind a Kalvo_XIni: the document and its cursor.

#ifndef KALVOBASE_SRC_CONFIG_MP_XINI_H_
#define KALVOBASE_SRC_CONFIG_MP_XINI_H_

#include <cstdarg>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "config/mp_xini_section.h"
#include "kalvobase/ini.h"

class MP_XIni {
 public:
  MP_XIni() = default;
  MP_XIni(const MP_XIni&) = delete;
  MP_XIni& operator=(const MP_XIni&) = delete;

  // --- Document and cursor: mp_xini.cpp ---------------------------------------------

  int Read(const char* file);
  int Dump(const char* file) const;
  void CopyFrom(const MP_XIni& other);
  const char* FileName() const { return fileName_.c_str(); }

  const char* MoveTo(const char* path, va_list args);
  const char* MoveToFormatted(const char* path, ...);  // the same
  void MoveToPlain(const char* path);                  // without conversions
  const char* Path() const { return current_ != nullptr ? path_.c_str() : nullptr; }
  const char* MoveToChild(const char* name, int index);
  void MoveToParent();
  void MoveToTop();

  void AddSection(const char* name);
  void RemoveSection();
  void RemoveChild(const char* name, int index);
  void RemoveKey(const char* key);
  int ChildCount(const char* name);
  const char* ChildName(int i);
  int EntryCount() { return Shown().entries.count(); }
  const char* FirstKey() { return KeyName(Shown().entries.StepToFirst()); }
  const char* NextKey() { return KeyName(Shown().entries.StepToNext()); }
  Kalvo_String* TailComment(const char* key);

  // --- Values: mp_xini_values.cpp ---------------------------------------------------

  // What is told of a key: no section, no such key, or its value.
  static constexpr int kNoSection = -1;
  static constexpr int kNoKey = 0;
  static constexpr int kFound = 1;

  int ReadCharacter(const char* key, char* out) const;
  template <class Number>
  int ReadInteger(const char* key, Number* out) const;
  template <class Number>
  int ReadFloat(const char* key, Number* out) const;
  int ReadText(const char* key, char* buf, int size, int spare) const;
  const char* ReadString(const char* key, const char* defaultValue) const;

  int WriteText(const char* key, const char* text);
  int WriteCharacter(const char* key, unsigned char c, std::uint32_t value);

  // Formats the number by one of two formats.
  template <class Number>
  int WriteNumber(const char* key, Number value, const char* format, int hex = 0);

 private:
  // The current section, or the top.
  MP_XIniSection& Shown() { return current_ != nullptr ? *current_ : top_; }

  void Forget();
  bool Enter(std::string_view segment);
  void RebuildPath();
  static const char* KeyName(const IniEntry* entry);
  int Find(const char* key, const std::string** value) const;

  MP_XIniSection top_;
  MP_XIniSection* current_ = &top_;  // null if there is none

  // The path of the cursor, and how long it was in front of each of its parts; without these
  // if it is not known part by part.
  std::string path_;
  std::vector<std::size_t> parts_;

  std::string fileName_;
};

#endif  // KALVOBASE_SRC_CONFIG_MP_XINI_H_
