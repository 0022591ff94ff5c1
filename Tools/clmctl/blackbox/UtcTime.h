/// @file
/// Points in time as the black box writes them.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace clmctl {

using UtcTime = std::chrono::sys_time<std::chrono::milliseconds>;

/// Characters of a time, "2016-03-07T14:05:09.042Z".
inline constexpr std::size_t kUtcTimeLength = 24;

/// @return nothing for text that is not such a time, or names a day or an hour that does not exist
std::optional<UtcTime> ParseUtcTime(std::string_view text);
/// @return whether @p text has the shape of such a time; a clock that cannot be read shows zeros, which is no time
bool LooksLikeUtcTime(std::string_view text);
/// @return whether the board's clock was set: one that never was shows a year before 2010
bool ClockWasSet(UtcTime time);

/// "2016-03-07T14:05:09.042Z"
std::string UtcText(UtcTime time);
/// "2016-03-07 14:05:09"
std::string UtcSeconds(UtcTime time);
/// "2016-03-07 14:05:09 to 17:04:09 UTC (2 h 59 min)"; a single time as "2016-03-07 14:05:09 UTC"
std::string RangeText(UtcTime first, UtcTime last);

}  // namespace clmctl
