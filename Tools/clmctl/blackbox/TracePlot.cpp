#include "TracePlot.h"

#include "GnuplotText.h"
#include "PlotAxis.h"
#include "PlotCurves.h"
#include "PlotLegend.h"
#include "Screen.h"

#include <algorithm>

namespace clmctl {
namespace {

constexpr unsigned kLegendLine = 16;    ///< pixels
constexpr unsigned kLegendChar = 7;     ///< pixels
constexpr unsigned kLegendSample = 60;  ///< pixels of a line's sample and the space around it
constexpr unsigned kTop = 64, kBottom = 104, kBetween = 40, kLeft = 76, kRight = 16;  ///< pixels
/// Most curves whose extremes are drawn as lines of their own.
constexpr std::size_t kCurvesWithExtremes = 4;
constexpr std::size_t kTimeWidth = 75;  ///< pixels of a label of the time axis and the space around it
/// Up to so many rows, each reading has its dot.
constexpr std::size_t kMostDottedRows = 60;
/// Errors of different curves at the same minute are set apart by so many steps.
constexpr std::size_t kErrorLevels = 5;

/// A panel's place, as fractions of the picture from its lower left corner.
struct Place {
  double bottom, top;
};

std::string At(double value) { return "screen " + GnuplotNumber(value); }

/// Data of a curve as gnuplot's script names it.
struct Block {
  const char* name;
  std::string PlotCurve::*data;
};
constexpr Block kReadings = {.name = "$readings", .data = &PlotCurve::readings};
constexpr Block kLoneReadings = {.name = "$lone", .data = &PlotCurve::loneReadings};
constexpr Block kFailures = {.name = "$failures", .data = &PlotCurve::failures};
constexpr Block kBlocks[] = {kReadings, kLoneReadings, kFailures};

class PlotScript {
 public:
  PlotScript(const TraceFile& trace, const TraceStatistics& statistics, const PictureSettings& settings)
      : m_trace(trace),
        m_statistics(statistics),
        m_settings(settings),
        m_panels(PanelsOf(trace, statistics, settings.columns)),
        m_time(TimeAxisOf(statistics, PlotWidth() / kTimeWidth)) {
    Arrange();
  }

  std::string Text() {
    Terminal();
    Data();
    Title();
    for (std::size_t i = 0; i < m_panels.size(); ++i) DrawPanel(i);
    Line("unset multiplot");
    return std::move(m_script);
  }

 private:
  void Line(const std::string& text) { m_script += text + "\n"; }

  template <typename Number>
  double X(Number pixels) const {
    return static_cast<double>(pixels) / m_settings.size.width;
  }
  template <typename Number>
  double Y(Number pixels) const {
    return static_cast<double>(pixels) / m_settings.size.height;
  }

  /// Gives each panel its share of the height.
  void Arrange() {
    const double bottom = Y(kBottom), top = 1 - Y(kTop), between = Y(kBetween);
    m_places = {{.bottom = bottom, .top = top}};
    if (m_panels.size() != 2) return;
    const double room = top - bottom - between;
    const double lower = std::max(room * 0.3, Y(kLegendLine * (m_panels[1].curves.size() + 3)));
    const double boundary = bottom + std::min(lower, room / 2);
    m_places = {{.bottom = boundary + between, .top = top}, {.bottom = bottom, .top = boundary}};
  }

  void Terminal() {
    const bool png = m_settings.format == PictureFormat::Png;
    Line("set encoding utf8");
    Line(std::string("set terminal ") + (png ? "pngcairo" : "svg") + " noenhanced size " +
         std::to_string(m_settings.size.width) + "," + std::to_string(m_settings.size.height) +
         " font \"DejaVu Sans,10\" background \"#ffffff\"" + (png ? "" : " dynamic"));
    Line("set multiplot");
    Line("set border 3 lc rgb \"#888888\"");
    Line("set tics nomirror out textcolor rgb \"#333333\"");
    Line("set grid lc rgb \"#dddddd\" lt 1 lw 0.5");
    Line("unset mxtics");
    Line("set lmargin at " + At(X(kLeft)));
    Line("set rmargin at " + At(1 - X(LegendWidth())));
  }

  void Data() {
    for (const PlotPanel& panel : m_panels) {
      for (const PlotCurve& curve : panel.curves) {
        for (const Block& block : kBlocks) Line(Name(block, curve) + " << EOD\n" + curve.*block.data + "EOD");
      }
    }
  }

  static std::string Name(const Block& block, const PlotCurve& curve) {
    return block.name + std::to_string(curve.column);
  }

  void Label(const std::string& text, double x, double y, const std::string& look) {
    Line("set label " + GnuplotString(text) + " at " + At(x) + "," + At(y) + " " + look);
  }

  void Title() {
    // A family of SVG has no style in its name.
    const char* const bold = m_settings.format == PictureFormat::Png ? ":Bold" : "";
    Label(m_settings.title, X(kLeft), 1 - Y(20),
          "left font \"DejaVu Sans" + std::string(bold) + ",13\" textcolor rgb \"#222222\"");
    Label(SpanLine(m_statistics), X(kLeft), 1 - Y(42), "left textcolor rgb \"#555555\"");
    const std::string notes = Notes();
    if (!notes.empty()) Label(notes, X(kLeft), Y(16), "left font \",9\" textcolor rgb \"#555555\"");
  }

  std::string Notes() const {
    const bool temperatures = m_panels[0].quantity == Quantity::Temperature;
    const bool lines = temperatures && m_panels[0].scaled && m_panels[0].curves.size() <= kCurvesWithExtremes;
    std::string notes;
    if (temperatures) notes = "min, max of sensors: since the service started" + std::string(lines ? " (dotted)" : "");
    for (const std::string& note :
         NotesOf(m_statistics, m_settings.columns,
                 {.failure = "x", .gap = "grey", .otherColumns = "ochre", .clockSetBack = "dashed"})) {
      notes += (notes.empty() ? "" : "   ") + note;
    }
    return notes;
  }

  std::size_t LegendWidth() const {
    std::size_t chars = 0;
    for (const PlotPanel& panel : m_panels) chars = std::max(chars, Width(LegendHead(panel.curves, panel.quantity)));
    return chars * kLegendChar + kLegendSample + kRight;
  }

  /// @return pixels between the axes' ends
  std::size_t PlotWidth() const {
    const std::size_t taken = kLeft + LegendWidth();
    return m_settings.size.width > taken ? m_settings.size.width - taken : 0;
  }

  void TimeTics(bool labels) {
    Line("set xdata time");
    Line("set timefmt \"%s\"");
    Line("set xrange [" + GnuplotNumber(m_time.begin) + ":" + GnuplotNumber(m_time.end) + "]");
    Line("set xtics " + GnuplotNumber(m_time.step));
    Line(std::string("set format x \"") + (labels ? m_time.format : "") + "\"");
    if (labels) {
      Line("set xlabel " + GnuplotString(m_time.label) + " textcolor rgb \"#333333\"");
    } else {
      Line("unset xlabel");
    }
  }

  void Shade(UtcTime begin, UtcTime end, const char* colour, const char* mark) {
    const std::string from = GnuplotNumber(Seconds(begin)), to = GnuplotNumber(Seconds(end));
    Line("set object rectangle from " + from + ", graph 0 to " + to + ", graph 1 behind fc rgb \"" + colour +
         "\" fs solid noborder");
    Line("set object rectangle from " + from + ", graph -0.008 to " + to + ", graph 0.008 front fc rgb \"" + mark +
         "\" fs solid noborder");
  }

  void Shades() {
    Line("unset object");
    for (const TraceGap& gap : m_statistics.gaps) Shade(gap.begin, gap.end, "#f0f0f0", "#888888");
    for (const TraceGap& stretch : StretchesOfOtherColumns(m_trace)) {
      Shade(stretch.begin, stretch.end, "#faf1dc", "#c8a040");
    }
    Line("unset arrow");
    for (const UtcTime back : m_statistics.clockSetBack) {
      const std::string at = GnuplotNumber(Seconds(back));
      Line("set arrow from " + at + ", graph 0 to " + at + ", graph 1 nohead dt 2 lc rgb \"#888888\"");
    }
  }

  void DrawPanel(std::size_t index) {
    const PlotPanel& panel = m_panels[index];
    const Place& place = m_places[index];
    const bool temperatures = panel.quantity == Quantity::Temperature;
    Line("set tmargin at " + At(place.top));
    Line("set bmargin at " + At(place.bottom));
    TimeTics(index + 1 == m_panels.size());
    Shades();
    Label(temperatures ? "temperature (°C)" : "fan speed (RPM)", X(16), (place.bottom + place.top) / 2,
          "center rotate by 90 textcolor rgb \"#333333\"");
    Line(std::string("set format y \"") + (panel.scaled ? "%g" : "") + "\"");
    if (panel.empty) {
      Line("set label \"no readings\" at graph 0.5, graph 0.5 center font \",12\" textcolor rgb \"#888888\"");
    }
    Line("set yrange [" + GnuplotNumber(panel.range.low) + ":" + GnuplotNumber(panel.range.high) + "]");
    Line("set key at " + At(1 - X(LegendWidth() - 8)) + "," + At(place.top + Y(8)) +
         " left top Left reverse noenhanced samplen 2.5 spacing 1 font \"DejaVu Sans Mono,8.5\"");
    Plot(panel);
    Line("unset label");
  }

  void Plot(const PlotPanel& panel) {
    std::string plots = "NaN with points ps 0 title " + GnuplotString(LegendHead(panel.curves, panel.quantity));
    const auto add = [&plots](const std::string& plot) { plots += ", \\\n  " + plot; };
    const std::string style = m_statistics.good > kMostDottedRows ? "lines" : "linespoints pt 7 ps 0.6";
    std::size_t errorLevel = 0;
    for (const PlotCurve& curve : panel.curves) {
      const std::string colour = " lc rgb \"" + curve.colour + "\" ";
      add((curve.readings.empty() ? "NaN" : Name(kReadings, curve) + " using 1:2") + " with " + style + " lw 1.6 dt " +
          curve.dash + colour + "title " + GnuplotString(LegendLine(curve, panel.curves, panel.quantity)));
      if (!curve.loneReadings.empty()) {
        add(Name(kLoneReadings, curve) + " using 1:2 with points pt 7 ps 0.6" + colour + "notitle");
      }
      if (!curve.failures.empty()) {
        add(Name(kFailures, curve) + " using 1:(" + GnuplotNumber(ErrorHeight(panel, errorLevel++)) +
            ") with points pt 2 ps 0.5 lw 1.2" + colour + "notitle");
      }
      if (panel.quantity != Quantity::Temperature || panel.curves.size() > kCurvesWithExtremes) continue;
      for (const std::optional<double> extreme : {curve.minimum, curve.maximum}) {
        if (extreme) add(GnuplotNumber(*extreme) + " with lines lw 1 dt 3" + colour + "notitle");
      }
    }
    Line("plot " + plots);
  }

  /// @return where failures of a curve are marked: just above the axis, those of several curves above each other
  static double ErrorHeight(const PlotPanel& panel, std::size_t level) {
    const double step = (panel.range.high - panel.range.low) * 0.016;
    return panel.range.low + step * (1 + static_cast<double>(level % kErrorLevels));
  }

  const TraceFile& m_trace;
  const TraceStatistics& m_statistics;
  const PictureSettings& m_settings;
  std::vector<PlotPanel> m_panels;
  TimeAxis m_time;
  std::vector<Place> m_places;  ///< of the panels
  std::string m_script;
};

}  // namespace

PictureSize ReadableSize(std::size_t sensors, std::size_t fans) {
  const std::size_t legend = (sensors + 3) * kLegendLine;
  const std::size_t lower = std::max<std::size_t>((fans + 3) * kLegendLine, legend * 3 / 7);
  const std::size_t height = legend + (fans == 0 ? 0 : lower + kBetween) + kTop + kBottom;
  return {.width = 1400, .height = static_cast<unsigned>(std::clamp<std::size_t>(height, 800, 4000))};
}

std::string TracePlotScript(const TraceFile& trace, const TraceStatistics& statistics,
                            const PictureSettings& settings) {
  return PlotScript(trace, statistics, settings).Text();
}

}  // namespace clmctl
