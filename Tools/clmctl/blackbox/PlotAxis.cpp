#include "PlotAxis.h"

#include <algorithm>
#include <array>

namespace clmctl {
namespace {

constexpr double kMinute = 60, kHour = 3600, kDay = 86400;
/// Labels may be so far apart.
constexpr std::array kSteps = {kMinute,      2 * kMinute, 5 * kMinute, 10 * kMinute, 15 * kMinute,
                               30 * kMinute, kHour,       2 * kHour,   3 * kHour,    6 * kHour,
                               12 * kHour,   kDay,        2 * kDay,    7 * kDay,     30 * kDay};
/// What a trace shows on each side of a single row, or where it has none.
constexpr double kSmallestMargin = 90;

}  // namespace

double Seconds(UtcTime time) { return static_cast<double>(time.time_since_epoch().count()) / 1000; }

TimeAxis TimeAxisOf(const TraceStatistics& statistics, std::size_t mostLabels) {
  const double first = statistics.first ? Seconds(*statistics.first) : 0;
  const double last = statistics.last ? Seconds(*statistics.last) : kHour;
  const double margin = std::max((last - first) * 0.01, kSmallestMargin);
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

}  // namespace clmctl
