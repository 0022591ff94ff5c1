/// @file
/// The files of the black box as JSON: constant keys, numbers with their unit in the key, null for none.
#pragma once

#include "BoardFile.h"
#include "ConfigFile.h"
#include "TraceFile.h"
#include "TraceStatistics.h"

#include <nlohmann/json_fwd.hpp>

namespace clmctl {

/// @return one object for the whole file
nlohmann::ordered_json BoardJson(const BoardFile& board);
/// @return one object for the whole file
nlohmann::ordered_json ConfigJson(const ConfigFile& config);
/// @return a column's course
nlohmann::ordered_json TraceColumnJson(const TraceColumn& column, const ColumnStatistics& statistics);
/// @return a row with its readings
nlohmann::ordered_json TraceRowJson(const TraceFile& trace, const TraceRow& row);

}  // namespace clmctl
