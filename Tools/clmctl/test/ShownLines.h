/// @file
/// What tests of live tables look at.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace clmctl {

/// @return the lines as one text
inline std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

/// @return characters, not bytes, without colour sequences
inline std::size_t ShownWidth(const std::string& line) {
  std::size_t width = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\x1b') {
      i = line.find('m', i);
    } else if ((static_cast<unsigned char>(line[i]) & 0xC0) != 0x80) {
      ++width;
    }
  }
  return width;
}

}  // namespace clmctl
