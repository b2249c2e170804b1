#include "config/mp_xini.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>

#include "config/ini_parser.h"
#include "config/ini_text.h"
#include "config/ini_writer.h"
#include "files/mp_stream_reader.h"
#include "files/mp_stream_writer.h"
#include "platform/file.h"
#include "text/format_engine.h"
#include "text/mp_string.h"

namespace {

constexpr char kSeparator = '.';
constexpr char kOpenIndex = '[';
constexpr int kPermissions = 0660;

int ReadIndex(std::string_view text) {
  const long index = std::strtol(std::string(text).c_str(), nullptr, 10);
  return static_cast<int>(std::clamp<long>(index, INT_MIN, INT_MAX));
}

}  // namespace

// --- The file -----------------------------------------------------------------------

// Empties the document. The cursor is at the top.
void MP_XIni::Forget() {
  top_.RemoveAllChildren();
  top_.entries.Clear();
  top_.closeComment.clear();
  MoveToTop();
}

int MP_XIni::Read(const char* file) {
  const std::string name = file != nullptr ? file : "";  // which may be the one that is kept
  Forget();
  fileName_ = name;
  const int descriptor =
      platform::file_open(platform::system_path(name.c_str()), platform::kOpenReadOnly, 0);
  if (descriptor < 0) {
    current_ = nullptr;
    return -1;
  }
  IniParser parser(&top_);
  const auto reader = std::make_unique<MP_StreamReader>(descriptor);
  while (const char* line = reader->ReadLine(true, -1)) {
    parser.TakeLine({line, static_cast<std::size_t>(reader->LineLength())});
  }
  platform::file_close(descriptor);
  return 1;
}

int MP_XIni::Dump(const char* file) const {
  const int descriptor = platform::file_open(
      platform::system_path(file),
      platform::kOpenReadWrite | platform::kOpenCreate | platform::kOpenTruncate, kPermissions);
  if (descriptor < 0) return -1;
  const auto writer = std::make_unique<MP_StreamWriter>(descriptor);
  IniWriter(writer.get()).Write(top_);
  writer->Detach();
  platform::file_close(descriptor);
  return 1;
}

void MP_XIni::CopyFrom(const MP_XIni& other) {
  if (this == &other) return;
  fileName_ = other.fileName_;
  top_.CopyFrom(other.top_);
  MoveToTop();
}

// --- The cursor ---------------------------------------------------------------------

// Moves into one part of a path: a name, and an index behind a bracket, the closing one of
// which is not looked for.
bool MP_XIni::Enter(std::string_view segment) {
  const std::size_t bracket = segment.find(kOpenIndex);
  const bool indexed = bracket != std::string_view::npos;
  const std::string_view name = indexed ? ini::Trim(segment.substr(0, bracket)) : segment;
  MP_XIniSection* child = Shown().Child(name, indexed ? ReadIndex(segment.substr(bracket + 1)) : 0);
  if (child == nullptr) return false;
  current_ = child;
  return true;
}

// Path and arguments may be texts of this document.
const char* MP_XIni::MoveTo(const char* path, va_list args) {
  const bool given = path != nullptr;
  if (path == nullptr) path = "";
  current_ = given && *path == '\0' ? &top_ : nullptr;
  std::vector<std::size_t> parts;
  MP_String expanded;
  std::size_t start = 0;  // of the part that is being put together
  const auto enter = [&] {
    const std::size_t length = static_cast<std::size_t>(expanded.Length());
    if (!Enter({expanded.Content() + start, length - start})) return false;
    parts.push_back(start > 0 ? start - 1 : 0);
    start = length + 1;
    return true;
  };
  const bool found = text::FormatSegments(&expanded, path, args, enter) >= 0;
  const bool ended = static_cast<std::size_t>(expanded.Length()) <= start;
  const bool moved = found && (ended || enter());
  path_ = moved ? expanded.Text() : "";
  // A zero byte ends the text, but not the part that it is in.
  const bool known = moved && path_.size() == static_cast<std::size_t>(expanded.Length());
  parts_ = known ? parts : std::vector<std::size_t>();
  return moved ? path_.c_str() : nullptr;
}

const char* MP_XIni::MoveToFormatted(const char* path, ...) {
  va_list args;
  va_start(args, path);
  const char* result = MoveTo(path, args);
  va_end(args);
  return result;
}

void MP_XIni::MoveToPlain(const char* path) {
  current_ = nullptr;
  path_.clear();
  parts_.clear();
  if (path == nullptr) return;
  if (*path == '\0') current_ = &top_;
  for (std::string_view left = path; !left.empty();) {
    const std::size_t end = std::min(left.find(kSeparator), left.size());
    if (!Enter(left.substr(0, end))) {
      current_ = nullptr;
      return;
    }
    left.remove_prefix(std::min(end + 1, left.size()));
  }
}

const char* MP_XIni::MoveToChild(const char* name, int index) {
  MP_XIniSection* child = name != nullptr ? Shown().Child(name, index) : nullptr;
  if (child == nullptr) return nullptr;
  current_ = child;
  parts_.push_back(path_.size());
  path_ += kSeparator;
  path_ += child->name();  // `name` may lie in the path
  if (index >= 1) path_ += kOpenIndex + std::to_string(index) + "]";
  return path_.c_str();
}

void MP_XIni::MoveToParent() {
  if (current_ == nullptr) {
    MoveToTop();
    return;
  }
  const bool known = parts_.size() == static_cast<std::size_t>(current_->depth());
  current_ = current_->parent();
  if (known && !parts_.empty()) {
    path_.resize(parts_.back());
    parts_.pop_back();
  } else {
    RebuildPath();
  }
}

// The path from where the cursor is in the tree.
void MP_XIni::RebuildPath() {
  path_.clear();
  parts_.clear();
  std::vector<const MP_XIniSection*> sections;
  for (const MP_XIniSection* at = current_; at != nullptr && at != &top_; at = at->parent()) {
    sections.push_back(at);
  }
  for (; !sections.empty(); sections.pop_back()) {
    parts_.push_back(path_.size());
    if (!path_.empty()) path_ += kSeparator;
    path_ += sections.back()->name();
    const int index = sections.back()->parent()->IndexOf(*sections.back());
    if (index >= 1) path_ += kOpenIndex + std::to_string(index) + "]";
  }
}

void MP_XIni::MoveToTop() {
  current_ = &top_;
  path_.clear();
  parts_.clear();
}

// --- Sections and keys --------------------------------------------------------------

void MP_XIni::AddSection(const char* name) {
  const std::string_view text = name != nullptr ? name : "";
  if (text.empty()) return;  // it could neither be found nor written
  Shown().AddChild(text, current_ != nullptr ? IniForm::kTag : IniForm::kBracket);
}

void MP_XIni::RemoveSection() {
  if (current_ == nullptr) return;
  if (MP_XIniSection* parent = current_->parent()) parent->RemoveChild(*current_);
  current_ = nullptr;
  path_.clear();
  parts_.clear();
}

void MP_XIni::RemoveChild(const char* name, int index) {
  if (name != nullptr) Shown().RemoveChildren(name, index);
}

void MP_XIni::RemoveKey(const char* key) {
  if (key == nullptr) return;
  const std::string name = key;  // it may be the key's own text
  if (current_ != nullptr) current_->entries.Remove(name);
  top_.entries.Remove(name);
}

int MP_XIni::ChildCount(const char* name) {
  if (name == nullptr) return static_cast<int>(Shown().groups().size());
  const MP_XIniGroup* group = Shown().Group(name);
  return group != nullptr ? static_cast<int>(group->sections.size()) : 0;
}

const char* MP_XIni::ChildName(int i) {
  const Row<MP_XIniGroup>& groups = Shown().groups();
  return groups.size() > 0 ? groups.AtOrLast(i).name.c_str() : nullptr;
}

const char* MP_XIni::KeyName(const IniEntry* entry) {
  return entry != nullptr && entry->IsKey() ? entry->name.c_str() : nullptr;
}

Kalvo_String* MP_XIni::TailComment(const char* key) {
  if (current_ == nullptr || key == nullptr) return nullptr;
  IniEntry* entry = current_->entries.Find(key);
  return entry != nullptr ? entry->Tail() : nullptr;
}
