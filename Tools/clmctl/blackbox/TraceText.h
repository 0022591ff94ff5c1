/// @file
/// A trace as text for people.
#pragma once

#include "Screen.h"
#include "TraceFile.h"
#include "TraceStatistics.h"

#include <string>
#include <vector>

namespace clmctl {

/// @return "41.500" of 41500 thousandths of a degree, "3000" of a speed
std::string ValueText(i32 value, Quantity quantity);

/// @return what the trace spans, and what is missing in it
std::vector<std::string> TraceHeadLines(const TraceFile& trace, const TraceStatistics& statistics);
/// @return a line for each column: its last value, lowest, mean and highest one, and how many readings failed
std::vector<std::string> TraceSummaryLines(const TraceFile& trace, const TraceStatistics& statistics,
                                           const Screen& screen);
/// @return the rows, oldest first: in blocks of as many columns as the screen has room for. Rows of other columns and
///         damaged ones are shown as they stand in the file.
std::vector<std::string> TraceRowLines(const TraceFile& trace, const Screen& screen);

}  // namespace clmctl
