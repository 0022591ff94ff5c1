/// @file
/// Calendar times as the black box writes them.
#pragma once

#include "AaSysTime.h"

#include <string>

namespace ps::hwapi::common::climate {

/// @return the board's clock, UTC; all zero when it cannot be read
SAaTime UtcNow();
/// @return e.g. "2016-03-07T14:05:09.042Z"
std::string UtcText(const SAaTime& time);
/// @return e.g. "20160307140509"
std::string UtcDigits(const SAaTime& time);

}  // namespace ps::hwapi::common::climate
