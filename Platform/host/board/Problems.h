/// @file
/// The errors found in a description, and the words that help to mend them.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hwapi::board {

/// Collects errors by line.
class Problems {
 public:
  void Add(unsigned line, std::string text) { m_found.emplace_back(line, std::move(text)); }
  bool None() const { return m_found.empty(); }
  /// @return the errors, one a line, in the order of the file's lines
  std::string Text(const std::string& path) const;

 private:
  std::vector<std::pair<unsigned, std::string>> m_found;
};

/// @return "; did you mean "X"? Allowed: A, B, X", the question only where a name is close
std::string AllowedNames(std::string_view given, const std::vector<std::string_view>& allowed);

}  // namespace hwapi::board
