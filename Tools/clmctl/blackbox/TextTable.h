/// @file
/// A table of text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace clmctl {

enum class Align : std::uint8_t { Left, Right };

class TextTable {
 public:
  struct Column {
    std::string heading;
    Align align = Align::Left;
  };

  explicit TextTable(std::vector<Column> columns);

  /// @param cells printable text; one for each column
  void Add(std::vector<std::string> cells);
  /// @return columns that the widest line takes
  std::size_t Width() const;
  /// @return the headings, then the rows; without blanks at their ends
  std::vector<std::string> Lines() const;

 private:
  std::string Line(const std::vector<std::string>& cells) const;

  std::vector<Column> m_columns;
  std::vector<std::size_t> m_widths;
  std::vector<std::vector<std::string>> m_rows;  ///< the headings are the first
};

}  // namespace clmctl
