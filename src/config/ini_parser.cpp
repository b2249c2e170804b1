#include "config/ini_parser.h"

#include "config/ini_text.h"

namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

bool BeginsWith(std::string_view line, std::string_view what) {
  return line.substr(0, what.size()) == what;
}

// Names are texts to the host, and end at a zero byte there.
bool IsName(std::string_view name) { return !name.empty() && name.find('\0') == kNowhere; }

}  // namespace

void IniParser::TakeLine(std::string_view line) {
  line = ini::Trim(line);
  if (TakeBlockComment(line) || BeginsWith(line, "#") || BeginsWith(line, ";") ||
      BeginsWith(line, "//")) {
    AddComment(line);
  } else if (BeginsWith(line, "<")) {
    TakeTag(line.substr(1), '>');
  } else if (BeginsWith(line, "[")) {
    TakeTag(line.substr(1), ']');
  } else {
    TakeKey(line);
  }
}

// Whether the line opens, closes or lies within a block comment. Only its first two bytes
// count.
bool IniParser::TakeBlockComment(std::string_view line) {
  const bool inside = inBlockComment_;
  if (BeginsWith(line, inside ? "*/" : "/*")) inBlockComment_ = !inside;
  return inside || inBlockComment_;
}

void IniParser::TakeTag(std::string_view line, char close) {
  const std::size_t end = line.find(close);
  const std::string_view name = ini::Trim(line.substr(0, end));
  if (end == kNowhere || !IsName(name)) {
    AddComment(line);
    return;
  }
  const std::string_view tail = line.substr(end + 1);
  if (close == '>' && name.front() == '/') {
    if (current_ == nullptr) return;
    current_->closeComment = tail;
    current_ = current_->parent();
    return;
  }
  current_ = close == ']' ? top_->AddChild(name, IniForm::kBracket)
                          : Target()->AddChild(name, IniForm::kTag);
  current_->openComment = tail;
}

void IniParser::TakeKey(std::string_view line) {
  const std::size_t equals = line.find('=');
  const std::string_view key = ini::Trim(line.substr(0, equals));
  if (equals == kNowhere || !IsName(key)) {
    AddComment(line);
    return;
  }
  std::string_view value = ini::Trim(line.substr(equals + 1));
  std::string_view tail;
  char quote = '\0';
  const std::size_t lastQuote = value.rfind('"');
  if (BeginsWith(value, "\"")) {
    if (lastQuote > 0) {
      quote = '"';
      tail = value.substr(lastQuote + 1);
      value = value.substr(1, lastQuote - 1);
    }
  } else if (const std::size_t slashes = value.find("//"); slashes != kNowhere) {
    tail = value.substr(slashes);
    value = ini::TrimRight(value.substr(0, slashes));
  }
  IniEntry* entry = Target()->entries.Set(key, value);
  entry->quote = quote;
  if (!tail.empty()) entry->Tail()->memcpy(tail.data(), static_cast<int>(tail.size()));
}
