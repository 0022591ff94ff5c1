/// @file
/// Axes of a plot.
#pragma once

#include "PlotCurves.h"
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
/// @param leastMargin on each side, at least, as a part of what the rows span
TimeAxis TimeAxisOf(const TraceStatistics& statistics, std::size_t mostLabels, double leastMargin = 0.01);

/// A vertical axis made of rows of characters. Its labels are round, and all values are between the lowest and the
/// highest of them.
struct ValueAxis {
  double low;         ///< on the frame's line
  double high;        ///< in the highest row
  double lowestRow;   ///< in the row above the frame's line
  double firstLabel;  ///< above that line, too
  double lastLabel;   ///< in the highest row
  double step;        ///< between two labels
};

/// @param values their span is not 0
/// @param rows   above the frame's line
/// @param below  those of them, fewer than all, that stay free below the values
ValueAxis ValueAxisOf(const PlotRange& values, std::size_t rows, std::size_t below);

}  // namespace clmctl
