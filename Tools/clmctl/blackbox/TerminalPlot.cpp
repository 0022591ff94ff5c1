#include "TerminalPlot.h"

#include "FileLines.h"
#include "GnuplotText.h"
#include "PlotAxis.h"
#include "PlotCurves.h"
#include "PlotLegend.h"

#include <algorithm>
#include <array>

namespace clmctl {
namespace {

constexpr std::size_t kLeastColumns = 50, kLeastRows = 20, kUsualColumns = 100, kUsualRows = 32;
/// Lines of title, notes and prompt.
constexpr std::size_t kOtherLines = 4;
constexpr std::size_t kLabelColumns = 8;  ///< before the vertical axis
constexpr std::size_t kRightColumns = 3;  ///< behind the plot: half of the last label
constexpr std::size_t kTimeRows = 3;      ///< below a frame's line: signs of the time axis, its labels of two lines
/// So many rows leave one to the marks.
constexpr std::size_t kRowsWithMarks = 6;
constexpr PlotMarks kMarks = {.failure = "x", .gap = "~", .otherColumns = "?", .clockSetBack = "<"};

/// A colour as gnuplot and as a terminal calls it.
struct TerminalColour {
  const char* name;
  const char* code;
};
constexpr std::array kColours = {
    TerminalColour{.name = "red", .code = "1;31"},   TerminalColour{.name = "green", .code = "1;32"},
    TerminalColour{.name = "cyan", .code = "22;36"}, TerminalColour{.name = "yellow", .code = "22;33"},
    TerminalColour{.name = "blue", .code = "1;34"},  TerminalColour{.name = "magenta", .code = "22;35"},
};

const TerminalColour& ColourOf(std::size_t curve) { return kColours[curve % kColours.size()]; }

/// Sensors are letters, fans are digits.
std::string LetterOf(Quantity quantity, std::size_t curve) {
  const bool sensor = quantity == Quantity::Temperature;
  return std::string(1, static_cast<char>(sensor ? 'A' + curve % 26 : '1' + curve % 9));
}

std::string Plain(std::string text, const Screen& screen) {
  if (screen.utf8) return text;
  for (char& c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) c = '?';
  }
  return text;
}

/// The panels on a canvas of characters.
class Canvas {
 public:
  Canvas(const TraceFile& trace, const TraceStatistics& statistics, const std::vector<PlotPanel>& panels,
         std::size_t columns, std::size_t rows, bool colours)
      : m_trace(trace),
        m_statistics(statistics),
        m_panels(panels),
        m_time(TimeAxisOf(statistics, (columns - kLabelColumns) / 9, OneColumnOf(columns))),
        m_columns(columns),
        m_rows(rows) {
    Line("set encoding utf8");
    Line("set terminal dumb noenhanced nofeed " + std::string(colours ? "ansi" : "mono") + " size " +
         std::to_string(columns) + "," + std::to_string(rows));
    Line("set multiplot\nset border 3\nset tics nomirror out\nunset key\nunset mxtics");
    Line("set lmargin at " + At(kLabelColumns, columns));
    Line("set rmargin at " + At(columns - 1 - kRightColumns, columns));
    Line("set xdata time\nset timefmt \"%s\"");
    Line("set xrange [" + GnuplotNumber(m_time.begin) + ":" + GnuplotNumber(m_time.end) + "]");
    Line("set xtics " + GnuplotNumber(m_time.step));
    for (std::size_t i = 0; i < panels.size(); ++i) Draw(i);
    Line("unset multiplot");
  }

  std::string Script() && { return std::move(m_script); }

 private:
  void Line(const std::string& text) { m_script += text + "\n"; }

  /// @return gnuplot's word for one of so many rows from the bottom, or columns from the left. A fifth more than the
  ///         whole number is this one however it is rounded.
  static std::string At(std::size_t index, std::size_t count) {
    return "screen " + GnuplotNumber((static_cast<double>(index) + 0.2) / static_cast<double>(count - 1), 6);
  }

  /// @return the part that a column is of what the rows span, when there is one free on each side
  static double OneColumnOf(std::size_t columns) {
    return 1.0 / static_cast<double>(columns - kLabelColumns - kRightColumns - 3);
  }

  /// Rows from the bottom.
  struct Place {
    std::size_t head;   ///< what the axis is about
    std::size_t top;    ///< the highest one of the plot
    std::size_t frame;  ///< the frame's lower line
  };

  Place PlaceOf(std::size_t index) const {
    const std::size_t boundary = m_rows * 2 / 5 - 1;
    const bool upper = index == 0, lowest = index + 1 == m_panels.size();
    return {.head = upper ? m_rows - 2 : boundary,
            .top = upper ? m_rows - 3 : boundary - 1,
            .frame = lowest ? kTimeRows : boundary + 2};
  }

  void Draw(std::size_t index) {
    const PlotPanel& panel = m_panels[index];
    const Place place = PlaceOf(index);
    const std::size_t rows = place.top - place.frame;
    const ValueAxis axis = ValueAxisOf(panel.values, rows, rows < kRowsWithMarks ? 1 : 2);
    Line("set tmargin at " + At(place.top, m_rows));
    Line("set bmargin at " + At(place.frame, m_rows));
    Line("set format x \"" + std::string(index + 1 == m_panels.size() ? m_time.format : "") + "\"");
    Line(std::string("set label 1 \"") + (panel.quantity == Quantity::Temperature ? "deg C" : "RPM") +
         "\" at screen 0," + At(place.head, m_rows));
    Line(std::string("set format y \"") + (panel.scaled ? "%g" : "") + "\"");
    Line("set yrange [" + GnuplotNumber(axis.low) + ":" + GnuplotNumber(axis.high) + "]");
    Line("set ytics " + GnuplotNumber(axis.firstLabel) + "," + GnuplotNumber(axis.step) + "," +
         GnuplotNumber(axis.lastLabel));
    std::string plots = "NaN notitle";
    for (std::size_t i = 0; i < panel.curves.size(); ++i) plots += Curve(panel, i);
    plots += Marks(panel, axis);
    Line("plot " + plots);
  }

  /// Points of one character.
  std::string Points(const std::string& data, const std::string& what, const std::string& letter,
                     const std::string& colour) {
    if (data.empty()) return "";
    const std::string name = "$data" + std::to_string(m_blocks++);
    Line(name + " << EOD\n" + data + "EOD");
    return ", \\\n  " + name + " using " + what + " with points pt \"" + letter + "\" lc rgb \"" + colour + "\"";
  }

  std::string Curve(const PlotPanel& panel, std::size_t index) {
    const PlotCurve& curve = panel.curves[index];
    return Points(curve.readings + curve.loneReadings, "1:2", LetterOf(panel.quantity, index), ColourOf(index).name);
  }

  /// @return a data line for each column of the canvas between two times
  std::string Times(UtcTime begin, UtcTime end) const {
    const double step = (m_time.end - m_time.begin) / static_cast<double>(m_columns);
    std::string data;
    for (double time = Seconds(begin) + step; time < Seconds(end); time += step) data += GnuplotNumber(time) + "\n";
    return data;
  }

  /// What was not read stands above the time axis.
  std::string Marks(const PlotPanel& panel, const ValueAxis& axis) {
    const std::string onAxis = "1:(" + GnuplotNumber(axis.lowestRow) + ")";
    std::string failures, gaps, others, setBack;
    for (const PlotCurve& curve : panel.curves) failures += curve.failures;
    for (const TraceGap& gap : m_statistics.gaps) gaps += Times(gap.begin, gap.end);
    for (const TraceGap& stretch : StretchesOfOtherColumns(m_trace)) others += Times(stretch.begin, stretch.end);
    for (const UtcTime time : m_statistics.clockSetBack) setBack += GnuplotNumber(Seconds(time)) + "\n";
    constexpr const char* kColour = "white";
    return Points(gaps, onAxis, kMarks.gap, kColour) + Points(others, onAxis, kMarks.otherColumns, kColour) +
           Points(setBack, onAxis, kMarks.clockSetBack, kColour) + Points(failures, onAxis, kMarks.failure, "red");
  }

  const TraceFile& m_trace;
  const TraceStatistics& m_statistics;
  const std::vector<PlotPanel>& m_panels;
  TimeAxis m_time;
  std::size_t m_columns;
  std::size_t m_rows;
  std::size_t m_blocks = 0;
  std::string m_script;
};

std::vector<std::string> LegendOf(const std::vector<PlotPanel>& panels, const Screen& screen) {
  std::vector<std::string> lines;
  for (const PlotPanel& panel : panels) {
    lines.push_back("  " + LegendHead(panel.curves, panel.quantity));
    for (std::size_t i = 0; i < panel.curves.size(); ++i) {
      const std::string letter = LetterOf(panel.quantity, i);
      const std::string sign =
          screen.colours ? "\x1b[" + std::string(ColourOf(i).code) + "m" + letter + "\x1b[0m" : letter;
      lines.push_back(sign + " " + Plain(LegendLine(panel.curves[i], panel.curves, panel.quantity), screen));
    }
  }
  return lines;
}

std::size_t Room(std::size_t available, std::size_t usual, std::size_t least) {
  return available == Screen::kUnlimited ? usual : std::max(available, least);
}

}  // namespace

TerminalPlot::TerminalPlot(const TraceFile& trace, const TraceStatistics& statistics,
                           const std::vector<std::size_t>& columns, const Screen& screen)
    : m_span(SpanLine(statistics)) {
  const std::vector<PlotPanel> panels = PanelsOf(trace, statistics, columns);
  m_legend = LegendOf(panels, screen);
  for (const std::string& note : NotesOf(statistics, columns, kMarks)) m_legend.push_back(note);
  const std::size_t taken = m_legend.size() + kOtherLines;
  const std::size_t rows = Room(screen.rows, kUsualRows, kLeastRows);
  m_script = Canvas(trace, statistics, panels, Room(screen.columns, kUsualColumns, kLeastColumns),
                    screen.rows == Screen::kUnlimited ? rows : std::max(rows - std::min(rows, taken), kLeastRows),
                    screen.colours)
                 .Script();
}

std::string TerminalPlot::Text(const std::string& title, const std::string& panels) const {
  std::string text = Printable(title) + "\n" + m_span + "\n";
  for (const std::string_view line : FileLines(panels).lines) {
    std::string drawn(line);
    std::erase_if(drawn, [](char c) { return c == '\f' || c == '\r'; });
    text += WithoutTrailingBlanks(drawn) + "\n";
  }
  for (const std::string& line : m_legend) text += WithoutTrailingBlanks(line) + "\n";
  return text;
}

}  // namespace clmctl
