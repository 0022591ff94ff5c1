/// @file
/// Finds the chips of the kernel's hwmon class by what they are, as their numbers change from start to start.
#pragma once

#include "BoardDescription.h"
#include "Descriptor.h"
#include "DeviceThread.h"

#include <string>
#include <vector>

namespace hwapi::ddal {

/// A chip that was looked for.
struct FoundChip {
  std::string folder;   ///< its folder; "" when no such chip is bound, or several are
  std::string problem;  ///< what is wrong and what would be right; only when it was asked for
  bool gone = false;    ///< all that is bound was looked at, and none is this chip
};

/// An attribute that was looked for.
struct FoundAttribute {
  Descriptor attribute{};  ///< open for reading; none when it was not found
  bool absent = false;     ///< its chip was not found
  std::string problem{};   ///< as in FoundChip
};

/// Attributes of a fan that was looked for.
struct FoundFan {
  Descriptor rpm{};
  Descriptor pwm{};        ///< for reading and writing
  Descriptor mode{};       ///< for writing too, where the chip allows it; none when the chip has none
  Descriptor frequency{};  ///< likewise
  Descriptor target{};     ///< likewise
  std::string device{};    ///< of the chip, as DeviceName
  u32 chip = 0;            ///< the same for fans of one chip
  bool absent = false;     ///< its chip was not found
  bool gone = false;       ///< as in FoundChip
  std::string problem{};   ///< as in FoundChip

  /// @return whether the fan can be driven
  bool Complete() const { return rpm.Open() && pwm.Open(); }
};

/// Finds the chip of that name, at that device where one is given.
/// @param device  what is bound to it, e.g. "sensor"
/// @param explain whether somebody reads the problem
FoundChip FindChip(const std::string& chip, const std::string& at, const char* device, bool explain);

/// @return the thread of the chip that a description names so, the same for all that is bound to it; never destroyed
DeviceThread& ThreadOfChip(const std::string& chip, const std::string& at);

/// @return last part of the device path of a chip's folder, e.g. "3-0048"; "" for a chip without a device
std::string DeviceName(const std::string& folder);

/// @param binding a board::HwmonTemperature or board::HwmonFan
/// @return what became of a chip that was late, e.g. "chip "lm75" at 3-0048 did not answer within 100 ms"
template <typename Binding>
std::string LateText(const Binding& binding) {
  return "chip \"" + binding.chip + '"' + (binding.at.empty() ? "" : " at " + binding.at) + " did not answer within " +
         std::to_string(binding.deadlineMs) + " ms";
}

/// @return names as a list for people; "none" when there are none
std::string Listed(const std::vector<std::string>& names);

/// Opens the attribute of a temperature sensor.
/// @param explain whether somebody reads the problem
FoundAttribute OpenTemperature(const board::HwmonTemperature& sensor, bool explain);

/// Opens the attributes of a fan.
/// @param explain whether somebody reads the problem
FoundFan OpenFan(const board::HwmonFan& fan, bool explain);

}  // namespace hwapi::ddal
