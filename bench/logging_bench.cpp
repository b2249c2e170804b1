// Logs against spdlog.

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "duel.h"
#include "folder.h"
#include "kalvobase/kalvobase.h"

namespace {

constexpr int kRecords = 2000;

std::unique_ptr<Kalvo_Log> OurLog() {
  auto log = std::make_unique<Kalvo_Log>(1);
  log->SetMainDir(Folder::Path("kalvobase").c_str());
  log->Init("bench", 3);
  log->SetSizeLimit(0x40000000);
  return log;
}

std::shared_ptr<spdlog::logger> TheirLog() {
  auto log = std::make_shared<spdlog::logger>(
      "bench", std::make_shared<spdlog::sinks::basic_file_sink_mt>(Folder::Path("spdlog"), true));
  log->set_pattern("[%Y-%m-%d %H:%M:%S %e %t] %v");
  log->flush_on(spdlog::level::trace);
  return log;
}

// Runs `record` so and so often in each of some threads.
template <class Record>
void InThreads(int count, Record record) {
  const auto work = [&record] {
    for (int i = 0; i < kRecords; ++i) record(i);
  };
  std::vector<std::thread> others;
  for (int i = 1; i < count; ++i) others.emplace_back(work);
  work();
  for (std::thread& thread : others) thread.join();
}

// A prefix of 31 bytes and a message of 69.
void Flushed(int threads) {
  const std::string work = "records of 100 bytes, flushed, " + std::to_string(threads) +
                           (threads == 1 ? " thread" : " threads");
  duel::Ours(work, [threads](benchmark::State& state) {
    const auto log = OurLog();
    for (auto _ : state) {
      InThreads(threads, [&log](int i) {
        log->Trace(3, "session %08x: %s of %d bytes from %s took %.3f ms", 0x1234abcdu + i, "reply",
                   100000 + i, "192.168.100.17:4711", 1.5);
      });
    }
  });
  duel::Peer(work, "spdlog, basic_logger_mt", 1.0, [threads](benchmark::State& state) {
    const auto log = TheirLog();
    for (auto _ : state) {
      InThreads(threads, [&log](int i) {
        log->info("session {:08x}: {} of {} bytes from {} took {:.3f} ms", 0x1234abcdu + i, "reply",
                  100000 + i, "192.168.100.17:4711", 1.5);
      });
    }
  });
}

void Disabled() {
  const std::string work = "a record that fails the level test";
  duel::Ours(work, [](benchmark::State& state) {
    const auto log = OurLog();
    for (auto _ : state) {
      for (int i = 0; i < kRecords; ++i) {
        log->Trace(4, "%d of %s", i, "these");
        benchmark::ClobberMemory();
      }
    }
  });
  duel::Peer(work, "spdlog, a disabled level", 1.0, [](benchmark::State& state) {
    const auto log = TheirLog();
    for (auto _ : state) {
      for (int i = 0; i < kRecords; ++i) {
        log->debug("{} of {}", i, "these");
        benchmark::ClobberMemory();
      }
    }
  });
}

[[maybe_unused]] const bool registered = (Flushed(1), Flushed(4), Disabled(), true);

}  // namespace
