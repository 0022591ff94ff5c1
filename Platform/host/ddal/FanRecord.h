/// @file
/// What the process tells its fan guard of a fan.
#pragma once

#include "GloTypes.h"

#include <array>
#include <type_traits>

namespace hwapi::ddal {

/// Attributes of a fan that are handed back, in the order in which their descriptors are passed.
enum FanAttribute : u32 {
  kFanControl,
  kFanMode,
  kFanFrequency,
  kFanTarget,  ///< the speed that a chip keeps by itself in some modes
  kFanAttributes
};

inline constexpr i32 kNoValue = -1;
inline constexpr i32 kManualMode = 1;  ///< of the kernel's pwm*_enable: whoever writes the control value drives the fan

/// A fan as it was found, before this process changed it. The message has a descriptor for each attribute with a value.
struct FanRecord {
  u32 fan = 0;
  u32 changesControl = 0;    ///< whether control value, target and mode are to be handed back
  u32 changesFrequency = 0;  ///< whether the frequency is
  std::array<i32, kFanAttributes> found = {kNoValue, kNoValue, kNoValue, kNoValue};  ///< kNoValue: the chip has none

  bool Changes() const { return changesControl != 0 || changesFrequency != 0; }
};
static_assert(std::is_trivially_copyable_v<FanRecord>);

/// Descriptors of a fan's attributes; -1 where there is none.
using FanDescriptors = std::array<int, kFanAttributes>;

}  // namespace hwapi::ddal
