// Benchmarks in pairs: the library and a peer do the same work in one run.
//
// A benchmark is named "work/who", `who` being kKalvo or the peer. The report gives for
// each peer the ratio of the medians, above 1 where the library is faster, beside the
// least ratio that is aimed at.

#ifndef KALVOBASE_BENCH_DUEL_H_
#define KALVOBASE_BENCH_DUEL_H_

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace duel {

constexpr char kKalvo[] = "kalvobase";

using Body = std::function<void(benchmark::State&)>;

// The library's side of a work. Without a peer its time is reported.
void Ours(const std::string& work, Body body);

// A peer's side of the same work. A `least` of 0 only reports.
void Peer(const std::string& work, const std::string& peer, double least, Body body);

}  // namespace duel

#endif  // KALVOBASE_BENCH_DUEL_H_
