// An event on its way: one with a code, or one with a name.

#ifndef KALVOBASE_SRC_FSM_MP_FSM_EVENT_H_
#define KALVOBASE_SRC_FSM_MP_FSM_EVENT_H_

#include <cstdint>
#include <string_view>

#include "fsm/mp_fsm_rule.h"
#include "text/text_bytes.h"

struct MP_FSM_IntEvent {
  static constexpr FSM_KeyKind kKind = FSM_KEY_INT;

  MP_FSM_IntEvent(unsigned long eventCode, long eventValue)
      : code(static_cast<std::uint32_t>(eventCode)), value(static_cast<std::int32_t>(eventValue)) {}

  bool Fits(const MP_FSM_EventKey& key) const { return key.code == code; }

  // As handlers get them.
  const char* name() const { return nullptr; }
  std::uint32_t told() const { return code; }  // in a trace line

  std::uint32_t code;
  std::int32_t value;
};

struct MP_FSM_StringEvent {
  static constexpr FSM_KeyKind kKind = FSM_KEY_STRING;

  MP_FSM_StringEvent(const char* eventName, long eventValue)
      : text(eventName), hash(text::Hash(text)), value(static_cast<std::int32_t>(eventValue)) {}

  bool Fits(const MP_FSM_EventKey& key) const { return key.name == text; }

  const char* name() const { return text.data(); }
  const char* told() const { return text.data(); }

  std::string_view text;
  std::uint32_t hash;
  std::uint32_t code = 0;
  std::int32_t value;
};

#endif  // KALVOBASE_SRC_FSM_MP_FSM_EVENT_H_
