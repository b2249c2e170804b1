// What the timer thread does once a second while nothing is due, and after every firing.

#include <cstdint>
#include <string>

#include "duel.h"
#include "timers/mp_timer_core.h"

namespace {

bool IdlePass(std::uint32_t armed) {
  duel::Ours("idle pass over " + std::to_string(armed) + " timers",
             [armed](benchmark::State& state) {
               MP_TimerCore timers;
               for (std::uint32_t i = 0; i < armed; ++i) {
                 MP_TimerInfo timer;
                 timer.ms = 3600000 + i;
                 timers.Set(1, timer, nullptr);
               }
               for (auto _ : state) timers.RunPass();
             });
  return true;
}

[[maybe_unused]] const bool registered = IdlePass(256) && IdlePass(4096) && IdlePass(65536);

}  // namespace
