/// @file
/// Curves of a plot: what they are called, how they look, and the numbers they are drawn from.
#pragma once

#include "TraceStatistics.h"

#include <string>
#include <vector>

namespace clmctl {

struct PlotCurve {
  std::size_t column = 0;  ///< of the trace
  std::string name;        ///< printable
  std::string colour;      ///< "#rrggbb"
  std::string dash;        ///< gnuplot's dash type
  std::size_t errors = 0;  ///< failed readings
  // In the axis' unit:
  std::optional<double> last;     ///< nothing when the newest reading failed
  std::optional<double> lowest;   ///< reading of the rows
  std::optional<double> highest;  ///< likewise
  std::optional<double> minimum;  ///< temperatures: since the service started; fans: in the rows
  std::optional<double> maximum;  ///< likewise
  std::string readings;           ///< data lines of time and value; an empty line breaks the curve
  std::string loneReadings;       ///< of those that have no neighbour to draw a line to
  std::string failures;           ///< data lines of the times of failed readings
};

/// What an axis shows.
struct PlotRange {
  double low = 0;
  double high = 1;
};

/// The curves that share an axis.
struct PlotPanel {
  Quantity quantity;
  std::vector<PlotCurve> curves;  ///< the highest last value first: in the order in which they end at the right edge
  PlotRange values;               ///< all readings and extremes, as wide at least as an axis can tell apart
  PlotRange range;                ///< all readings and extremes, with some room around
  bool scaled;                    ///< there is a value that gives the range a meaning
  bool empty;                     ///< the rows have no reading at all
};

/// @return the panels of the given columns: temperatures, fan speeds; one without a curve is left out
std::vector<PlotPanel> PanelsOf(const TraceFile& trace, const TraceStatistics& statistics,
                                const std::vector<std::size_t>& columns);
/// @return times of rows of other columns that follow each other
std::vector<TraceGap> StretchesOfOtherColumns(const TraceFile& trace);

}  // namespace clmctl
