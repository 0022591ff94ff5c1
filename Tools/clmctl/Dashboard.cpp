#include "Dashboard.h"

#include <utility>

namespace clmctl {
namespace {

void Append(std::vector<std::string>& lines, std::vector<std::string> more) {
  if (!lines.empty() && !more.empty()) lines.emplace_back();
  for (std::string& line : more) lines.push_back(std::move(line));
}

}  // namespace

std::vector<std::string> Dashboard::Draw(const Canvas& canvas, FanTable::Clock::time_point now) const {
  // The fans are few: the temperatures get what those and the note leave.
  const std::vector<std::string> below = fans ? fans->Draw(canvas, now) : std::vector<std::string>();
  const auto taken = static_cast<unsigned>(below.size() + (fans ? 1 : 0) + (note.empty() ? 0 : 1));
  std::vector<std::string> lines;
  if (temperatures) {
    Canvas rest = canvas;
    rest.rows = canvas.rows > taken ? canvas.rows - taken : 0;
    lines = temperatures->Draw(rest);
  }
  Append(lines, below);
  if (!note.empty()) lines.push_back(Coloured(Cut(note, canvas.columns), "33", canvas));
  if (lines.size() > canvas.rows) lines.resize(canvas.rows);
  return lines;
}

}  // namespace clmctl
