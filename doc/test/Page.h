/// @file
/// A page of this folder, taken apart: its sections, their tables and their blocks of code.
#pragma once

#include <string>
#include <vector>

namespace page {

/// Cells of a row, without the blanks around them.
using Row = std::vector<std::string>;

/// What stands under one heading, up to the next one of any level.
struct Section {
  std::string heading;              ///< without its '#'; empty for what comes before the first one
  std::vector<std::string> blocks;  ///< blocks of code, indented or fenced, each line with its line end
  std::vector<Row> rows;            ///< those of all tables, without their headings

  /// @return the block of that number, counted from 0; fails the test and is empty when there is none
  std::string Block(std::size_t number = 0) const;
};

/// @param file "trace-file.md"
/// @return the sections in the order of the page; fails the test when there is no such page
std::vector<Section> Sections(const std::string& file);
/// @return the section of that heading; fails the test when there is none
Section SectionOf(const std::string& file, const std::string& heading);

/// @return what stands in `backticks`, in order
std::vector<std::string> Quoted(const std::string& text);
/// @return @p text with every @p from replaced
std::string Replaced(std::string text, const std::string& from, const std::string& to);

}  // namespace page
