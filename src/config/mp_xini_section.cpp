#include "config/mp_xini_section.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

MP_XIniSection* MP_XIniSection::AddChild(std::string_view name, IniForm form) {
  MP_XIniGroup* group = index_.Find(name);
  if (group == nullptr) {
    group = groups_.Add(std::make_unique<MP_XIniGroup>());
    group->name = name;
    index_.Add(group);
  }
  MP_XIniSection* child = group->sections.Add(std::make_unique<MP_XIniSection>());
  child->name_ = name;
  child->form_ = form;
  child->parent_ = this;
  child->depth_ = depth_ + 1;
  return child;
}

MP_XIniSection* MP_XIniSection::Child(std::string_view name, int index) const {
  const MP_XIniGroup* group = Group(name);
  return group != nullptr ? &group->sections.AtOrLast(index) : nullptr;
}

int MP_XIniSection::IndexOf(const MP_XIniSection& child) const {
  return static_cast<int>(Group(child.name_)->sections.PlaceOf(child));
}

void MP_XIniSection::RemoveChild(const MP_XIniSection& child) {
  MP_XIniGroup* group = index_.Find(child.name_);
  if (group->sections.size() > 1) {
    group->sections.Remove(child);
  } else {
    RemoveGroup(*group);
  }
}

void MP_XIniSection::RemoveChildren(std::string_view name, int index) {
  const MP_XIniGroup* group = Group(name);
  if (group == nullptr) return;
  if (index >= 0) {
    RemoveChild(group->sections.AtOrLast(index));
  } else {
    RemoveGroup(*group);
  }
}

void MP_XIniSection::RemoveGroup(const MP_XIniGroup& group) {
  index_.Remove(&group);
  groups_.Remove(group);
}

// One level after the other, since sections may be nested deeper than a stack is.
void MP_XIniSection::RemoveAllChildren() {
  Row<MP_XIniGroup>::Items gone = groups_.TakeAll();
  index_.Clear();
  while (!gone.empty()) {
    const std::unique_ptr<MP_XIniGroup> group = std::move(gone.back());
    gone.pop_back();
    for (const auto& section : group->sections) {
      Row<MP_XIniGroup>::Items below = section->groups_.TakeAll();
      std::move(below.begin(), below.end(), std::back_inserter(gone));
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
