#include "TextTable.h"

#include "Screen.h"

#include <algorithm>

namespace clmctl {
namespace {

constexpr std::size_t kSpace = 2;  ///< between two columns

}  // namespace

TextTable::TextTable(std::vector<Column> columns) : m_columns(std::move(columns)), m_widths(m_columns.size()) {
  std::vector<std::string> headings;
  for (const Column& column : m_columns) headings.push_back(column.heading);
  Add(std::move(headings));
}

void TextTable::Add(std::vector<std::string> cells) {
  cells.resize(m_columns.size());
  for (std::size_t i = 0; i < cells.size(); ++i) m_widths[i] = std::max(m_widths[i], clmctl::Width(cells[i]));
  m_rows.push_back(std::move(cells));
}

std::size_t TextTable::Width() const {
  std::size_t width = m_widths.empty() ? 0 : (m_widths.size() - 1) * kSpace;
  for (const std::size_t column : m_widths) width += column;
  return width;
}

std::string TextTable::Line(const std::vector<std::string>& cells) const {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (i != 0) line += std::string(kSpace, ' ');
    line +=
        m_columns[i].align == Align::Left ? LeftAligned(cells[i], m_widths[i]) : RightAligned(cells[i], m_widths[i]);
  }
  return WithoutTrailingBlanks(std::move(line));
}

std::vector<std::string> TextTable::Lines() const {
  std::vector<std::string> lines;
  for (const auto& row : m_rows) lines.push_back(Line(row));
  return lines;
}

}  // namespace clmctl
