/// @file
/// A chip that does not answer at the start.
#pragma once

#include <string>

namespace hwapi::ddal {

/// Writes a line of the log of a device whose chip is late at the start: the next chip may take its time, too.
/// @param late LateText
/// @return what is wrong and what would be right
std::string LateProblem(const std::string& name, const std::string& late, const std::string& attribute);

}  // namespace hwapi::ddal
