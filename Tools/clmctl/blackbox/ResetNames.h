/// @file
/// Names of reset types and of categories: for the command line, and as the history of the board file writes them.
#pragma once

#include "messages/Reset.h"

#include <span>
#include <string>
#include <string_view>

namespace clmctl {

struct ResetName {
  u32 number;
  std::string_view name;         ///< on the command line
  std::string_view historyText;  ///< categories: in the history
};

std::span<const ResetName> ResetTypes();
std::span<const ResetName> ResetCategories();

/// @return the number of a name (in any case) or of a number
/// @throw CommandError (usage) for an unknown name; @p what says of what
u32 ParseResetName(std::span<const ResetName> names, std::string_view text, std::string_view what);
/// @return the name of a number; the number itself when it has none
std::string ResetNameText(std::span<const ResetName> names, u32 number);

}  // namespace clmctl
