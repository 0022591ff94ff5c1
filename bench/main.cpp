/// Runs the measurements and prints each as a ratio to its yardstick, beside the ratio that it is to keep.
#include "Benches.h"
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

  bench::StayOnOneCore();
  const bench::BenchBoard board;
  bench::RegisterRoundTrip(board);
  bench::RegisterSensorReading(board);
  bench::RegisterStart(board);
  MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  PrintRatios(reporter);
  PrintMemory(bench::MeasureMemory(board));
  return 0;
}
