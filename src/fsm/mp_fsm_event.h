// An event on its way.

#ifndef KALVOBASE_SRC_FSM_MP_FSM_EVENT_H_
#define KALVOBASE_SRC_FSM_MP_FSM_EVENT_H_

#include <cstdint>
#include <string_view>

#include "kalvobase/fsm.h"
#include "text/text_bytes.h"

class MP_FSM_Event {
 public:
  static MP_FSM_Event Integer(unsigned long code, long value) {
    return {nullptr, static_cast<std::uint32_t>(code), static_cast<std::int32_t>(value), {}, 0};
  }

  static MP_FSM_Event String(const char* name, long value) {
    const std::string_view view = name;
    return {name, 0, static_cast<std::int32_t>(value), view, text::Hash(view.data(), view.size())};
  }

  bool IsString() const { return name != nullptr; }

  const char* name;  // null for an integer event
  std::uint32_t code;
  std::int32_t value;
  std::string_view nameView;
  std::uint32_t nameHash;
};

#endif  // KALVOBASE_SRC_FSM_MP_FSM_EVENT_H_
