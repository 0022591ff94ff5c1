/// @file
/// Traces for tests.
#pragma once

#include "TraceStatistics.h"

#include <string>
#include <vector>

namespace clmctl {

/// A trace file of two sensors and one fan, without rows.
inline const std::string kTraceHead =
    "#MINMAX: Minimum and maximum measured temperatures\n"
    "#\tKEL\tKEL_MCU\t\n"
    "MIN:\t39000\t-\t\n"
    "MAX:\t43500\t-\t\n"
    "\n"
    "#TEMPANDSPEED: temperatures and fan speeds\n"
    "#                  \tKEL\tKEL_MCU\tFAN_1\t\n";

/// @return a row at 14:MM on a day in March
inline std::string Row(int minute, const std::string& values) {
  return "2024-03-07T14:" + std::string(minute < 10 ? "0" : "") + std::to_string(minute) + ":09.042Z\t" + values + "\n";
}

/// @return the parsed trace of kTraceHead with rows
inline TraceFile Trace(const std::vector<std::string>& rows) {
  std::string text = kTraceHead;
  for (const std::string& row : rows) text += row;
  return ParseTraceFile(text);
}

}  // namespace clmctl
