/// @file
/// What a command line says about fans: "201=60%", "GAR_FAN2=25kHz", "--period 8s".
#pragma once

#include "messages/FanControl.h"

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace clmctl {

/// What the service accepts as the time to the first indication.
inline constexpr std::chrono::seconds kFanShortestPeriod{8};
inline constexpr std::chrono::seconds kFanLongestPeriod{120};

/// What one fan is set to.
struct FanSetting {
  EFanUnit fan;
  u32 value;  ///< per cent, or an EFanParam
};

// Each of these throws CommandError (usage) with what is allowed.

/// Speeds, FAN=PERCENT: whole per cent from 0 to 100, with or without %; a fan comes once.
std::vector<FanSetting> ParseFanSpeeds(const std::vector<std::string>& words);
/// PWM frequencies, FAN=FREQUENCY; a fan comes once.
std::vector<FanSetting> ParseFanFrequencies(const std::vector<std::string>& words);
/// Time to the first indication: whole seconds from 8 s to 120 s.
std::chrono::seconds ParseFanPeriod(std::string_view text);
/// Recipient of the indications: BOARD/CPU/TASK or a 0x number, with a task.
SMessageAddress ParseFanReceiver(std::string_view text);

}  // namespace clmctl
