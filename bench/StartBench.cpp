#include "Benches.h"
#include "Process.h"

#include <benchmark/benchmark.h>

namespace bench {
namespace {

/// A start now and then takes many times as long: many short rounds, so that their median does not see it.
constexpr int kStartsInARow = 2;
constexpr int kRounds = 80;

void Start(benchmark::State& state, const std::vector<std::string>& command, const BenchBoard& board) {
  for (auto _ : state) state.SetIterationTime(Daemon(command, board.Environment()).SecondsToReady());
}

}  // namespace

void RegisterStart(const BenchBoard& board) {
  std::vector<std::string> empty = {EMPTY_DAEMON_PROGRAM};
  empty.insert(empty.end(), board.SensorFiles().begin(), board.SensorFiles().end());
  const std::vector<std::string> climate = {CLM_PROGRAM};
  for (benchmark::internal::Benchmark* start :
       {benchmark::RegisterBenchmark("Start/bare_daemon", Start, empty, std::cref(board)),
        benchmark::RegisterBenchmark("Start/climate_service", Start, climate, std::cref(board))}) {
    start->UseManualTime()->Iterations(kStartsInARow)->Repetitions(kRounds);
  }
}

}  // namespace bench
