/// @file
/// Finds the chips of the kernel's hwmon class by what they are, as their numbers change from start to start.
#pragma once

#include "BoardDescription.h"

#include <string>

namespace hwapi::ddal {

/// An attribute that was looked for.
struct FoundAttribute {
  int fd = -1;          ///< open for reading, the caller's; -1 when there is none
  bool absent = false;  ///< no such chip is bound
  std::string problem;  ///< what is wrong and what would be right; only when it was asked for
};

/// Opens the attribute of a temperature sensor.
/// @param explain whether somebody reads the problem
FoundAttribute OpenTemperature(const board::HwmonTemperature& sensor, bool explain);

}  // namespace hwapi::ddal
