/// @file
/// What a live view shows: tables, and a line about the watch itself.
#pragma once

#include "FanTable.h"
#include "TempTable.h"

#include <optional>
#include <string>
#include <vector>

namespace clmctl {

/// A table of temperatures, one of fans, or both. No output, no clock: a plain value.
struct Dashboard {
  std::optional<TempTable> temperatures;
  std::optional<FanTable> fans;
  std::string note;  ///< below the tables, until it is replaced; "" for none

  /// @return the lines, none wider than the screen and no more of them than its rows
  std::vector<std::string> Draw(const Screen& screen, FanTable::Clock::time_point now) const;
};

}  // namespace clmctl
