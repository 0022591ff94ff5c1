/// @file
/// A board description for a machine, as text.
#pragma once

#include "HwmonScan.h"

#include <string>
#include <vector>

namespace boardsim {

/// @return a commented description of a Kela unit whose sensors are bound to @p found, in order; sensors of the unit
/// beyond those are simulated. The fans are there as comments: whoever takes the sign away lets the service set them.
std::string DescribeMachine(const std::vector<FoundSensor>& found, const std::vector<FoundSensor>& fans);

}  // namespace boardsim
