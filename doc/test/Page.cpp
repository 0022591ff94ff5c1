#include "Page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace page {
namespace {

constexpr std::string_view kFence = "```";
constexpr std::string_view kIndent = "    ";

std::string Trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == text.npos) return "";
  return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

/// @return the cells of a table's line; a '|' behind a backslash is none of its own
Row Cells(const std::string& line) {
  Row cells(1);
  for (std::size_t i = 1; i < line.size(); ++i) {
    if (line[i] == '|' && line[i - 1] != '\\') {
      cells.emplace_back();
    } else {
      cells.back() += line[i];
    }
  }
  cells.pop_back();  // what follows the last '|'
  std::transform(cells.begin(), cells.end(), cells.begin(), Trimmed);
  return cells;
}

bool IsRule(const std::string& line) { return line.find_first_not_of("|-: ") == line.npos; }

/// Reads the lines of a page one after the other.
class Reader {
 public:
  void Read(const std::string& line) {
    if (line.starts_with(kFence)) {
      m_fenced = !m_fenced;
      m_open = m_fenced;
      if (m_fenced) Now().blocks.emplace_back();
    } else if (m_fenced) {
      Now().blocks.back() += line + "\n";
    } else if (line.starts_with(kIndent)) {
      Indented(line.substr(kIndent.size()));
    } else if (line.empty()) {
      m_blank += m_open ? 1 : 0;
    } else {
      Text(line);
    }
  }

  std::vector<Section> sections{1};

 private:
  Section& Now() { return sections.back(); }

  void Indented(const std::string& line) {
    if (!m_open) Now().blocks.emplace_back();
    Now().blocks.back() += std::string(m_open ? m_blank : 0, '\n') + line + "\n";
    m_open = true;
    m_blank = 0;
  }

  void Text(const std::string& line) {
    m_open = false;
    m_blank = 0;
    if (line.starts_with('#')) {
      sections.push_back({.heading = Trimmed(line.substr(line.find_first_not_of('#'))), .blocks = {}, .rows = {}});
    } else if (line.starts_with('|') && IsRule(line)) {
      if (!Now().rows.empty()) Now().rows.pop_back();  // the table's heading
    } else if (line.starts_with('|')) {
      Now().rows.push_back(Cells(line));
    }
  }

  bool m_fenced = false;
  bool m_open = false;      ///< a block may go on
  std::size_t m_blank = 0;  ///< empty lines since its last one
};

}  // namespace

std::string Section::Block(std::size_t number) const {
  if (number < blocks.size()) return blocks[number];
  ADD_FAILURE() << "\"" << heading << "\" has no block " << number;
  return "";
}

std::vector<Section> Sections(const std::string& file) {
  std::ifstream in(std::string(PAGES_FOLDER) + '/' + file);
  EXPECT_TRUE(in.is_open()) << file;
  Reader reader;
  for (std::string line; std::getline(in, line);) reader.Read(line);
  return reader.sections;
}

Section SectionOf(const std::string& file, const std::string& heading) {
  for (const Section& section : Sections(file)) {
    if (section.heading == heading) return section;
  }
  ADD_FAILURE() << file << " has no section \"" << heading << "\"";
  return {};
}

std::vector<std::string> Quoted(const std::string& text) {
  std::vector<std::string> parts;
  for (std::size_t begin = text.find('`'); begin != text.npos; begin = text.find('`', begin)) {
    const std::size_t end = text.find('`', begin + 1);
    if (end == text.npos) break;
    parts.push_back(text.substr(begin + 1, end - begin - 1));
    begin = end + 1;
  }
  return parts;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace page
