// From lines to a tree of sections.

#ifndef KALVOBASE_SRC_CONFIG_INI_PARSER_H_
#define KALVOBASE_SRC_CONFIG_INI_PARSER_H_

#include <string_view>

#include "config/mp_xini_section.h"

// Nothing is an error: a line that fits no form is a comment.
class IniParser {
 public:
  explicit IniParser(MP_XIniSection* top) : top_(top), current_(top) {}

  // A line without its end.
  void TakeLine(std::string_view line);

 private:
  MP_XIniSection* Target() const { return current_ != nullptr ? current_ : top_; }
  void AddComment(std::string_view line) { Target()->entries.AddComment(line); }
  bool TakeBlockComment(std::string_view line);
  void TakeTag(std::string_view line, char close);
  void TakeKey(std::string_view line);

  MP_XIniSection* const top_;
  MP_XIniSection* current_;  // null behind a closing tag of the top
  bool inBlockComment_ = false;
};

#endif  // KALVOBASE_SRC_CONFIG_INI_PARSER_H_
