/// @file
/// A text file taken apart into lines, and what is wrong with them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace clmctl {

/// Something in a file that is not as the format says.
struct FileProblem {
  std::size_t line;  ///< 1 is the first one
  std::string text;  ///< what is wrong there
};

/// Lines without their line ends. They live as long as the text.
struct FileLines {
  explicit FileLines(std::string_view text);

  std::vector<std::string_view> lines;
  bool cut = false;  ///< the last line has no line end
};

/// @return at most the beginning of @p text, printable and in quotes
std::string Quoted(std::string_view text);

}  // namespace clmctl
