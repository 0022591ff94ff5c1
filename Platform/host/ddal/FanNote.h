/// @file
/// What was found of a fan, on record in the run folder from before its first change until it is handed back.
#pragma once

#include "BoardDescription.h"
#include "FanRecord.h"

#include <optional>
#include <string>

namespace hwapi::ddal {

inline constexpr u32 kMaxFans = 16;  ///< ids of fans are below

/// A fan as it was found, and where. One small text file a fan, so that each goes when its fan is handed back.
struct FanNote {
  FanRecord record{};
  std::string chip{};  ///< contents of its `name`
  std::string at{};    ///< as DeviceName; "" for a chip without a device
  std::string fan{};   ///< e.g. "fan1"
  std::string pwm{};   ///< e.g. "pwm1"

  /// @return whether this is the fan of a description
  bool Describes(const board::HwmonFan& binding) const {
    return chip == binding.chip && fan == binding.fan && pwm == binding.pwm && (binding.at.empty() || binding.at == at);
  }
};

/// Room for the name of a note's file.
using NoteName = std::array<char, 16>;

/// @return name of a fan's note in the run folder, "fan7.found". Async-signal-safe.
NoteName NameOfNote(u32 fan);

/// Puts a fan on record, whole or not at all. @return 0, or an errno value
int WriteNote(const FanNote& note);

/// @return the note of a fan; none when there is none, or none to be trusted: cut, damaged, out of range, or made by
/// somebody else than root and this process's user
std::optional<FanNote> ReadNote(u32 fan);

/// @return whether a fan has a note, be it as damaged as may be
bool HasNote(u32 fan);

/// Removes a fan's note; harmless when there is none.
void RemoveNote(u32 fan);

}  // namespace hwapi::ddal
