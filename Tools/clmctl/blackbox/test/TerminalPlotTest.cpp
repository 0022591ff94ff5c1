#include "TerminalPlot.h"

#include "FileLines.h"
#include "Gnuplot.h"
#include "InstalledGnuplot.h"
#include "PlotColumns.h"
#include "TraceSample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace clmctl {
namespace {

TEST(TerminalPlot, FitsItsTerminal) {
  const TraceFile trace = Trace({Row(5, "1\t2\t3\t"), Row(6, "1\t2\t3\t")});
  const TerminalPlot plot(trace, StatisticsOf(trace), AllColumns(trace), {.columns = 120, .rows = 50});
  EXPECT_NE(plot.Script().find("size 120,41"), std::string::npos) << plot.Script();
}

TEST(TerminalPlot, GivesEachCurveACharacter) {
  const TraceFile trace = Trace({Row(5, "50000\t2\t3\t")});
  const TerminalPlot plot(trace, StatisticsOf(trace), AllColumns(trace), {});
  const std::string text = plot.Text("board", "");
  EXPECT_NE(text.find("\nA KEL "), std::string::npos) << text;
  EXPECT_NE(text.find("\nB KEL_MCU "), std::string::npos);
  EXPECT_NE(text.find("\n1 FAN_1 "), std::string::npos);
  EXPECT_NE(plot.Script().find("pt \"A\""), std::string::npos);
}

TEST(TerminalPlot, HasNoColoursUnlessTheTerminalHas) {
  const TraceFile trace = Trace({Row(5, "50000\t2\t3\t")});
  const TerminalPlot plain(trace, StatisticsOf(trace), AllColumns(trace), {});
  EXPECT_EQ(plain.Text("board", "").find('\x1b'), std::string::npos);
  EXPECT_NE(plain.Script().find(" mono "), std::string::npos);
  const TerminalPlot coloured(trace, StatisticsOf(trace), AllColumns(trace), {.colours = true});
  EXPECT_NE(coloured.Text("board", "").find("\x1b[1;31mA\x1b[0m"), std::string::npos);
  EXPECT_NE(coloured.Script().find(" ansi "), std::string::npos);
}

TEST(TerminalPlot, IsAsciiWhereTheTerminalIs) {
  TraceFile trace = Trace({Row(5, "50000\t2\t3\t")});
  trace.columns[0].name = "caf\xc3\xa9";
  const TerminalPlot plot(trace, StatisticsOf(trace), AllColumns(trace), {.utf8 = false});
  const std::string text = plot.Text("board", "");
  EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
}

TEST(TerminalPlot, MarksAGapOfYearsWithoutADataLineForEachMinute) {
  const TraceFile trace = Trace({"2010-03-07T14:05:09.042Z\t1\t2\t3\t\n", "2035-03-07T14:05:09.042Z\t1\t2\t3\t\n"});
  const TerminalPlot plot(trace, StatisticsOf(trace), AllColumns(trace), {});
  EXPECT_LT(std::count(plot.Script().begin(), plot.Script().end(), '\n'), 400);
}

/// A panel as it stands on the terminal.
struct DrawnPanel {
  std::vector<std::string> rows;  ///< from the vertical axis on, without the frame's line
  std::string frame;              ///< the frame's lower line
  std::vector<double> labels;     ///< of the vertical axis, the highest first
};

DrawnPanel PanelBelow(const std::string& head, const std::string& text) {
  DrawnPanel panel;
  std::vector<std::string> lines;
  bool inside = false;
  for (const std::string_view line : FileLines(text).lines) {
    if (line == head) {
      inside = true;
    } else if (inside) {
      lines.emplace_back(line);
      if (line.find("----") != std::string_view::npos) break;
    }
  }
  const std::size_t axis = lines.empty() ? std::string::npos : lines.back().find("+----");
  if (axis == std::string::npos) return panel;
  panel.frame = lines.back().substr(axis);
  for (const std::string& line : lines) {
    const std::string before = line.substr(0, std::min(axis, line.size()));
    if (before.find_first_of("0123456789") != std::string::npos) panel.labels.push_back(std::stod(before));
    if (&line != &lines.back()) panel.rows.push_back(line.size() > axis ? line.substr(axis) : "");
  }
  return panel;
}

/// @return whether the panel shows @p sign, beside the frame only
bool Shows(const DrawnPanel& panel, char sign) {
  const bool onFrame = panel.frame.find(sign) != std::string::npos ||
                       std::any_of(panel.rows.begin(), panel.rows.end(),
                                   [sign](const std::string& row) { return !row.empty() && row.front() == sign; });
  const bool shown = std::any_of(panel.rows.begin(), panel.rows.end(),
                                 [sign](const std::string& row) { return row.find(sign, 1) != std::string::npos; });
  return shown && !onFrame;
}

/// The real gnuplot's drawing for terminals of many sizes.
class TerminalPlotSize : public testing::TestWithParam<Screen> {
 protected:
  void SetUp() override {
    if (!GnuplotInstalled()) GTEST_SKIP() << "gnuplot is not installed";
  }

  static std::string Draw(const std::vector<std::string>& rows) {
    const TraceFile trace = Trace(rows);
    const TerminalPlot plot(trace, StatisticsOf(trace), AllColumns(trace), GetParam());
    return plot.Text("board", RunGnuplot(plot.Script()));
  }
};

TEST_P(TerminalPlotSize, ShowsAFanThatIsStuck) {
  std::vector<std::string> rows;
  for (int minute = 0; minute < 60; ++minute) rows.push_back(Row(minute, "41500\t39000\t0\t"));
  const std::string text = Draw(rows);
  EXPECT_TRUE(Shows(PanelBelow("RPM", text), '1')) << text;
}

TEST_P(TerminalPlotSize, HasNoReadingOnTheFrame) {
  for (const char* const values : {"43500\t39000\t3000\t", "41000\t-40000\t99999\t", "39000\t100000\t1\t"}) {
    const std::string text = Draw({Row(1, values), Row(2, values), Row(3, values)});
    EXPECT_TRUE(Shows(PanelBelow("deg C", text), 'A')) << text;
    EXPECT_TRUE(Shows(PanelBelow("deg C", text), 'B')) << text;
    EXPECT_TRUE(Shows(PanelBelow("RPM", text), '1')) << text;
  }
}

TEST_P(TerminalPlotSize, LabelsWhatIsAboveAndBelowAllReadings) {
  const std::string text = Draw({Row(1, "43500\t39000\t0\t"), Row(2, "43500\t24100\t3150\t")});
  const DrawnPanel temperatures = PanelBelow("deg C", text), fans = PanelBelow("RPM", text);
  ASSERT_GE(temperatures.labels.size(), 2u) << text;
  ASSERT_GE(fans.labels.size(), 2u) << text;
  EXPECT_GE(temperatures.labels.front(), 43.5) << text;
  EXPECT_LE(temperatures.labels.back(), 24.1) << text;
  EXPECT_GE(fans.labels.front(), 3150) << text;
  EXPECT_EQ(fans.labels.back(), 0) << text;
}

TEST_P(TerminalPlotSize, KeepsItsMarksApartFromReadingsWhereThereIsRoom) {
  const std::string text = Draw({Row(1, "40000\t39000\t0\t"), Row(2, "error\t39000\t0\t"), Row(3, "1\t39000\t0\t")});
  const DrawnPanel panel = PanelBelow("deg C", text);
  EXPECT_TRUE(Shows(panel, 'x')) << text;
  for (const std::string& row : panel.rows) {
    EXPECT_FALSE(row.find('x') != std::string::npos && row.find('B') != std::string::npos) << text;
  }
}

constexpr Screen kSizes[] = {{},
                             {.columns = 50, .rows = 20},
                             {.columns = 60, .rows = 40},
                             {.columns = 79, .rows = 33},
                             {.columns = 80, .rows = 24},
                             {.columns = 100, .rows = 37},
                             {.columns = 137, .rows = 47},
                             {.columns = 200, .rows = 80}};

INSTANTIATE_TEST_SUITE_P(Terminals, TerminalPlotSize, testing::ValuesIn(kSizes), [](const auto& test) {
  if (test.param.rows == Screen::kUnlimited) return std::string("AFile");
  return std::to_string(test.param.columns) + "x" + std::to_string(test.param.rows);
});

}  // namespace
}  // namespace clmctl
