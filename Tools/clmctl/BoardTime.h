/// @file
/// The board's clock as text.
#pragma once

#include "AaSysTime.h"

#include <string>

namespace clmctl {

/// @return the board's UTC now, "2024-01-31T09:30:05.123Z"
std::string UtcNow();
/// @return the board's local time of day now, "09:30:05"
std::string LocalTimeOfDay();

}  // namespace clmctl
