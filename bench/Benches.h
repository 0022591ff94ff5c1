/// @file
/// The measurements of this program, and how each is held against its yardstick.
#pragma once

#include "BenchBoard.h"

#include <string>

namespace bench {

/// Register with Google Benchmark; a measurement is named "Subject/what", its yardstick "Subject/bare...".
void RegisterRoundTrip(const BenchBoard& board);
void RegisterSensorReading(const BenchBoard& board);
void RegisterStart(const BenchBoard& board);

/// Memory of a daemon.
struct MemoryUse {
  double residentKib;
  double anonymousKib;
};
/// What 100 000 indications leave behind.
struct MemoryFigures {
  MemoryUse before;
  MemoryUse after;
};
MemoryFigures MeasureMemory(const BenchBoard& board);

}  // namespace bench
