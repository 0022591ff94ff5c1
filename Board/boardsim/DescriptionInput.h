/// @file
/// The board description that `boardsim up` is given.
#pragma once

#include "BoardDescription.h"

#include <string>

namespace boardsim {

struct DescriptionInput {
  hwapi::board::BoardDescription board;
  std::string text;  ///< what it was read from
};

/// @param name a file; "-" for standard input
/// @throw SimError (usage) when it cannot be read or is wrong: says what is, and what to give instead
DescriptionInput ReadDescriptionInput(const std::string& name);

}  // namespace boardsim
