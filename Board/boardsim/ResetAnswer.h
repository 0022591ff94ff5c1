/// @file
/// What the reset service answers to the question for the last reset.
#pragma once

#include "messages/ResetProofRam.h"

#include <optional>
#include <string>
#include <string_view>

namespace boardsim {

/// An answer, kept as a line of text: "5", "5 fail=2", "5 silent", "5 late=12".
struct ResetAnswer {
  static constexpr u32 kLongestDelaySeconds = 4000;

  u32 type = ERPresetTypePowerOn;  ///< ERPresetType, or any other number
  ERP_RAM_status status = ERP_RAM_status_Success;
  bool silent = false;   ///< no answer comes
  u32 delaySeconds = 0;  ///< board time until it comes

  bool operator==(const ResetAnswer&) const = default;

  /// The answer that a command asks for: "N" is that type at once; "fail=STATUS", "silent" and "late=SECONDS" keep the
  /// type of @p before and say how it is answered.
  /// @throw SimError (usage)
  static ResetAnswer FromCommand(std::string_view text, const ResetAnswer& before);
  std::string Line() const;

  /// Reads the answer of a file.
  /// @return nothing when there is no such file, or another text in it
  static std::optional<ResetAnswer> Load(const std::string& file);
  /// @return the answer of the file, else that of the own board's description, else the default
  static ResetAnswer Current(const std::string& file);
  /// @throw SimError (unreachable) when the file cannot be written
  void Save(const std::string& file) const;
};

}  // namespace boardsim
