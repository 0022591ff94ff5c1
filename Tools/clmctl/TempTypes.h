/// @file
/// Names of the temperature requests: sensor types and outcomes.
#pragma once

#include "messages/TempMeas.h"

#include <string>
#include <string_view>

namespace clmctl {

/// @return the type of a name (as in "KelOcxo", any case) or of a number
/// @throw CommandError (usage) for an unknown name
ETempSensorType ParseSensorType(std::string_view text);
/// @return "KelOcxo"; the number for a type without a name
std::string SensorTypeText(u32 type);
/// @return the outcome's name, as in "AlreadyStarted"; "Unknown" for a value without one
std::string_view TempErrorName(u32 error);
/// @return what an outcome means and what to do, for a request about @p type
std::string TempErrorMeaning(u32 error, const std::string& type);

}  // namespace clmctl
