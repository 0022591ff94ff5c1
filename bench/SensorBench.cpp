#include "Benches.h"
#include "Process.h"
#include "ddal_error.h"
#include "ddal_temp.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

namespace bench {
namespace {

constexpr u32 kDevice = 0x10000;

/// What a reading takes at least: the file is open, its number is parsed.
void BareRead(benchmark::State& state, const BenchBoard& board) {
  const int fd = open(board.SensorFiles().front().c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) Die(board.SensorFiles().front());
  for (auto _ : state) {
    char text[16];
    const ssize_t length = pread(fd, text, sizeof(text), 0);
    int value = 0;
    for (ssize_t i = 0; i < length && text[i] >= '0' && text[i] <= '9'; ++i) value = value * 10 + (text[i] - '0');
    benchmark::DoNotOptimize(value);
  }
  close(fd);
}

void Driver(benchmark::State& state) {
  char problem[200];
  if (ddal_init(problem, sizeof(problem)) != 0) Die(problem);
  for (auto _ : state) {
    int thousandths = 0;
    benchmark::DoNotOptimize(ddal_temp_get_curr(kDevice, &thousandths));
    benchmark::DoNotOptimize(thousandths);
  }
}

}  // namespace

void RegisterSensorReading(const BenchBoard& board) {
  benchmark::RegisterBenchmark("SensorReading/bare_pread", BareRead, std::cref(board));
  benchmark::RegisterBenchmark("SensorReading/driver", Driver);
}

}  // namespace bench
