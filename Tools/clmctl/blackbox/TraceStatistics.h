/// @file
/// What a trace tells: its span, its gaps, and the course of each column.
#pragma once

#include "TraceFile.h"

namespace clmctl {

/// A column's course over the rows that are looked at.
struct ColumnStatistics {
  std::size_t readings = 0;
  std::size_t errors = 0;
  std::optional<TraceReading> last;  ///< of the newest good row
  std::optional<i32> minimum;
  std::optional<i32> maximum;
  std::optional<double> mean;
};

/// A time without rows.
struct TraceGap {
  UtcTime begin;  ///< the row before it
  UtcTime end;    ///< the row behind it

  /// @return rows that a minute each would have made
  std::size_t MissingRows() const;
};

struct TraceStatistics {
  std::optional<UtcTime> first;  ///< earliest time of a row whose clock was set
  std::optional<UtcTime> last;   ///< latest one
  std::size_t good = 0;
  std::size_t otherColumns = 0;
  std::size_t damaged = 0;
  std::size_t clockNotSet = 0;  ///< rows, of whatever columns, from before the board's clock was set
  std::vector<TraceGap> gaps;
  std::vector<UtcTime> clockSetBack;      ///< times of rows that are earlier than the row before them
  std::vector<ColumnStatistics> columns;  ///< those of the trace, from its good rows
};

/// @return whether a row at @p later comes right behind one at @p earlier: nothing is missing, the clock went on
bool Follows(UtcTime earlier, UtcTime later);
TraceStatistics StatisticsOf(const TraceFile& trace);

}  // namespace clmctl
