/// @file
/// The temperature sensors and fans that the kernel of this machine offers.
#pragma once

#include <string>
#include <vector>

namespace boardsim {

/// One temperature sensor or fan, named as a board description names it.
struct FoundSensor {
  std::string chip;   ///< contents of the chip's `name`
  std::string at;     ///< last part of its device path; empty: it has none
  std::string input;  ///< e.g. "temp1", "fan1"
  std::string label;  ///< what the chip calls it; may be empty
};

/// @param sysfs root of the kernel's device tree, "/sys" or a made-up one
/// @return the attributes that can be read and told apart, sorted by chip, place and input
std::vector<FoundSensor> ScanHwmon(const std::string& sysfs);
/// @return the fans that have a speed and a control value, likewise; the control of "fan1" is "pwm1"
std::vector<FoundSensor> ScanHwmonFans(const std::string& sysfs);

}  // namespace boardsim
