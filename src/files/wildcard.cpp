#include "files/wildcard.h"

#include <algorithm>

#include "text/text_bytes.h"

namespace {

constexpr std::size_t kNowhere = std::string_view::npos;

char Lower(char c) { return static_cast<char>(text::LowerAscii(c)); }

}  // namespace

Wildcard::Wildcard(std::string_view pattern, bool caseSensitive)
    : pattern_(pattern), caseSensitive_(caseSensitive) {
  if (!caseSensitive) std::transform(pattern_.begin(), pattern_.end(), pattern_.begin(), Lower);
}

// Whether a name begins with the bytes of a segment, which holds no `*`.
bool Wildcard::Fits(std::string_view segment, std::string_view name) const {
  if (name.size() < segment.size()) return false;
  for (std::size_t i = 0; i < segment.size(); ++i) {
    const char c = caseSensitive_ ? name[i] : Lower(name[i]);
    if (segment[i] != '?' && segment[i] != c) return false;
  }
  return true;
}

std::size_t Wildcard::Find(std::string_view segment, std::string_view name) const {
  for (std::size_t i = 0; i + segment.size() <= name.size(); ++i) {
    if (Fits(segment, name.substr(i))) return i;
  }
  return kNowhere;
}

// The leftmost place of a segment between two stars leaves the most room for what follows, so
// there is no going back.
bool Wildcard::Matches(std::string_view name) const {
  std::string_view pattern = pattern_;
  std::size_t star = pattern.find('*');
  if (star == kNowhere) return name.size() == pattern.size() && Fits(pattern, name);
  if (!Fits(pattern.substr(0, star), name)) return false;
  name.remove_prefix(star);
  for (;;) {
    pattern.remove_prefix(star + 1);
    star = pattern.find('*');
    if (star == kNowhere) break;
    const std::size_t found = Find(pattern.substr(0, star), name);
    if (found == kNowhere) return false;
    name.remove_prefix(found + star);
  }
  return name.size() >= pattern.size() && Fits(pattern, name.substr(name.size() - pattern.size()));
}
