// From a tree of sections to lines.

#ifndef KALVOBASE_SRC_CONFIG_INI_WRITER_H_
#define KALVOBASE_SRC_CONFIG_INI_WRITER_H_

#include <string_view>

#include "config/mp_xini_section.h"
#include "files/mp_stream_writer.h"

// What it writes reads back as the same tree.
class IniWriter {
 public:
  explicit IniWriter(MP_StreamWriter* out) : out_(out) {}

  // A document from its top.
  void Write(const MP_XIniSection& top);

 private:
  void Open(const MP_XIniSection& section);
  void WriteEntries(const MP_XIniSection& section);
  void WriteComment(std::string_view text);
  void WriteTail(const IniEntry& entry);
  void NoteKey(const IniEntry& entry);
  void NoteFurtherLines(std::string_view text);
  void NoteLines(std::string_view text);
  void Close(const MP_XIniSection& section, const MP_XIniSection* next);
  void Put(std::string_view text) { out_->WriteBlock(text.data(), static_cast<int>(text.size())); }
  void PutIndent(int depth);
  void EndBlockComment();

  MP_StreamWriter* out_;
  bool inBlockComment_ = false;
};

#endif  // KALVOBASE_SRC_CONFIG_INI_WRITER_H_
