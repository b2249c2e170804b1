// Patterns of file names: `?` is any one byte, `*` any number of them.

#ifndef KALVOBASE_SRC_FILES_WILDCARD_H_
#define KALVOBASE_SRC_FILES_WILDCARD_H_

#include <string>
#include <string_view>

class Wildcard {
 public:
  // Without case A to Z match a to z.
  Wildcard(std::string_view pattern, bool caseSensitive);

  // Whether the whole name matches. Takes no longer than the length of the pattern times that
  // of the name.
  bool Matches(std::string_view name) const;

 private:
  bool Fits(std::string_view segment, std::string_view name) const;
  std::size_t Find(std::string_view segment, std::string_view name) const;

  std::string pattern_;
  bool caseSensitive_;
};

#endif  // KALVOBASE_SRC_FILES_WILDCARD_H_
