/// @file
/// Which processing unit is in which slot.
#pragma once

#include "ProcessingUnits.h"
#include "messages/Autodet.h"

#include <array>
#include <cstddef>
#include <optional>

namespace boardsim {

/// The unit that a slot has, or had last.
struct UnitInSlot {
  u32 hwSwId;
  u32 state;  ///< EAdetState, or any other number

  /// @return whether it is there
  bool Present() const { return state != EAdetState_UnPlugged; }
};

/// The slots of a board. Used by one thread.
class UnitSlots {
 public:
  /// Changes what is in a slot.
  /// @param slot index of kUnitSlots
  void Set(std::size_t slot, const UnitInSlot& unit) { m_units.at(slot) = unit; }
  /// @return the unit that the slot has, or had last; nothing when it never had one
  const std::optional<UnitInSlot>& Unit(std::size_t slot) const { return m_units.at(slot); }

  /// @return what the autodetection service tells of a slot; nothing when the slot never had a unit
  std::optional<SApiAutodetUnitInd> Indication(std::size_t slot) const;

 private:
  std::array<std::optional<UnitInSlot>, kUnitSlots.size()> m_units{};
};

}  // namespace boardsim
