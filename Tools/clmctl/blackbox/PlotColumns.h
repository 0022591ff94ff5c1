/// @file
/// Which columns of a trace are drawn.
#pragma once

#include "TraceStatistics.h"

#include <string>
#include <vector>

namespace clmctl {

/// Most sensors that characters can show without becoming a riddle.
inline constexpr std::size_t kReadableSensors = 6;

/// @return whether there is a column to draw, and a row to draw it from
bool CanBeDrawn(const TraceFile& trace, const TraceStatistics& statistics);
std::vector<std::size_t> AllColumns(const TraceFile& trace);
/// @param names of sensors and fans, separated by commas
/// @throw CommandError (usage) for a name that no column has; lists those that there are
std::vector<std::size_t> ColumnsNamed(const TraceFile& trace, const std::string& names);
/// @return the sensors with the highest readings, as many as are readable, and all fans
std::vector<std::size_t> HottestColumns(const TraceFile& trace, const TraceStatistics& statistics);

}  // namespace clmctl
