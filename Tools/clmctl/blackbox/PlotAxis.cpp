#include "PlotAxis.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace clmctl {
namespace {

constexpr double kMinute = 60, kHour = 3600, kDay = 86400;
/// Labels may be so far apart.
constexpr std::array kSteps = {kMinute,      2 * kMinute, 5 * kMinute, 10 * kMinute, 15 * kMinute,
                               30 * kMinute, kHour,       2 * kHour,   3 * kHour,    6 * kHour,
                               12 * kHour,   kDay,        2 * kDay,    7 * kDay,     30 * kDay};
/// What a trace shows on each side of a single row, or where it has none.
constexpr double kSmallestMargin = 90;
/// The highest label's share of a row below the top: no rounding takes it out of the panel.
constexpr double kBelowTop = 0.2;

/// @return the next longer one of the steps 1, 2, 5, 10, 20, ... and 0.5, 0.2, ...
double LongerStep(double step) {
  const double power = std::pow(10, std::floor(std::log10(step * 1.001)));
  return step < 1.5 * power ? 2 * power : step < 3 * power ? 5 * power : 10 * power;
}

double StepsBetween(const PlotRange& values, double step) {
  return std::ceil(values.high / step) - std::floor(values.low / step);
}

}  // namespace

double Seconds(UtcTime time) { return static_cast<double>(time.time_since_epoch().count()) / 1000; }

TimeAxis TimeAxisOf(const TraceStatistics& statistics, std::size_t mostLabels, double leastMargin) {
  const double first = statistics.first ? Seconds(*statistics.first) : 0;
  const double last = statistics.last ? Seconds(*statistics.last) : kHour;
  const double margin = std::max((last - first) * leastMargin, kSmallestMargin);
  TimeAxis axis{.begin = first - margin, .end = last + margin, .step = 0, .format = "%H:%M", .label = "time (UTC)"};
  const double span = axis.end - axis.begin;
  const double most = static_cast<double>(std::max<std::size_t>(mostLabels, 2));
  const auto* const step =
      std::find_if(kSteps.begin(), kSteps.end(), [&](double candidate) { return span / candidate <= most; });
  axis.step = step != kSteps.end() ? *step : span / most;
  if (!statistics.first) {
    axis.format = "";
    return axis;
  }
  const std::string firstDay = UtcSeconds(*statistics.first).substr(0, 10);
  const std::string lastDay = UtcSeconds(*statistics.last).substr(0, 10);
  if (firstDay != lastDay) {
    axis.format = "%d %b\\n%H:%M";
    axis.label += ", " + firstDay + " to " + lastDay;
  } else {
    axis.label += ", " + firstDay;
  }
  return axis;
}

ValueAxis ValueAxisOf(const PlotRange& values, std::size_t rows, std::size_t below) {
  const auto room = static_cast<double>(rows - below);
  // Two of three rows may have a label. With values on both sides of it, zero always has one.
  const double most = std::max(std::floor(room * 2 / 3), values.low < 0 && values.high > 0 ? 2.0 : 1.0);
  double step = std::pow(10, std::floor(std::log10((values.high - values.low) / most)));
  while (StepsBetween(values, step) > most) step = LongerStep(step);
  const double first = std::floor(values.low / step) * step, last = std::ceil(values.high / step) * step;
  const double row = (last - first) / (room - kBelowTop);
  const double low = first - static_cast<double>(below) * row;
  return {.low = low,
          .high = last + kBelowTop * row,
          .lowestRow = low + row,
          .firstLabel = first,
          .lastLabel = last,
          .step = step};
}

}  // namespace clmctl
