#include "ProcessingUnits.h"

#include "messages/Autodet.h"

#include <algorithm>
#include <cstdio>

namespace boardsim {

static_assert(kUnitStates[EAdetState_UnPlugged] == "UnPlugged");
static_assert(kUnitStates[EAdetState_Plugged] == "Plugged");
static_assert(kUnitStates.size() == EAdetState_Unknown + 1);

std::string UnitStateText(u32 state) {
  return state < kUnitStates.size() ? std::string(kUnitStates[state]) : std::to_string(state);
}

std::string UnitText(u32 hwSwId) {
  char id[16];
  std::snprintf(id, sizeof id, " (0x%x)", hwSwId);
  return std::string(VariantOf(hwSwId).name) + id;
}

bool HasUnitSlots(const hwapi::board::BoardDescription& board) { return board.unit.type == EUnitType_Kel; }

const UnitSlot* SlotOfSensor(const hwapi::board::BoardDescription& board, u32 device) {
  if (!HasUnitSlots(board)) return nullptr;
  const auto* slot = std::find_if(kUnitSlots.begin(), kUnitSlots.end(),
                                  [device](const UnitSlot& known) { return known.driverBoard == device >> 16; });
  return slot != kUnitSlots.end() ? slot : nullptr;
}

}  // namespace boardsim
