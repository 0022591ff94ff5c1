#include "Problems.h"

#include <algorithm>
#include <numeric>

namespace hwapi::board {
namespace {

/// Number of single-character changes between two names.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
    }
  }
  return row[b.size()];
}

/// Whether one is likely a slip of the pen for the other.
bool Close(std::string_view given, std::string_view name) {
  return Distance(given, name) <= std::max<std::size_t>(1, name.size() / 3);
}

}  // namespace

std::string Problems::Text(const std::string& path) const {
  auto sorted = m_found;
  std::stable_sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::string text;
  for (const auto& [line, what] : sorted) {
    if (!text.empty()) text += '\n';
    text += path + ':' + std::to_string(line) + ": " + what;
  }
  return text;
}

std::string AllowedNames(std::string_view given, const std::vector<std::string_view>& allowed) {
  std::string text = "; ";
  const auto nearest = std::min_element(allowed.begin(), allowed.end(),
                                        [given](auto a, auto b) { return Distance(given, a) < Distance(given, b); });
  if (nearest != allowed.end() && Close(given, *nearest)) text += "did you mean \"" + std::string(*nearest) + "\"? ";
  text += "Allowed:";
  for (const auto name : allowed) text += (name == allowed.front() ? " " : ", ") + std::string(name);
  return text;
}

}  // namespace hwapi::board
