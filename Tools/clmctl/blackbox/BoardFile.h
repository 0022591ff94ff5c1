/// @file
/// The board file of the black box: identity, counters, software builds and the history of resets. Its grammar:
/// doc/board-file.md.
#pragma once

#include "FileLines.h"
#include "ResetRecord.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace clmctl {

enum class BoardSection : std::uint8_t { Board, Psu, Filter };

/// A line that a board file may have.
struct BoardLabel {
  BoardSection section;
  std::string_view label;  ///< in the file, before the ':'
  std::string_view title;  ///< for people
  std::string_view key;    ///< of JSON
  bool number;             ///< its value is one
};

struct BoardValue {
  const BoardLabel* label;
  bool present = false;              ///< the line is there
  std::optional<std::string> value;  ///< nothing where the board could not read it
};

struct BoardFile {
  std::vector<BoardValue> values;   ///< one for each line that there may be, in the order of the file
  bool hasProductData = false;      ///< there is a section of the power supply or of the filter
  std::vector<ResetRecord> resets;  ///< oldest first
  std::vector<FileProblem> problems;
};

/// Reads what can be read of any text.
BoardFile ParseBoardFile(std::string_view text);

}  // namespace clmctl
