#include "config/ini_writer.h"

#include <algorithm>
#include <string>
#include <vector>

#include "config/ini_text.h"

namespace {

// Sections that are nested deeper stand no further to the right: the indents of a document
// would else be the square of its depth.
constexpr int kDeepestIndent = 256;

// A section whose children are being written, and the next of them.
struct Level {
  const MP_XIniSection* section;
  std::size_t group = 0;
  std::size_t index = 0;

  const MP_XIniSection* Next() {
    const auto& groups = section->groups();
    if (group == groups.size()) return nullptr;
    const auto& sections = groups[group].sections;
    const MP_XIniSection* next = &sections[index];
    if (++index == sections.size()) {
      index = 0;
      ++group;
    }
    return next;
  }
};

// The first two bytes that the parser will see of a line. It drops all carriage returns, and the
// blanks in front.
std::string SeenBegin(std::string_view line) {
  std::string begin;
  for (const char c : line) {
    if (c == '\r' || (begin.empty() && ini::IsBlank(c))) continue;
    begin += c;
    if (begin.size() == 2) break;
  }
  return begin;
}

// The byte at an end of a text that the parser will see there; 0 if it sees none.
char SeenFirst(std::string_view text) {
  const std::size_t at = text.find_first_not_of('\r');
  return at != std::string_view::npos ? text[at] : '\0';
}
char SeenLast(std::string_view text) {
  const std::size_t at = text.find_last_not_of('\r');
  return at != std::string_view::npos ? text[at] : '\0';
}

}  // namespace

void IniWriter::Write(const MP_XIniSection& top) {
  WriteEntries(top);
  std::vector<Level> levels = {{&top}};
  const MP_XIniSection* child = levels.back().Next();
  for (;;) {
    if (child != nullptr) {
      Open(*child);
      WriteEntries(*child);
      levels.push_back({child});
      child = levels.back().Next();
      continue;
    }
    const MP_XIniSection& done = *levels.back().section;
    levels.pop_back();
    if (levels.empty()) return;
    child = levels.back().Next();
    Close(done, child);
  }
}

void IniWriter::Open(const MP_XIniSection& section) {
  EndBlockComment();
  const bool tag = section.form() == IniForm::kTag;
  if (tag) PutIndent(section.depth());
  Put(tag ? "<" : "[");
  Put(section.name());
  Put(tag ? "> " : "] ");
  Put(section.openComment);
  Put("\n");
  NoteFurtherLines(section.openComment);
}

void IniWriter::WriteEntries(const MP_XIniSection& section) {
  const int depth = section.form() == IniForm::kTop ? 0 : section.depth() + 1;
  for (const IniEntry* entry = section.entries.first(); entry != nullptr; entry = entry->next) {
    if (!entry->IsKey()) {
      WriteComment(entry->text);
      continue;
    }
    EndBlockComment();
    PutIndent(depth);
    Put(entry->name);
    Put(" = ");
    const std::string_view quote(&entry->quote, entry->quote != '\0' ? 1 : 0);
    Put(quote);
    Put(entry->text);
    Put(quote);
    if (entry->tail) WriteTail(*entry);
    Put("\n");
    NoteKey(*entry);
  }
}

void IniWriter::WriteComment(std::string_view text) {
  NoteLines(text);
  Put(text);
  Put("\n");
}

// A host may have given a name that begins like a comment, and texts of several lines.
void IniWriter::NoteKey(const IniEntry& entry) {
  NoteLines(entry.name);
  NoteFurtherLines(entry.text);
  if (entry.tail) NoteFurtherLines({entry.tail->c_str(), entry.tail->length()});
}

void IniWriter::NoteFurtherLines(std::string_view text) {
  const std::size_t end = text.find('\n');
  if (end != std::string_view::npos) NoteLines(text.substr(end + 1));
}

// Keeps account of block comments as the parser does.
void IniWriter::NoteLines(std::string_view text) {
  for (std::string_view left = text;;) {
    const std::size_t end = std::min(left.find('\n'), left.size());
    if (SeenBegin(left.substr(0, end)) == (inBlockComment_ ? "*/" : "/*"))
      inBlockComment_ = !inBlockComment_;
    if (end == left.size()) break;
    left.remove_prefix(end + 1);
  }
}

// The value must not lose a slash to its comment, which begins at the first two of them.
void IniWriter::WriteTail(const IniEntry& entry) {
  const std::string_view tail(entry.tail->c_str(), entry.tail->length());
  if (entry.quote == '\0' && SeenLast(entry.text) == '/' && SeenFirst(tail) == '/') Put(" ");
  Put(tail);
}

// A [name] section needs no closing line, unless that has a comment, or what comes next would
// become a part of it. Closing lines need no name, which may hold what would end the tag.
void IniWriter::Close(const MP_XIniSection& section, const MP_XIniSection* next) {
  const bool tag = section.form() == IniForm::kTag;
  const bool needed =
      tag || !section.closeComment.empty() || (next != nullptr && next->form() == IniForm::kTag);
  if (!needed) return;
  EndBlockComment();
  if (tag) PutIndent(section.depth());
  Put("</");
  if (tag || section.name().find('>') == std::string::npos) Put(section.name());
  Put("> ");
  Put(section.closeComment);
  Put("\n");
  NoteFurtherLines(section.closeComment);
}

void IniWriter::PutIndent(int depth) { out_->PutRun('\t', std::min(depth, kDeepestIndent)); }

// A block comment that was never closed stood at the end of the file that was read. What is
// written behind it now must not become a part of it.
void IniWriter::EndBlockComment() {
  if (inBlockComment_) Put("*/\n");
  inBlockComment_ = false;
}
