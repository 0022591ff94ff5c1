/// @file
/// Hands back the fans of a process that was killed together with its fan guard.
#pragma once

#include "Descriptor.h"

#include <chrono>
#include <functional>
#include <string>

namespace hwapi::ddal {

/// Takes the lock of the fans, $HWAPI_RUN/fans.lock.
/// @param patience how long to wait for another process
/// @param why      out: what is wrong with the file, "" when another process has the fans; unless a lock is returned
Descriptor LockFans(std::chrono::milliseconds patience, std::string* why);

/// Receives a line on what became of a fan.
using FanReport = std::function<void(const std::string& line)>;

/// Hands back, within the deadlines of their chips, all fans that are on record. The caller has the fans' lock.
/// @return number of fans that stay on record, because their chip did not take what was found
unsigned RestoreFans(const FanReport& report);

/// Likewise, unless nothing is on record, or a living process or guard has the fans.
unsigned RestoreFansIfFree(const FanReport& report);

}  // namespace hwapi::ddal
