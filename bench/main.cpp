// Runs the duels and prints the ratios of their medians.

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "duel.h"

namespace {

struct Opponent {
  std::string work;
  std::string peer;
  double least;
};

std::vector<Opponent>& Opponents() {
  static std::vector<Opponent> opponents;
  return opponents;
}

// Works that are the library's alone are told as times, in the order of their registration.
std::vector<std::string>& OurWorks() {
  static std::vector<std::string> works;
  return works;
}

bool HasPeer(const std::string& work) {
  const auto& opponents = Opponents();
  return std::any_of(opponents.begin(), opponents.end(),
                     [&work](const Opponent& opponent) { return opponent.work == work; });
}

void Register(const std::string& work, const std::string& who, duel::Body body) {
  benchmark::RegisterBenchmark((work + "/" + who).c_str(), std::move(body))->UseRealTime();
}

double Median(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  const std::size_t middle = times.size() / 2;
  return times.size() % 2 != 0 ? times[middle] : (times[middle - 1] + times[middle]) / 2;
}

// Collects the time of an iteration of every repetition.
class Reporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      times_[run.run_name.function_name].push_back(run.GetAdjustedRealTime());
      std::fprintf(stderr, ".");
    }
  }

  void Finalize() override {
    std::fprintf(stderr, "\n");
    std::printf("%-44s %-34s %8s %8s\n", "work", "peer", "ratio", "aim");
    for (const Opponent& opponent : Opponents()) {
      const auto ours = times_.find(opponent.work + "/" + duel::kKalvo);
      const auto theirs = times_.find(opponent.work + "/" + opponent.peer);
      if (ours == times_.end() || theirs == times_.end()) continue;
      const double ratio = Median(theirs->second) / Median(ours->second);
      char aim[16] = "-";
      if (opponent.least > 0) std::snprintf(aim, sizeof(aim), "%.1f", opponent.least);
      std::printf("%-44s %-34s %8.2f %8s%s\n", opponent.work.c_str(), opponent.peer.c_str(), ratio,
                  aim, ratio < opponent.least ? "  below" : "");
    }
    for (const std::string& work : OurWorks()) {
      const auto ours = times_.find(work + "/" + duel::kKalvo);
      if (ours == times_.end() || HasPeer(work)) continue;
      std::printf("%-44s %34s %8.2f us\n", work.c_str(), "", Median(ours->second) / 1000);
    }
  }

 private:
  std::map<std::string, std::vector<double>> times_;
};

}  // namespace

namespace duel {

void Ours(const std::string& work, Body body) {
  Register(work, kKalvo, std::move(body));
  OurWorks().push_back(work);
}

void Peer(const std::string& work, const std::string& peer, double least, Body body) {
  Register(work, peer, std::move(body));
  Opponents().push_back({work, peer, least});
}

}  // namespace duel

int main(int argc, char** argv) {
  // Repetitions of all sides are mixed, so that no side meets the machine in one mood only.
  std::string repetitions = "--benchmark_repetitions=11";
  std::string interleaving = "--benchmark_enable_random_interleaving=true";
  std::string minTime = "--benchmark_min_time=0.1";
  std::vector<char*> arguments = {argv[0], &repetitions[0], &interleaving[0], &minTime[0]};
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
  Reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return 0;
}
