/// @file
/// Values as the command line and the output write them. The Parse functions throw CommandError (usage) with an example
/// of what would be right.
#pragma once

#include "AaSysCom.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace clmctl {

/// A decimal or 0x number; @p what names it in the error.
u32 ParseNumber(std::string_view text, std::string_view what);
/// A number of things to show, 1 or more; @p option names it in the error.
u32 ParseCount(std::string_view text, std::string_view option);
/// A time with its unit: "500ms", "1s", "1.5s", "2min", "1h"; a bare number is refused.
std::chrono::milliseconds ParseDuration(std::string_view text);
/// Longest wait for an answer: a time of at least a millisecond.
std::chrono::milliseconds ParseTimeout(std::string_view text);
/// An address: "BOARD/CPU/TASK" (each decimal or 0x) or the whole as a 0x number.
TAaSysComSicad ParseAddress(std::string_view text);
/// A task of the own node: the name of a service ("temperature"), or a decimal or 0x number of 1 to 0xffff.
u32 ParseTask(std::string_view text);
/// Bytes as pairs of hexadecimal digits; spaces, ':' and a leading 0x are allowed.
std::vector<u8> ParseHex(std::string_view text);

/// "1/1/0x4b6"
std::string FormatAddress(TAaSysComSicad address);
/// "00ff10"
std::string FormatHex(const void* data, u32 size);
/// "0x2b29"
std::string FormatId(u32 id);

}  // namespace clmctl
