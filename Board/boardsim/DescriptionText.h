/// @file
/// A board description for a machine, as text.
#pragma once

#include "HwmonScan.h"

#include <string>
#include <vector>

namespace boardsim {

/// @return a commented description of a Kela unit whose sensors are bound to @p found, in order; sensors of the unit
/// beyond those are simulated
std::string DescribeMachine(const std::vector<FoundSensor>& found);

}  // namespace boardsim
