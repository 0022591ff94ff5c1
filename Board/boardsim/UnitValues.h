/// @file
/// Processing units as the command line writes them. Each function throws SimError (usage) that says what is allowed.
/// Upper and lower case are the same.
#pragma once

#include "GloTypes.h"

#include <string_view>

namespace boardsim {

/// A slot by its name ("Dax1") or number ("1"). @return index of kUnitSlots
u32 ParseSlot(std::string_view text);
/// A variant by its name ("basic", "m", "p") or a hw_sw_id ("0x16000"). @return the hw_sw_id
u32 ParseVariant(std::string_view text);
/// A state by its name ("Ready") or number. @return EAdetState, or the number
u32 ParseUnitState(std::string_view text);

}  // namespace boardsim
