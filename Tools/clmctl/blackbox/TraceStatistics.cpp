#include "TraceStatistics.h"

#include <algorithm>

namespace clmctl {
namespace {

constexpr std::chrono::milliseconds kPeriod = std::chrono::minutes(1);
/// Rows further apart than this have a gap between them: half a period is more than a busy board is late.
constexpr std::chrono::milliseconds kLongestStep = kPeriod * 3 / 2;

void Count(const TraceRow& row, TraceStatistics& statistics) {
  switch (row.state) {
    case RowState::Good:
      ++statistics.good;
      break;
    case RowState::OtherColumns:
      ++statistics.otherColumns;
      break;
    case RowState::Damaged:
      ++statistics.damaged;
      break;
  }
}

void AddTime(UtcTime time, std::optional<UtcTime>& previous, TraceStatistics& statistics) {
  if (!ClockWasSet(time)) {
    ++statistics.clockNotSet;
    previous.reset();
    return;
  }
  statistics.first = statistics.first ? std::min(*statistics.first, time) : time;
  statistics.last = statistics.last ? std::max(*statistics.last, time) : time;
  if (previous && time < *previous) {
    statistics.clockSetBack.push_back(time);
  } else if (previous && !Follows(*previous, time)) {
    statistics.gaps.push_back({.begin = *previous, .end = time});
  }
  previous = time;
}

ColumnStatistics StatisticsOf(const TraceFile& trace, std::size_t column) {
  ColumnStatistics statistics;
  double sum = 0;
  for (const TraceRow& row : trace.rows) {
    if (row.state != RowState::Good) continue;
    const TraceReading& reading = row.readings[column];
    statistics.last = reading;
    if (reading.state == ReadingState::Failed) ++statistics.errors;
    if (reading.state != ReadingState::Good) continue;
    const i32 value = reading.value;
    ++statistics.readings;
    sum += value;
    statistics.minimum = std::min(statistics.minimum.value_or(value), value);
    statistics.maximum = std::max(statistics.maximum.value_or(value), value);
  }
  if (statistics.readings != 0) statistics.mean = sum / static_cast<double>(statistics.readings);
  return statistics;
}

}  // namespace

std::size_t TraceGap::MissingRows() const {
  const auto steps = std::chrono::round<std::chrono::minutes>(end - begin).count();
  return steps > 1 ? static_cast<std::size_t>(steps - 1) : 1;
}

bool Follows(UtcTime earlier, UtcTime later) { return later >= earlier && later - earlier <= kLongestStep; }

TraceStatistics StatisticsOf(const TraceFile& trace) {
  TraceStatistics statistics;
  std::optional<UtcTime> previous;
  for (const TraceRow& row : trace.rows) {
    Count(row, statistics);
    if (row.state != RowState::Damaged) AddTime(row.time, previous, statistics);
  }
  for (std::size_t i = 0; i < trace.columns.size(); ++i) statistics.columns.push_back(StatisticsOf(trace, i));
  return statistics;
}

}  // namespace clmctl
