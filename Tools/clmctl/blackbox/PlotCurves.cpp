#include "PlotCurves.h"

#include "GnuplotText.h"
#include "PlotAxis.h"
#include "Screen.h"

#include <algorithm>
#include <array>

namespace clmctl {
namespace {

constexpr std::array kColours = {"#1f77b4", "#d62728", "#2ca02c", "#9467bd", "#ff7f0e", "#17a2b8",
                                 "#8c564b", "#e377c2", "#4d4d4d", "#a8a800", "#1b3fa0", "#7d1128"};
/// Curves beyond the colours are told apart by their dashes.
constexpr std::array kDashes = {"1", "(12,4)", "(3,3)", "(14,4,3,4)"};
/// Room above and below the values, as a part of them, and at least so much of the axis.
constexpr double kRoom = 0.05, kLeastDegrees = 0.5, kLeastRpm = 50;

double AxisValue(i32 value, Quantity quantity) { return quantity == Quantity::Temperature ? value / 1000.0 : value; }

std::optional<double> AxisValue(std::optional<i32> value, Quantity quantity) {
  if (!value) return std::nullopt;
  return AxisValue(*value, quantity);
}

/// Readings that follow each other.
struct Stretch {
  std::string data;
  std::size_t readings = 0;
  UtcTime last;
};

/// Ends a stretch: the curve has a break there.
void End(Stretch& stretch, PlotCurve& curve) {
  (stretch.readings == 1 ? curve.loneReadings : curve.readings) += stretch.data + (stretch.readings > 1 ? "\n" : "");
  stretch = {};
}

void AddData(const TraceFile& trace, PlotCurve& curve) {
  const Quantity quantity = trace.columns[curve.column].quantity;
  Stretch stretch;
  for (const TraceRow& row : trace.rows) {
    const bool attributed = row.state == RowState::Good && ClockWasSet(row.time);
    const bool read = attributed && row.readings[curve.column].state == ReadingState::Good;
    if (!read || (stretch.readings != 0 && !Follows(stretch.last, row.time))) End(stretch, curve);
    const std::string time = attributed ? GnuplotNumber(Seconds(row.time)) : "";
    if (attributed && row.readings[curve.column].state == ReadingState::Failed) curve.failures += time + "\n";
    if (!read) continue;
    stretch.data += time + " " + GnuplotNumber(AxisValue(row.readings[curve.column].value, quantity)) + "\n";
    stretch.last = row.time;
    ++stretch.readings;
  }
  End(stretch, curve);
}

PlotCurve CurveOf(const TraceFile& trace, std::size_t index, const ColumnStatistics& statistics) {
  const TraceColumn& column = trace.columns[index];
  const bool temperature = column.quantity == Quantity::Temperature;
  PlotCurve curve;
  curve.column = index;
  curve.name = Printable(column.name);
  curve.errors = statistics.errors;
  curve.last = AxisValue(statistics.last ? statistics.last->Value() : std::nullopt, column.quantity);
  curve.minimum = AxisValue(temperature ? column.minimum : statistics.minimum, column.quantity);
  curve.maximum = AxisValue(temperature ? column.maximum : statistics.maximum, column.quantity);
  curve.lowest = AxisValue(statistics.minimum, column.quantity);
  curve.highest = AxisValue(statistics.maximum, column.quantity);
  AddData(trace, curve);
  return curve;
}

std::vector<PlotCurve> CurvesOf(const TraceFile& trace, const TraceStatistics& statistics,
                                const std::vector<std::size_t>& columns, Quantity quantity) {
  std::vector<PlotCurve> curves;
  for (const std::size_t index : columns) {
    if (trace.columns[index].quantity != quantity) continue;
    curves.push_back(CurveOf(trace, index, statistics.columns[index]));
  }
  std::stable_sort(curves.begin(), curves.end(),
                   [](const PlotCurve& a, const PlotCurve& b) { return a.last > b.last; });
  for (std::size_t i = 0; i < curves.size(); ++i) {
    curves[i].colour = kColours[i % kColours.size()];
    curves[i].dash = kDashes[i / kColours.size() % kDashes.size()];
  }
  return curves;
}

std::optional<PlotRange> ExtremesOf(const std::vector<PlotCurve>& curves) {
  std::optional<PlotRange> range;
  const auto include = [&range](std::optional<double> value) {
    if (!value) return;
    if (!range) range = PlotRange{.low = *value, .high = *value};
    range->low = std::min(range->low, *value);
    range->high = std::max(range->high, *value);
  };
  for (const PlotCurve& curve : curves) {
    include(curve.minimum);
    include(curve.maximum);
    include(curve.lowest);
    include(curve.highest);
  }
  return range;
}

double LeastRoom(Quantity quantity) { return quantity == Quantity::Temperature ? kLeastDegrees : kLeastRpm; }

/// @return whether so much less than the lowest value would be a fan that turns backwards
bool Backwards(const PlotRange& extremes, double less, Quantity quantity) {
  return quantity == Quantity::FanSpeed && extremes.low >= 0 && extremes.low < less;
}

PlotRange ValuesOf(const PlotRange& extremes, Quantity quantity) {
  const double missing = 2 * LeastRoom(quantity) - (extremes.high - extremes.low);
  if (missing <= 0) return extremes;
  const bool fromZero = Backwards(extremes, missing / 2, quantity);
  return {.low = fromZero ? 0 : extremes.low - missing / 2, .high = extremes.high + missing / 2};
}

PlotRange RangeOf(const PlotRange& extremes, Quantity quantity) {
  const double room = std::max((extremes.high - extremes.low) * kRoom, LeastRoom(quantity));
  const double high = extremes.high + room;
  // Below zero there is just room for the line.
  return {.low = Backwards(extremes, room, quantity) ? -kRoom * high : extremes.low - room, .high = high};
}

}  // namespace

std::vector<PlotPanel> PanelsOf(const TraceFile& trace, const TraceStatistics& statistics,
                                const std::vector<std::size_t>& columns) {
  std::vector<PlotPanel> panels;
  for (const Quantity quantity : {Quantity::Temperature, Quantity::FanSpeed}) {
    auto curves = CurvesOf(trace, statistics, columns, quantity);
    if (curves.empty()) continue;
    const std::optional<PlotRange> extremes = ExtremesOf(curves);
    const bool empty =
        std::all_of(curves.begin(), curves.end(), [](const PlotCurve& curve) { return !curve.highest.has_value(); });
    panels.push_back({.quantity = quantity,
                      .curves = std::move(curves),
                      .values = extremes ? ValuesOf(*extremes, quantity) : PlotRange{},
                      .range = extremes ? RangeOf(*extremes, quantity) : PlotRange{},
                      .scaled = extremes.has_value(),
                      .empty = empty});
  }
  return panels;
}

std::vector<TraceGap> StretchesOfOtherColumns(const TraceFile& trace) {
  constexpr std::chrono::milliseconds kHalfPeriod = std::chrono::seconds(30);
  std::vector<TraceGap> stretches;
  bool inside = false;
  for (const TraceRow& row : trace.rows) {
    const bool before = inside;
    inside = row.state == RowState::OtherColumns && ClockWasSet(row.time);
    if (!inside) continue;
    const UtcTime begin = row.time - kHalfPeriod, end = row.time + kHalfPeriod;
    if (before && Follows(stretches.back().end - kHalfPeriod, row.time)) {
      stretches.back().end = end;
    } else {
      stretches.push_back({.begin = begin, .end = end});
    }
  }
  return stretches;
}

}  // namespace clmctl
