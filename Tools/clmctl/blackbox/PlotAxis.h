/// @file
/// Axes of a plot.
#pragma once

#include "TraceStatistics.h"

#include <string>

namespace clmctl {

/// @return seconds since 1970
double Seconds(UtcTime time);

/// The time axis of a trace.
struct TimeAxis {
  double begin;  ///< seconds since 1970
  double end;
  double step;         ///< seconds between two labels
  const char* format;  ///< of a label, as strftime takes it
  std::string label;   ///< of the axis
};

/// @param mostLabels labels that have room
TimeAxis TimeAxisOf(const TraceStatistics& statistics, std::size_t mostLabels);

}  // namespace clmctl
