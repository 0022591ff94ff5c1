/// @file
/// Names of the fan requests: fans, PWM frequencies, outcomes.
#pragma once

#include "messages/FanControl.h"

#include <optional>
#include <string>
#include <string_view>

namespace clmctl {

/// @return the fan of a number (201) or a name ("GAR_FAN1", "GarFan1", "EFanUnit_GarFan1", any case)
/// @throw CommandError (usage) for any other text, with the fans there are
EFanUnit ParseFan(std::string_view text);
/// @return "GAR_FAN1"; the number for a fan without a name
std::string FanText(u32 fan);

/// @return the frequency of "1kHz", "5kHz" or "25kHz", also in Hz
/// @throw CommandError (usage) for any other text, with the frequencies there are
EFanParam ParseFrequency(std::string_view text);
/// @return a frequency in hertz; nothing for an unknown one
std::optional<u32> FrequencyHertz(u32 frequency);
/// @return "25 kHz", or "-" for an unknown frequency
std::string FrequencyText(u32 frequency);

/// @return the name of an outcome, as in "InvalidParam"; "Unknown" for a value without one
std::string_view StatusName(u32 status);
/// @return "ok", or as in "refused: InvalidParam (4)"
std::string StatusText(u32 status);

}  // namespace clmctl
