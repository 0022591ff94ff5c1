#include "Benches.h"
#include "Process.h"

#include <benchmark/benchmark.h>

namespace bench {
namespace {

void Start(benchmark::State& state, const std::vector<std::string>& command, const BenchBoard& board) {
  for (auto _ : state) state.SetIterationTime(Daemon(command, board.Environment()).SecondsToReady());
}

}  // namespace

void RegisterStart(const BenchBoard& board) {
  std::vector<std::string> empty = {EMPTY_DAEMON_PROGRAM};
  empty.insert(empty.end(), board.SensorFiles().begin(), board.SensorFiles().end());
  const std::vector<std::string> climate = {CLM_PROGRAM};
  benchmark::RegisterBenchmark("Start/bare_daemon", Start, empty, std::cref(board))->UseManualTime();
  benchmark::RegisterBenchmark("Start/climate_service", Start, climate, std::cref(board))->UseManualTime();
}

}  // namespace bench
