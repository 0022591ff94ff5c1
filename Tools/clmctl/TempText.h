/// @file
/// Temperatures as text, for people and for programs.
#pragma once

#include "TempRequest.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace clmctl {

/// @return the sensor's name, or its number when it has none
std::string SensorText(u32 name);
/// @return "ok", or "failed: " and the driver's words
std::string StateText(const TempReading& reading);

/// @return one line a sensor, in columns that do not move; one that says so when there are no sensors
/// @param time when the indication came
std::string TempLines(const TempIndication& indication, const std::string& time);
/// @return one object a sensor; one without a sensor, of the state "no sensors", when there are none
/// @param number which indication it is, from 1
std::vector<nlohmann::ordered_json> TempObjects(const TempIndication& indication, u32 number, const std::string& time);

}  // namespace clmctl
