#include "Dashboard.h"

#include <utility>

namespace clmctl {
namespace {

void Append(std::vector<std::string>& lines, std::vector<std::string> more) {
  if (!lines.empty() && !more.empty()) lines.emplace_back();
  for (std::string& line : more) lines.push_back(std::move(line));
}

}  // namespace

std::vector<std::string> Dashboard::Draw(const Screen& screen, FanTable::Clock::time_point now) const {
  // The fans are few: the temperatures get what those and the note leave.
  const std::vector<std::string> below = fans ? fans->Draw(screen, now) : std::vector<std::string>();
  const auto taken = static_cast<unsigned>(below.size() + (fans ? 1 : 0) + (note.empty() ? 0 : 1));
  std::vector<std::string> lines;
  if (temperatures) {
    Screen rest = screen;
    rest.rows = screen.rows > taken ? screen.rows - taken : 0;
    lines = temperatures->Draw(rest);
  }
  Append(lines, below);
  if (!note.empty()) lines.push_back(Coloured(Cut(note, screen.columns), "33", screen));
  if (lines.size() > screen.rows) lines.resize(screen.rows);
  return lines;
}

}  // namespace clmctl
