/// @file
/// An entry of the board file's history of resets, taken apart.
#pragma once

#include "GloTypes.h"

#include <optional>
#include <string>
#include <string_view>

namespace clmctl {

struct ResetRecord {
  std::string time;          ///< "2016-03-07T14:05:09.042Z"; zeros where the clock could not be read
  std::string reason;        ///< reset text; empty where the start found none
  std::string category;      ///< as the history writes it, "Commissioning change"; empty where there is none
  std::string extendedInfo;  ///< without its parentheses
  std::string partition;     ///< "/ffs/fs1", "Invalid"
  bool fallback = false;     ///< the board had fallen back to the other partition
  std::string counter;       ///< reset loop counter: a number, "Error" or "Not applicable"
  std::string text;          ///< the entry as it stands in the file
  bool damaged = false;      ///< it has not the shape of an entry: only its text counts

  /// @return the reset loop counter; nothing where it is no number
  std::optional<i32> CounterValue() const;
};

ResetRecord ParseResetRecord(std::string_view text);

}  // namespace clmctl
