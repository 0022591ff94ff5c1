/// @file
/// The measurements of this program, and how each is held against its yardstick.
#pragma once

#include "BenchBoard.h"

namespace bench {

/// Register with Google Benchmark; a measurement is named "Subject/what", its yardstick "Subject/bare...".
void RegisterRoundTrip(const BenchBoard& board);
void RegisterSensorReading(const BenchBoard& board);
void RegisterStart(const BenchBoard& board);

/// What a rewrite of the trace costs.
struct TraceCost {
  double seconds;  ///< median of the service's rewrites
  double ratio;    ///< median of the ratios to writing, syncing and renaming the same bytes bare, taken in pairs
};
struct TraceFigures {
  TraceCost onDisk;
  TraceCost inMemory;  ///< where a sync costs nothing
};
/// Runs in a process of its own, before this process uses the platform.
TraceFigures MeasureTraceRewrite();

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
