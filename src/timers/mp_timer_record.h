// What a timer is.

#ifndef KALVOBASE_SRC_TIMERS_MP_TIMER_RECORD_H_
#define KALVOBASE_SRC_TIMERS_MP_TIMER_RECORD_H_

#include <cstdint>
#include <string>

#include "timers/mp_timer_list.h"

// What its firing tells.
struct MP_TimerInfo {
  const char* text() const { return hasData ? data.c_str() : nullptr; }

  std::uint32_t id = 0;       // 0 while the record is free
  std::uint32_t timerId = 0;  // of the Kalvo_Timer that set it
  std::uint32_t count = 0;    // firings so far
  std::uint32_t ms = 0;       // the interval
  std::uint32_t owner = 0;    // these three and the text are the caller's
  std::uint32_t attr = 0;
  std::uint32_t seq = 0;
  bool hasData = false;
  std::string data;
};

// One timer, or a place for one. A record stays where it is for as long as the service lives.
struct MP_TimerRecord : MP_TimerInfo {
  std::uint32_t repeat = 0;  // firings still to come
  std::uint8_t list = 0;     // in which it is armed
  MP_TimerDue due;
  std::uint64_t armed = 0;  // counts up with each arming of any timer
  std::uint64_t pass = 0;   // in which it fired last; 0 until then

  std::uint16_t place = 0;  // of the pool
  MP_TimerRecord* nextFree = nullptr;
};

#endif  // KALVOBASE_SRC_TIMERS_MP_TIMER_RECORD_H_
