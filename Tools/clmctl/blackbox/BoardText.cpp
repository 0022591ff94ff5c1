#include "BoardText.h"

#include "TextTable.h"

namespace clmctl {
namespace {

std::string ValueText(const BoardValue& value) {
  if (!value.present) return "(no such line)";
  if (!value.value) return "(the board could not read it)";
  return Printable(*value.value);
}

void AddSection(const BoardFile& board, BoardSection section, std::string_view heading,
                std::vector<std::string>& lines) {
  constexpr std::size_t kTitleWidth = 23;
  if (!heading.empty()) lines.insert(lines.end(), {"", std::string(heading)});
  for (const BoardValue& value : board.values) {
    if (value.label->section != section) continue;
    lines.push_back(LeftAligned(std::string(value.label->title), kTitleWidth) + ValueText(value));
  }
}

std::string CounterText(const ResetRecord& reset) { return Printable(reset.counter); }

std::string PartitionText(const ResetRecord& reset) {
  return Printable(reset.partition) + (reset.fallback ? " (fallback)" : "");
}

std::string OrDash(const std::string& text) { return text.empty() ? "-" : Printable(text); }

/// @return the history as a table; damaged entries are among its lines as they are
std::vector<std::string> TableLines(const TextTable& table, const std::vector<ResetRecord>& resets) {
  const std::vector<std::string> rows = table.Lines();
  std::vector<std::string> lines = {rows.front()};
  auto next = rows.begin() + 1;
  for (const ResetRecord& reset : resets) {
    lines.push_back(reset.damaged ? "damaged: " + Printable(reset.text) : *next++);
  }
  return lines;
}

/// @return two lines for each entry
std::vector<std::string> StackedLines(const std::vector<ResetRecord>& resets) {
  std::vector<std::string> lines;
  for (const ResetRecord& reset : resets) {
    if (reset.damaged) {
      lines.push_back("damaged: " + Printable(reset.text));
      continue;
    }
    lines.push_back(reset.time + "  " + OrDash(reset.reason));
    std::string details = reset.category.empty() ? "" : Printable(reset.category) + ", ";
    if (!reset.extendedInfo.empty()) details += Printable(reset.extendedInfo) + ", ";
    lines.push_back("    " + details + PartitionText(reset) + ", reset counter " + CounterText(reset));
  }
  return lines;
}

std::vector<std::string> HistoryLines(const std::vector<ResetRecord>& resets, const Screen& screen) {
  if (resets.empty()) return {"No resets are recorded."};
  TextTable table({{.heading = "RESET AT, UTC"},
                   {.heading = "REASON"},
                   {.heading = "CATEGORY"},
                   {.heading = "EXTENDED INFORMATION"},
                   {.heading = "PARTITION"},
                   {.heading = "COUNTER", .align = Align::Right}});
  for (const ResetRecord& reset : resets) {
    if (reset.damaged) continue;
    table.Add({reset.time, OrDash(reset.reason), OrDash(reset.category), OrDash(reset.extendedInfo),
               PartitionText(reset), CounterText(reset)});
  }
  return table.Width() <= screen.columns ? TableLines(table, resets) : StackedLines(resets);
}

}  // namespace

std::vector<std::string> BoardLines(const BoardFile& board, const Screen& screen) {
  std::vector<std::string> lines;
  AddSection(board, BoardSection::Board, "", lines);
  if (board.hasProductData) {
    AddSection(board, BoardSection::Psu, "Power supply", lines);
    AddSection(board, BoardSection::Filter, "Filter", lines);
  }
  lines.emplace_back();
  const std::vector<std::string> history = HistoryLines(board.resets, screen);
  lines.insert(lines.end(), history.begin(), history.end());
  return lines;
}

std::vector<std::string> ConfigLines(const ConfigFile& config) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < ConfigKeys().size(); ++i) {
    lines.push_back(LeftAligned(std::string(ConfigKeys()[i].title), 12) +
                    (config.paths[i] ? Printable(*config.paths[i]) : "(no such line)"));
  }
  return lines;
}

}  // namespace clmctl
