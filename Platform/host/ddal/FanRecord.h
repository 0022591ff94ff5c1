/// @file
/// What the process tells its fan guard of a fan.
#pragma once

#include "GloTypes.h"

#include <array>
#include <cerrno>
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
  u32 chip = 0;              ///< the same for fans of one chip
  u32 turn = 0;              ///< in which the fans were first changed
  u32 changesControl = 0;    ///< whether control value, target and mode are to be handed back
  u32 changesFrequency = 0;  ///< whether the frequency is
  std::array<i32, kFanAttributes> found = {kNoValue, kNoValue, kNoValue, kNoValue};  ///< kNoValue: the chip has none

  bool Changes() const { return changesControl != 0 || changesFrequency != 0; }
};
static_assert(std::is_trivially_copyable_v<FanRecord>);

/// Writes back what was found, in the order that chips need.
/// @param write takes an attribute and its value; @return 0, an errno value, also where the fan has no such attribute
/// @return whether the chip took all, or is gone and has nothing to be handed back
template <typename Write>
bool HandBack(const FanRecord& record, Write write) {
  bool taken = true;
  const auto put = [&](FanAttribute attribute, i32 value) {
    if (record.found[attribute] == kNoValue) return;
    const int error = write(attribute, value);
    taken = taken && (error == 0 || error == ENODEV);
  };
  if (record.changesControl != 0) put(kFanMode, kManualMode);
  if (record.changesFrequency != 0) put(kFanFrequency, record.found[kFanFrequency]);
  if (record.changesControl == 0) return taken;
  put(kFanControl, record.found[kFanControl]);
  const i32 mode = record.found[kFanMode];
  if (mode == kNoValue || mode == kManualMode) return taken;
  // For some drivers a target is also the order to keep it, hence after the value, and before the mode, which decides.
  if (record.found[kFanTarget] > 0) put(kFanTarget, record.found[kFanTarget]);
  put(kFanMode, mode);
  return taken;
}

/// Descriptors of a fan's attributes; -1 where there is none.
using FanDescriptors = std::array<int, kFanAttributes>;

}  // namespace hwapi::ddal
