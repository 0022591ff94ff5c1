#include "TraceText.h"

#include "TextTable.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace clmctl {
namespace {

constexpr const char* kFailed = "error";
constexpr const char* kNone = "-";
constexpr std::size_t kShownGaps = 5;

std::string OptionalText(std::optional<i32> value, Quantity quantity) {
  return value ? ValueText(*value, quantity) : kNone;
}

std::string ReadingText(const TraceReading& reading, Quantity quantity) {
  if (reading.state == ReadingState::Good) return ValueText(reading.value, quantity);
  return reading.state == ReadingState::Failed ? kFailed : kNone;
}

std::string MeanText(const ColumnStatistics& statistics, Quantity quantity) {
  if (!statistics.mean) return kNone;
  return ValueText(static_cast<i32>(std::lround(*statistics.mean)), quantity);
}

void Append(std::vector<std::string>& lines, const std::vector<std::string>& more) {
  lines.insert(lines.end(), more.begin(), more.end());
}

std::string GapsText(const std::vector<TraceGap>& gaps) {
  std::size_t missing = 0;
  for (const TraceGap& gap : gaps) missing += gap.MissingRows();
  std::string text = Counted(gaps.size(), "gap") + ", about " + Counted(missing, "row") + " missing:";
  for (std::size_t i = 0; i < std::min(gaps.size(), kShownGaps); ++i) {
    text += (i == 0 ? " " : ", ") + UtcSeconds(gaps[i].begin) + " to " + UtcSeconds(gaps[i].end).substr(11);
  }
  return text + (gaps.size() > kShownGaps ? ", ..." : "");
}

TextTable SummaryTable(const TraceFile& trace, const TraceStatistics& statistics, Quantity quantity,
                       const Screen& screen) {
  const bool temperatures = quantity == Quantity::Temperature;
  const std::string heading = !temperatures ? "FAN, RPM" : screen.utf8 ? "SENSOR, °C" : "SENSOR, deg C";
  std::vector<TextTable::Column> columns = {{.heading = heading}};
  for (const char* const name : {"LAST", "LOWEST", "MEAN", "HIGHEST", "FAILED"})
    columns.push_back({name, Align::Right});
  if (temperatures) {
    for (const char* const name : {"MIN*", "MAX*"}) columns.push_back({name, Align::Right});
  }
  TextTable table(columns);
  for (std::size_t i = 0; i < trace.columns.size(); ++i) {
    const TraceColumn& column = trace.columns[i];
    const ColumnStatistics& course = statistics.columns[i];
    if (column.quantity != quantity) continue;
    table.Add({Printable(column.name), course.last ? ReadingText(*course.last, quantity) : kNone,
               OptionalText(course.minimum, quantity), MeanText(course, quantity),
               OptionalText(course.maximum, quantity), course.errors == 0 ? kNone : std::to_string(course.errors),
               OptionalText(column.minimum, quantity), OptionalText(column.maximum, quantity)});
  }
  return table;
}

std::string CellText(const TraceRow& row, std::size_t column, Quantity quantity) {
  return ReadingText(row.readings[column], quantity);
}

/// Columns of the trace that stand side by side.
struct Block {
  std::size_t begin, end;
};

std::size_t ColumnWidth(const TraceFile& trace, std::size_t column) {
  std::size_t width = Width(Printable(trace.columns[column].name));
  for (const TraceRow& row : trace.rows) {
    if (row.state != RowState::Good) continue;
    width = std::max(width, CellText(row, column, trace.columns[column].quantity).size());
  }
  return width;
}

std::vector<Block> BlocksOf(const TraceFile& trace, const Screen& screen) {
  constexpr std::size_t kTimeWidth = 19, kSpace = 2;
  std::vector<Block> blocks;
  std::size_t used = 0;
  for (std::size_t i = 0; i < trace.columns.size(); ++i) {
    const std::size_t width = ColumnWidth(trace, i) + kSpace;
    if (blocks.empty() || used + width > screen.columns) {
      blocks.push_back({i, i});
      used = kTimeWidth;
    }
    used += width;
    blocks.back().end = i + 1;
  }
  if (blocks.empty()) blocks.push_back({0, 0});
  return blocks;
}

std::string UnattributedText(const TraceRow& row) {
  if (row.state == RowState::Damaged) return "damaged: " + Printable(row.text);
  std::string text = UtcSeconds(row.time) + "  other columns:";
  for (const TraceReading& reading : row.readings) {
    text += " " + (reading.state == ReadingState::Failed ? std::string(kFailed) : std::to_string(reading.value));
  }
  return text;
}

/// @return the block's lines; rows without an owner of their values stand in the first one
std::vector<std::string> BlockLines(const TraceFile& trace, const Block& block) {
  std::vector<TextTable::Column> columns = {{.heading = "TIME, UTC"}};
  for (std::size_t i = block.begin; i < block.end; ++i) {
    columns.push_back({Printable(trace.columns[i].name), Align::Right});
  }
  TextTable table(columns);
  for (const TraceRow& row : trace.rows) {
    if (row.state != RowState::Good) continue;
    std::vector<std::string> cells = {UtcSeconds(row.time)};
    for (std::size_t i = block.begin; i < block.end; ++i) cells.push_back(CellText(row, i, trace.columns[i].quantity));
    table.Add(std::move(cells));
  }
  const std::vector<std::string> good = table.Lines();
  std::vector<std::string> lines = {good.front()};
  auto next = good.begin() + 1;
  for (const TraceRow& row : trace.rows) {
    if (row.state == RowState::Good) {
      lines.push_back(*next++);
    } else if (block.begin == 0) {
      lines.push_back(UnattributedText(row));
    }
  }
  return lines;
}

}  // namespace

std::string ValueText(i32 value, Quantity quantity) {
  if (quantity == Quantity::FanSpeed) return std::to_string(value);
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", value / 1000.0);
  return text;
}

std::vector<std::string> TraceHeadLines(const TraceFile& trace, const TraceStatistics& statistics) {
  std::string rows = Counted(trace.rows.size(), "row");
  if (statistics.first) rows += ", " + RangeText(*statistics.first, *statistics.last);
  std::vector<std::string> lines = {rows};
  if (!statistics.gaps.empty()) lines.push_back(GapsText(statistics.gaps));
  if (!statistics.clockSetBack.empty()) {
    lines.push_back("the clock was set back " + Counted(statistics.clockSetBack.size(), "time"));
  }
  if (statistics.clockNotSet != 0) {
    lines.push_back(Counted(statistics.clockNotSet, "row") + " from before the board's clock was set");
  }
  if (statistics.otherColumns != 0) {
    lines.push_back(Counted(statistics.otherColumns, "row") +
                    " with other columns: restored from an earlier set of sensors, not counted below");
  }
  if (statistics.damaged != 0) lines.push_back(Counted(statistics.damaged, "damaged row") + ", not counted below");
  return lines;
}

std::vector<std::string> TraceSummaryLines(const TraceFile& trace, const TraceStatistics& statistics,
                                           const Screen& screen) {
  std::vector<std::string> lines;
  for (const Quantity quantity : {Quantity::Temperature, Quantity::FanSpeed}) {
    const std::vector<std::string> table = SummaryTable(trace, statistics, quantity, screen).Lines();
    if (table.size() == 1) continue;
    if (!lines.empty()) lines.emplace_back();
    Append(lines, table);
    if (quantity == Quantity::Temperature) lines.emplace_back("* since the service started");
  }
  return lines;
}

std::vector<std::string> TraceRowLines(const TraceFile& trace, const Screen& screen) {
  std::vector<std::string> lines;
  for (const Block& block : BlocksOf(trace, screen)) {
    if (!lines.empty()) lines.emplace_back();
    Append(lines, BlockLines(trace, block));
  }
  return lines;
}

}  // namespace clmctl
