/// @file
/// A board description for a machine, as text.
#pragma once

#include "HwmonScan.h"

#include <string>
#include <vector>

namespace boardsim {

/// What runs the described board. The installed service alone has no reset service beside it, for which its start would
/// wait without end if it had a black box; and its user is not that of its clients.
enum class RunBy { Boardsim, ServiceAlone };

/// @return a commented description of a Kela unit whose sensors are bound to @p found, in order; sensors of the unit
/// beyond those are simulated. The fans are there as comments: whoever takes the sign away lets the service set them.
/// It has a black box where boardsim runs it.
std::string DescribeMachine(const std::vector<FoundSensor>& found, const std::vector<FoundSensor>& fans,
                            RunBy runBy = RunBy::Boardsim);

}  // namespace boardsim
