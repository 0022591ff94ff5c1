/// @file
/// The fans as people know them, by the service's numbers and by the driver's.
#pragma once

#include "messages/FanControl.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace commandline {

struct NamedFan {
  EFanUnit unit;
  std::string_view name;
  std::optional<u32> id;  ///< of the driver; nothing: the climate service does not serve this fan
};

/// Those that are served come first.
inline constexpr std::array kFans = {
    NamedFan{.unit = EFanUnit_GarFan1, .name = "GAR_FAN1", .id = 0},
    NamedFan{.unit = EFanUnit_GarFan2, .name = "GAR_FAN2", .id = 1},
    NamedFan{.unit = EFanUnit_GarFan3, .name = "GAR_FAN3", .id = 2},
    NamedFan{.unit = EFanUnit_GarFan4, .name = "GAR_FAN4", .id = {}},
    NamedFan{.unit = EFanUnit_GarFan5, .name = "GAR_FAN5", .id = {}},
    NamedFan{.unit = EFanUnit_GarFan6, .name = "GAR_FAN6", .id = {}},
    NamedFan{.unit = EFanUnit_GarFan7, .name = "GAR_FAN7", .id = {}},
    NamedFan{.unit = EFanUnit_GarFan8, .name = "GAR_FAN8", .id = {}},
};

/// The fans that the climate service serves.
inline constexpr std::span<const NamedFan> kServedFans = std::span(kFans).first<3>();
static_assert(kServedFans.back().id && !kFans[kServedFans.size()].id);

/// @param id of the driver
/// @return the fan's name; "" for a fan without one
inline std::string FanNameOf(u32 id) {
  for (const NamedFan& fan : kServedFans) {
    if (fan.id == id) return std::string(fan.name);
  }
  return {};
}

}  // namespace commandline
