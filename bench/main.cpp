/// Runs the measurements and prints each as a ratio to its yardstick, beside the ratio that it is to keep.
#include "Benches.h"
#include "PrivateRoot.h"
#include "Process.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

/// A measurement, its yardstick, and the highest ratio of the two.
struct Comparison {
  const char* what;
  const char* measured;
  const char* yardstick;
  double limit;
};
constexpr Comparison kComparisons[] = {
    {.what = "request through the daemon / bare socket pair",
     .measured = "RoundTrip/through_daemon",
     .yardstick = "RoundTrip/bare_socket_pair",
     .limit = 1.4},
    {.what = "sensor reading / bare pread and parse",
     .measured = "SensorReading/driver",
     .yardstick = "SensorReading/bare_pread",
     .limit = 1.25},
    {.what = "start to online / empty daemon",
     .measured = "Start/climate_service",
     .yardstick = "Start/bare_daemon",
     .limit = 1.6},
};

/// Highest ratios of a trace rewrite to the same bytes bare: as it is, and when the medium costs nothing.
constexpr double kMaxTraceRatio = 1.5;
constexpr double kMaxTraceRatioInMemory = 2.25;

/// Bounds of the daemon's memory on the Kela board.
constexpr double kMaxResidentKib = 6 * 1024;
constexpr double kMaxAnonymousKib = 1024;

/// Keeps the medians beside the usual table.
class MedianReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.aggregate_name == "median") m_medians[run.run_name.function_name] = run.GetAdjustedRealTime();
    }
  }
  double Median(const std::string& name) const {
    const auto found = m_medians.find(name);
    return found != m_medians.end() ? found->second : 0;
  }

 private:
  std::map<std::string, double> m_medians;
};

void PrintLine(const char* what, double value, const char* unit, double limit) {
  std::printf("%-50s %9.2f %-4s at most %8.2f  %s\n", what, value, unit, limit, value <= limit ? "kept" : "EXCEEDED");
}

void PrintRatios(const MedianReporter& reporter) {
  std::printf("\nRatios of medians in this run\n");
  for (const Comparison& comparison : kComparisons) {
    const double yardstick = reporter.Median(comparison.yardstick);
    if (yardstick == 0) continue;  // filtered out on the command line
    PrintLine(comparison.what, reporter.Median(comparison.measured) / yardstick, "", comparison.limit);
  }
}

void PrintMemory(const bench::MemoryFigures& figures) {
  std::printf("\nMemory of the daemon on the Kela board after 100 000 indications\n");
  PrintLine("resident", figures.after.residentKib, "KiB", kMaxResidentKib);
  PrintLine("of it anonymous", figures.after.anonymousKib, "KiB", kMaxAnonymousKib);
  PrintLine("growth meanwhile", figures.after.residentKib - figures.before.residentKib, "KiB", 0);
}

void PrintTrace(const bench::TraceFigures& figures) {
  std::printf(
      "\nA rewrite of the trace: 180 lines of 40 values, %.0f us on a disk, %.0f us in memory; ratios in pairs\n",
      figures.onDisk.seconds * 1e6, figures.inMemory.seconds * 1e6);
  PrintLine("trace rewrite / prepared text, same syncs", figures.onDisk.ratio, "", kMaxTraceRatio);
  PrintLine("the same in memory, where syncs are free", figures.inMemory.ratio, "", kMaxTraceRatioInMemory);
}

/// Several repetitions, the two sides of a ratio interleaved, unless the command line says otherwise.
std::vector<char*> WithDefaults(int argc, char** argv) {
  static std::string defaults[] = {"--benchmark_repetitions=9", "--benchmark_enable_random_interleaving=true",
                                   "--benchmark_report_aggregates_only=true", "--benchmark_min_time=0.2"};
  std::vector<char*> arguments = {argv[0]};
  for (std::string& option : defaults) arguments.push_back(option.data());
  arguments.insert(arguments.end(), argv + 1, argv + argc);
  return arguments;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<char*> arguments = WithDefaults(argc, argv);
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

  // The black box's paths are absolute: in a root of its own nobody else has them.
  const std::string problem = ps::hwapi::common::climate::EnterPrivateRoot();
  if (!problem.empty()) {
    std::fprintf(stderr, "clm_bench: no private root: %s\n", problem.c_str());
    return 1;
  }
  bench::StayOnOneCore();
  const bench::BenchBoard board;
  const bench::TraceFigures trace = bench::MeasureTraceRewrite();
  bench::RegisterRoundTrip(board);
  bench::RegisterSensorReading(board);
  bench::RegisterStart(board);
  MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  PrintRatios(reporter);
  PrintTrace(trace);
  PrintMemory(bench::MeasureMemory(board));
  return 0;
}
