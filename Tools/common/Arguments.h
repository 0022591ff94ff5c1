/// @file
/// Arguments as people write them.
#pragma once

#include "GloTypes.h"

#include <optional>
#include <string>
#include <string_view>

namespace commandline {

/// @return a decimal or 0x number of 32 bits; nothing for any other text
std::optional<u32> NumberFrom(std::string_view text);
/// @return a decimal number of 32 bits with or without '-'; nothing for any other text
std::optional<i32> SignedFrom(std::string_view text);

/// The bytes of a tag's value: a decimal or 0x number gives 4 bytes, anything else its characters; "text:" in front
/// forces characters.
/// @return nothing for a number that 4 bytes cannot hold
std::optional<std::string> TagBytes(std::string_view text);
/// @return why TagBytes has nothing for @p text, and what to write instead
std::string TagBytesRefusal(std::string_view text);

}  // namespace commandline
