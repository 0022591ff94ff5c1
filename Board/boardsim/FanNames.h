/// @file
/// Names of the fans by their driver ids, for people.
#pragma once

#include "messages/FanControl.h"

#include <array>
#include <string>
#include <string_view>

namespace boardsim {

struct NamedFan {
  u32 id;  ///< of the driver
  EFanUnit unit;
  std::string_view name;
};

/// The fans that the climate service serves.
inline constexpr std::array kNamedFans = {
    NamedFan{.id = 0, .unit = EFanUnit_GarFan1, .name = "GAR_FAN1"},
    NamedFan{.id = 1, .unit = EFanUnit_GarFan2, .name = "GAR_FAN2"},
    NamedFan{.id = 2, .unit = EFanUnit_GarFan3, .name = "GAR_FAN3"},
};

/// @return the fan's name; "" for a fan without one
inline std::string FanNameOf(u32 id) {
  for (const NamedFan& fan : kNamedFans) {
    if (fan.id == id) return std::string(fan.name);
  }
  return {};
}

}  // namespace boardsim
