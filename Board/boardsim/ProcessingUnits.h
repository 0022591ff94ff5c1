/// @file
/// Processing units and their slots, as data: what the autodetection service tells of them, which sensors they have.
#pragma once

#include "BoardDescription.h"

#include <array>
#include <string>
#include <string_view>

namespace boardsim {

/// A slot of a control board.
struct UnitSlot {
  std::string_view name;
  u32 unitId;       ///< of a unit in it, in the first cabinet
  u32 driverBoard;  ///< upper half of the device ids of its sensors
};

inline constexpr std::array kUnitSlots = {
    UnitSlot{.name = "Dax1", .unitId = 0x12, .driverBoard = 2},
    UnitSlot{.name = "Dax2", .unitId = 0x13, .driverBoard = 3},
    UnitSlot{.name = "Dax3", .unitId = 0x14, .driverBoard = 4},
};

/// A hardware variant.
struct UnitVariant {
  std::string_view name;
  u32 hwSwId;      ///< an id that has the variant's field
  u32 processors;  ///< DSPs; their sensors have the indexes from 1
  bool hasVornik;  ///< its sensor has the index kVornikIndex

  /// @return whether the unit has the sensor of that index (lower half of the device id)
  constexpr bool HasSensor(u32 index) const;
};

inline constexpr u32 kVornikIndex = 10;
/// Indexes of the sensors that a unit can have.
inline constexpr u32 kUnitSensors = kVornikIndex + 1;

constexpr bool UnitVariant::HasSensor(u32 index) const {
  return index <= processors || (hasVornik && index == kVornikIndex);
}

inline constexpr UnitVariant kBasicUnit{.name = "basic", .hwSwId = 0x10000, .processors = 6, .hasVornik = false};
inline constexpr UnitVariant kMUnit{.name = "m", .hwSwId = 0x0C000, .processors = 9, .hasVornik = true};
inline constexpr UnitVariant kPUnit{.name = "p", .hwSwId = 0x11000, .processors = 6, .hasVornik = true};
inline constexpr std::array kUnitVariants = {kBasicUnit, kMUnit, kPUnit};

/// @return the 8 bits of a hw_sw_id that tell the variant
constexpr u32 VariantField(u32 hwSwId) { return (hwSwId >> 12) & 0xFF; }

/// @return the variant of a unit; basic for a field of no other
constexpr const UnitVariant& VariantOf(u32 hwSwId) {
  constexpr u32 kSecondPField = 0x16;
  if (VariantField(hwSwId) == VariantField(kMUnit.hwSwId)) return kMUnit;
  const bool p = VariantField(hwSwId) == VariantField(kPUnit.hwSwId) || VariantField(hwSwId) == kSecondPField;
  return p ? kPUnit : kBasicUnit;
}
static_assert(VariantOf(0x16000).name == "p" && VariantOf(kBasicUnit.hwSwId).name == "basic");

/// Names of EAdetState, by its values.
inline constexpr std::array<std::string_view, 9> kUnitStates = {
    "Ready", "UnInitialized", "UnPlugged", "SwUpgrade", "Timeout", "Hiz", "Sleep", "Plugged", "Unknown"};

/// @return the state's name, or its number
std::string UnitStateText(u32 state);
/// @return "m (0xc000)"
std::string UnitText(u32 hwSwId);

/// @return whether the board has slots for processing units: those of control boards
bool HasUnitSlots(const hwapi::board::BoardDescription& board);
/// @return the slot that a sensor belongs to; null for a sensor of the board itself, and on a board without slots
const UnitSlot* SlotOfSensor(const hwapi::board::BoardDescription& board, u32 device);

}  // namespace boardsim
