#include "PlotLegend.h"

#include "Screen.h"

#include <algorithm>
#include <cstdio>

namespace clmctl {
namespace {

constexpr std::size_t kLongestName = 24;
constexpr std::size_t kNumberWidth = 7, kFailedWidth = 8;

std::string NumberText(std::optional<double> value, Quantity quantity) {
  if (!value) return "-";
  char text[64];
  std::snprintf(text, sizeof text, quantity == Quantity::Temperature ? "%.1f" : "%.0f", *value);
  return text;
}

std::string ShortName(const std::string& name) {
  if (Width(name) <= kLongestName) return name;
  std::string cut = name;
  while (Width(cut) >= kLongestName) {
    while (!cut.empty() && (static_cast<unsigned char>(cut.back()) & 0xC0) == 0x80) cut.pop_back();
    cut.pop_back();
  }
  return cut + "~";
}

std::size_t NameWidth(const std::vector<PlotCurve>& curves) {
  std::size_t width = 6;
  for (const PlotCurve& curve : curves) width = std::max(width, Width(ShortName(curve.name)));
  return width;
}

bool AnyErrors(const std::vector<PlotCurve>& curves) {
  return std::any_of(curves.begin(), curves.end(), [](const PlotCurve& curve) { return curve.errors != 0; });
}

std::string OtherColumnsText(const TraceStatistics& statistics) {
  return Counted(statistics.otherColumns, "row") + " of an earlier set of sensors";
}

/// Rows that a plot leaves out.
std::vector<std::string> LeftOut(const TraceStatistics& statistics) {
  std::vector<std::string> texts;
  if (statistics.damaged != 0) texts.push_back(Counted(statistics.damaged, "damaged row"));
  if (statistics.clockNotSet != 0) {
    texts.push_back(Counted(statistics.clockNotSet, "row") + " from before the clock was set");
  }
  return texts;
}

}  // namespace

std::string LegendHead(const std::vector<PlotCurve>& curves, Quantity quantity) {
  std::string head = LeftAligned(quantity == Quantity::Temperature ? "sensor" : "fan", NameWidth(curves));
  for (const char* const heading : {"last", "min", "max"}) head += RightAligned(heading, kNumberWidth);
  return head + (AnyErrors(curves) ? RightAligned("failed", kFailedWidth) : "");
}

std::string LegendLine(const PlotCurve& curve, const std::vector<PlotCurve>& curves, Quantity quantity) {
  std::string line = LeftAligned(ShortName(curve.name), NameWidth(curves));
  for (const auto value : {curve.last, curve.minimum, curve.maximum}) {
    line += RightAligned(NumberText(value, quantity), kNumberWidth);
  }
  if (!AnyErrors(curves)) return line;
  const std::size_t errors = curve.errors;
  return line + RightAligned(errors == 0 ? "" : std::to_string(errors), kFailedWidth);
}

std::string SpanLine(const TraceStatistics& statistics) {
  const std::string rows = Counted(statistics.good, "row");
  if (!statistics.first) return rows;
  return RangeText(*statistics.first, *statistics.last) + ", " + rows;
}

std::vector<std::string> NotesOf(const TraceStatistics& statistics, const std::vector<std::size_t>& columns,
                                 const PlotMarks& marks) {
  std::vector<std::string> notes;
  const auto add = [&notes](const char* mark, const std::string& meaning) {
    notes.push_back(std::string(mark) + ": " + meaning);
  };
  std::size_t errors = 0, missing = 0;
  for (const std::size_t column : columns) errors += statistics.columns[column].errors;
  for (const TraceGap& gap : statistics.gaps) missing += gap.MissingRows();
  if (errors != 0) add(marks.failure, "failed reading (" + std::to_string(errors) + ")");
  if (missing != 0) add(marks.gap, "no rows (" + std::to_string(missing) + " missing)");
  if (statistics.otherColumns != 0) add(marks.otherColumns, OtherColumnsText(statistics));
  if (!statistics.clockSetBack.empty()) add(marks.clockSetBack, "the clock was set back");
  for (const std::string& text : LeftOut(statistics)) add("left out", text);
  return notes;
}

std::string OtherRowsText(const TraceStatistics& statistics) {
  std::vector<std::string> texts = LeftOut(statistics);
  if (statistics.otherColumns != 0) texts.insert(texts.begin(), OtherColumnsText(statistics));
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
  return all;
}

}  // namespace clmctl
