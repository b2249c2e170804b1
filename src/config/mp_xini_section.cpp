#include "config/mp_xini_section.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

// The place that an index means among `count` sections.
std::ptrdiff_t Place(int index, std::size_t count) {
  const std::ptrdiff_t last = static_cast<std::ptrdiff_t>(count) - 1;
  return index < 0 || index > last ? last : index;
}

}  // namespace

MP_XIniSection* MP_XIniSection::AddChild(std::string_view name, IniForm form) {
  MP_XIniGroup* group = index_.Find(name);
  if (group == nullptr) {
    groups_.push_back(std::make_unique<MP_XIniGroup>());
    group = groups_.back().get();
    group->name = name;
    index_.Add(group);
  }
  auto child = std::make_unique<MP_XIniSection>();
  child->name_ = name;
  child->form_ = form;
  child->parent_ = this;
  child->depth_ = depth_ + 1;
  group->sections.push_back(std::move(child));
  return group->sections.back().get();
}

MP_XIniSection* MP_XIniSection::Child(std::string_view name, int index) const {
  const MP_XIniGroup* group = Group(name);
  if (group == nullptr) return nullptr;
  return group->sections[static_cast<std::size_t>(Place(index, group->sections.size()))].get();
}

int MP_XIniSection::IndexOf(const MP_XIniSection* child) const {
  const auto& sections = Group(child->name_)->sections;
  const auto found = std::find_if(sections.begin(), sections.end(),
                                  [child](const auto& section) { return section.get() == child; });
  return static_cast<int>(found - sections.begin());
}

void MP_XIniSection::RemoveChild(std::string_view name, int index) {
  MP_XIniGroup* group = index_.Find(name);
  if (group == nullptr) return;
  auto& sections = group->sections;
  if (index >= 0 && sections.size() > 1) {
    sections.erase(sections.begin() + Place(index, sections.size()));
    return;
  }
  index_.Remove(group);
  groups_.erase(std::find_if(groups_.begin(), groups_.end(),
                             [group](const auto& other) { return other.get() == group; }));
}

// One level after the other, since sections may be nested deeper than a stack is.
void MP_XIniSection::RemoveAllChildren() {
  std::vector<std::unique_ptr<MP_XIniGroup>> gone;
  gone.swap(groups_);
  index_.Clear();
  while (!gone.empty()) {
    const std::unique_ptr<MP_XIniGroup> group = std::move(gone.back());
    gone.pop_back();
    for (const auto& section : group->sections) {
      std::move(section->groups_.begin(), section->groups_.end(), std::back_inserter(gone));
      section->groups_.clear();
    }
  }
}

void MP_XIniSection::CopyFrom(const MP_XIniSection& other) {
  RemoveAllChildren();
  std::vector<std::pair<const MP_XIniSection*, MP_XIniSection*>> pairs = {{&other, this}};
  while (!pairs.empty()) {
    const auto [from, to] = pairs.back();
    pairs.pop_back();
    to->openComment = from->openComment;
    to->closeComment = from->closeComment;
    to->entries.CopyFrom(from->entries);
    for (const auto& group : from->groups_) {
      for (const auto& section : group->sections) {
        pairs.emplace_back(section.get(), to->AddChild(section->name_, section->form_));
      }
    }
  }
}
