/// @file
/// Values as the command line writes them. Each function throws SimError (usage) with an example of what would be
/// right.
#pragma once

#include "AaSysTime.h"
#include "ControlMessages.h"

#include <string>
#include <string_view>

namespace boardsim {

/// What a sensor shall show: "45.5" (degrees Celsius), "fail=CODE", "auto".
TempReq ParseTemp(std::string_view device, std::string_view value);
/// A fan by its driver id ("0"), unit number ("201") or name ("GAR_FAN1"), and what it shall do: "rpm=N", "fail=CODE",
/// "fail-read=CODE", "fail-write=CODE", "auto".
FanReq ParseFan(std::string_view fan, std::string_view value);
/// The bytes of a tag: a number gives 4 bytes, anything else its characters; "text:" in front forces characters.
std::string ParseTagValue(std::string_view text);
/// A file system: "1" or "2".
u32 ParsePartition(std::string_view text);
/// A counter of resets in a row: any number of 32 bits, also a negative one.
i32 ParseCounter(std::string_view text);
/// A new board time: "+1h", "-10min", "+30s", "+2d", or "2030-01-01T00:00:00Z"; "unset": that of a clock that was never
/// set, 1970-01-01T00:00:00Z; "now": the host's time.
SAaTime ParseClock(std::string_view text, const SAaTime& now);

}  // namespace boardsim
