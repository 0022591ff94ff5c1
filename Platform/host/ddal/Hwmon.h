/// @file
/// Finds the chips of the kernel's hwmon class by what they are, as their numbers change from start to start.
#pragma once

#include "BoardDescription.h"
#include "Descriptor.h"

#include <string>
#include <vector>

namespace hwapi::ddal {

/// A chip that was looked for.
struct FoundChip {
  std::string folder;   ///< its folder; "" when no such chip is bound, or several are
  std::string problem;  ///< what is wrong and what would be right; only when it was asked for
};

/// An attribute that was looked for.
struct FoundAttribute {
  Descriptor attribute{};  ///< open for reading; none when it was not found
  bool absent = false;     ///< no such chip is bound
  std::string problem{};   ///< as in FoundChip
};

/// Attributes of a fan that was looked for.
struct FoundFan {
  Descriptor rpm{};
  Descriptor pwm{};        ///< for reading and writing
  Descriptor mode{};       ///< for writing too, where the chip allows it; none when the chip has none
  Descriptor frequency{};  ///< likewise
  Descriptor target{};     ///< likewise
  bool absent = false;     ///< no such chip is bound
  std::string problem{};   ///< as in FoundChip

  /// @return whether the fan can be driven
  bool Complete() const { return rpm.Open() && pwm.Open(); }
};

/// Finds the chip of that name, at that device where one is given.
/// @param device  what is bound to it, e.g. "sensor"
/// @param explain whether somebody reads the problem
FoundChip FindChip(const std::string& chip, const std::string& at, const char* device, bool explain);

/// @return names as a list for people; "none" when there are none
std::string Listed(const std::vector<std::string>& names);

/// Opens the attribute of a temperature sensor.
/// @param explain whether somebody reads the problem
FoundAttribute OpenTemperature(const board::HwmonTemperature& sensor, bool explain);

/// Opens the attributes of a fan.
/// @param explain whether somebody reads the problem
FoundFan OpenFan(const board::HwmonFan& fan, bool explain);

}  // namespace hwapi::ddal
