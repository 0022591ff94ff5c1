/// @file
/// The functions of the platform and how each can fail.
#pragma once

#include <string_view>

namespace fake::internal {

/// How a function fails.
enum class Failing {
  Never,   ///< it cannot
  Zero,    ///< it returns null, false, or the number 0
  Errno,   ///< it returns an errno value
  Trbl,    ///< it returns EAaTrblRet_Failed
  Driver,  ///< it returns a driver error
  Throws   ///< it throws
};

/// @throw std::invalid_argument when the platform has no function of that name
Failing HowItFails(std::string_view function);

}  // namespace fake::internal
