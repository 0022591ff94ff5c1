#include "UnitSlots.h"

#include <algorithm>
#include <string_view>

namespace boardsim {
namespace {

/// Fills a text field; what is left stays zero.
template <std::size_t Size>
void PutText(char (&field)[Size], std::string_view text) {
  std::copy_n(text.begin(), std::min(text.size(), Size), field);
}

}  // namespace

std::optional<SApiAutodetUnitInd> UnitSlots::Indication(std::size_t slot) const {
  const std::optional<UnitInSlot>& unit = Unit(slot);
  if (!unit) return std::nullopt;
  SApiAutodetUnitInd indication{};
  indication.autodetectionState = static_cast<EAdetState>(unit->state);
  SUnitInformation& information = indication.unitInformation;
  information.unit_id = kUnitSlots[slot].unitId;
  information.hw_id = VariantField(unit->hwSwId);
  information.hw_sw_id = unit->hwSwId;
  information.dspVolume = VariantOf(unit->hwSwId).processors;
  information.mcuPresence = GLO_TRUE;
  PutText(information.boardPn, VariantOf(unit->hwSwId).name);
  PutText(information.boardSn, kUnitSlots[slot].name);
  return indication;
}

}  // namespace boardsim
