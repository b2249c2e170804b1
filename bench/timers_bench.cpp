// Timers against Boost.Asio and libuv.

#include <uv.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <random>
#include <string>
#include <vector>

#include "duel.h"
#include "kalvobase/kalvobase.h"

namespace {

constexpr std::size_t kArmed = 10000;
constexpr unsigned long kInterval = 600000;

// What a side sets: the same interval every time, or one up to an hour.
class Intervals {
 public:
  explicit Intervals(bool random) : random_(random) {}
  unsigned long Next() { return random_ ? 60000 + engine_() % 3600000 : kInterval; }
  std::size_t Place() { return engine_() % kArmed; }

 private:
  const bool random_;
  std::minstd_rand engine_;
};

// Each turn clears one of the armed timers, any of them, and sets another in its place.
void SetAndClear(bool random) {
  const std::string work =
      std::string("clear and set one of 10,000 timers, ") + (random ? "random" : "equal");
  duel::Ours(work, [random](benchmark::State& state) {
    Intervals intervals(random);
    Kalvo_Timer timer;
    std::vector<unsigned long> armed(kArmed);
    for (unsigned long& id : armed) id = timer.SetTimer(intervals.Next(), 0, 0, 0, nullptr);
    for (auto _ : state) {
      unsigned long& id = armed[intervals.Place()];
      timer.ClearTimer(id);
      id = timer.SetTimer(intervals.Next(), 0, 0, 0, nullptr);
    }
    for (const unsigned long id : armed) timer.ClearTimer(id);
  });
  duel::Peer(work, "boost::asio::steady_timer", 1.0, [random](benchmark::State& state) {
    Intervals intervals(random);
    boost::asio::io_context context;
    std::vector<boost::asio::steady_timer> armed;
    const auto arm = [&](boost::asio::steady_timer& timer) {
      timer.expires_after(std::chrono::milliseconds(intervals.Next()));
      timer.async_wait([](const boost::system::error_code&) {});
    };
    for (std::size_t i = 0; i < kArmed; ++i) arm(armed.emplace_back(context));
    for (auto _ : state) {
      boost::asio::steady_timer& timer = armed[intervals.Place()];
      timer.cancel();
      arm(timer);
      context.poll();  // which runs the handler of the one that was cancelled
    }
  });
  duel::Peer(work, "uv_timer_start, uv_timer_stop", 0.5, [random](benchmark::State& state) {
    Intervals intervals(random);
    uv_loop_t loop;
    uv_loop_init(&loop);
    std::vector<uv_timer_t> armed(kArmed);
    const auto arm = [&](uv_timer_t* timer) {
      uv_timer_start(
          timer, [](uv_timer_t*) {}, intervals.Next(), 0);
    };
    for (uv_timer_t& timer : armed) {
      uv_timer_init(&loop, &timer);
      arm(&timer);
    }
    for (auto _ : state) {
      uv_timer_t* const timer = &armed[intervals.Place()];
      uv_timer_stop(timer);
      uv_update_time(&loop);  // as a timer that is set from anywhere needs it
      arm(timer);
    }
    for (uv_timer_t& timer : armed) uv_close(reinterpret_cast<uv_handle_t*>(&timer), nullptr);
    uv_run(&loop, UV_RUN_DEFAULT);
    uv_loop_close(&loop);
  });
}

[[maybe_unused]] const bool registered = (SetAndClear(false), SetAndClear(true), true);

}  // namespace
