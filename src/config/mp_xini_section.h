// MP_XIniSection: a section of an INI document, with what is below it.

#ifndef KALVOBASE_SRC_CONFIG_MP_XINI_SECTION_H_
#define KALVOBASE_SRC_CONFIG_MP_XINI_SECTION_H_

#include <string>
#include <string_view>

#include "config/ini_entries.h"
#include "config/name_index.h"
#include "config/row.h"

class MP_XIniSection;

// The children of one name, in the order in which they came. It is never empty.
struct MP_XIniGroup {
  std::string name;
  std::size_t hash = 0;
  std::size_t order = 0;
  Row<MP_XIniSection> sections;
};

// How a section is written.
enum class IniForm { kTop, kBracket, kTag };  // nothing, [name], <name> ... </name>

class MP_XIniSection {
 public:
  // The top of a document.
  MP_XIniSection() = default;
  MP_XIniSection(const MP_XIniSection&) = delete;
  MP_XIniSection& operator=(const MP_XIniSection&) = delete;
  ~MP_XIniSection() { RemoveAllChildren(); }

  const std::string& name() const { return name_; }
  IniForm form() const { return form_; }
  MP_XIniSection* parent() const { return parent_; }

  // The number of sections above.
  int depth() const { return depth_; }

  std::size_t order = 0;
  std::string openComment;
  std::string closeComment;
  IniEntries entries;

  // --- Children ---------------------------------------------------------------------

  // In the order in which their names first came.
  const Row<MP_XIniGroup>& groups() const { return groups_; }
  const MP_XIniGroup* Group(std::string_view name) const { return index_.Find(name); }

  // A further one, also if there are some of that name.
  MP_XIniSection* AddChild(std::string_view name, IniForm form);

  // Null if there are none of that name. An index beyond either end means the last.
  MP_XIniSection* Child(std::string_view name, int index) const;

  // Its place among those of its name. Only for a child of this section.
  int IndexOf(const MP_XIniSection& child) const;

  // Removes a child; or one by that rule or, if `index` is negative, all of that name.
  void RemoveChild(const MP_XIniSection& child);
  void RemoveChildren(std::string_view name, int index);
  void RemoveAllChildren();

  // Takes over comments, entries and copies of all children.
  void CopyFrom(const MP_XIniSection& other);

 private:
  void RemoveGroup(const MP_XIniGroup& group);

  std::string name_;
  IniForm form_ = IniForm::kTop;
  MP_XIniSection* parent_ = nullptr;
  int depth_ = 0;
  Row<MP_XIniGroup> groups_;
  NameIndex<MP_XIniGroup> index_;
};

#endif  // KALVOBASE_SRC_CONFIG_MP_XINI_SECTION_H_
