/// @file
/// Fans as text, for people and for programs.
#pragma once

#include "FanRequest.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace clmctl {

/// @return whether a fan has a speed. One without stands still, or cannot be read, or is none of the unit's: an
///         indication does not tell these apart.
inline bool HasSpeed(const FanReading& reading) { return reading.rpm != 0; }
/// @return "ok" or "no speed"
inline const char* StateText(const FanReading& reading) { return HasSpeed(reading) ? "ok" : "no speed"; }

/// @return one line a fan, in columns that do not move
/// @param time when the indication came
std::string FanLines(const FanIndication& indication, const std::string& time);
/// @return one object a fan
/// @param number which indication it is, from 1
std::vector<nlohmann::ordered_json> FanObjects(const FanIndication& indication, u32 number, const std::string& time);

/// What a request sets.
enum class FanQuantity { Speed, Frequency };

/// @return the table of an answer, one line a fan
std::string AnswerLines(const FanAnswer& answer, FanQuantity quantity);
/// @return one object a fan of an answer
std::vector<nlohmann::ordered_json> AnswerObjects(const FanAnswer& answer, FanQuantity quantity);

}  // namespace clmctl
