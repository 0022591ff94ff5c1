#include "FileLines.h"

#include "Screen.h"

namespace clmctl {

FileLines::FileLines(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    cut = end == std::string_view::npos;
    lines.push_back(text.substr(0, end));
    text.remove_prefix(cut ? text.size() : end + 1);
  }
}

std::string Quoted(std::string_view text) {
  constexpr std::size_t kShown = 60;
  return "'" + Printable(text.substr(0, kShown)) + (text.size() > kShown ? "...'" : "'");
}

}  // namespace clmctl
