/// @file
/// The words of a plot.
#pragma once

#include "PlotCurves.h"

#include <string>
#include <vector>

namespace clmctl {

/// @return headings of the legend's columns
std::string LegendHead(const std::vector<PlotCurve>& curves, Quantity quantity);
/// @return a curve's line of the legend, as wide as its head
std::string LegendLine(const PlotCurve& curve, const std::vector<PlotCurve>& curves, Quantity quantity);
/// @return the time that the trace spans, and its rows
std::string SpanLine(const TraceStatistics& statistics);
/// How a plot shows what was not read.
struct PlotMarks {
  const char* failure;
  const char* gap;
  const char* otherColumns;
  const char* clockSetBack;
};

/// @return what the marks of the drawn columns mean, and what is left out; empty when there is nothing of that
std::vector<std::string> NotesOf(const TraceStatistics& statistics, const std::vector<std::size_t>& columns,
                                 const PlotMarks& marks);
/// @return what the rows are that no curve goes through, as in "2 damaged rows"; "" when there are none
std::string OtherRowsText(const TraceStatistics& statistics);

}  // namespace clmctl
