#include "UnitValues.h"

#include "Arguments.h"
#include "ProcessingUnits.h"
#include "SimError.h"

#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>

namespace boardsim {
namespace {

bool Same(std::string_view text, std::string_view name) {
  return text.size() == name.size() && strncasecmp(text.data(), name.data(), name.size()) == 0;
}

[[noreturn]] void Refuse(std::string_view text, const std::string& why) {
  throw SimError(ExitCode::Usage, "'" + std::string(text) + "' " + why);
}

std::string StateNames() {
  std::string names;
  for (const std::string_view name : kUnitStates) names += std::string(name) + ", ";
  return names;
}

}  // namespace

u32 ParseSlot(std::string_view text) {
  for (std::size_t slot = 0; slot < kUnitSlots.size(); ++slot) {
    if (Same(text, kUnitSlots[slot].name)) return static_cast<u32>(slot);
  }
  const std::optional<u32> number = commandline::NumberFrom(text);
  if (number && *number >= 1 && *number <= kUnitSlots.size()) return *number - 1;
  Refuse(text, "is no slot: give Dax1, Dax2 or Dax3, or its number from 1 to 3");
}

u32 ParseVariant(std::string_view text) {
  for (const UnitVariant& variant : kUnitVariants) {
    if (Same(text, variant.name)) return variant.hwSwId;
  }
  if (const std::optional<u32> hwSwId = commandline::NumberFrom(text)) return *hwSwId;
  Refuse(text, "is no variant of a processing unit: give basic, m or p, or a hw_sw_id such as 0x16000");
}

u32 ParseUnitState(std::string_view text) {
  const auto* named =
      std::find_if(kUnitStates.begin(), kUnitStates.end(), [text](std::string_view name) { return Same(text, name); });
  if (named != kUnitStates.end()) return static_cast<u32>(named - kUnitStates.begin());
  if (const std::optional<u32> number = commandline::NumberFrom(text)) return *number;
  Refuse(text, "is no state of a processing unit: give " + StateNames() + "or a number");
}

}  // namespace boardsim
