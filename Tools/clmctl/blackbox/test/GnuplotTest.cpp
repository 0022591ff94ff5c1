#include "Gnuplot.h"

#include "CommandError.h"
#include "GnuplotText.h"
#include "InstalledGnuplot.h"
#include "PlotColumns.h"
#include "TerminalPlot.h"
#include "TracePlot.h"
#include "TraceSample.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace clmctl {
namespace {

/// Runs the real gnuplot.
class Gnuplot : public testing::Test {
 protected:
  void SetUp() override {
    if (!GnuplotInstalled()) GTEST_SKIP() << "gnuplot is not installed";
  }

  static std::string Draw(const TraceFile& trace, PictureFormat format) {
    return RunGnuplot(TracePlotScript(
        trace, StatisticsOf(trace),
        {.format = format, .size = {.width = 800, .height = 600}, .title = "board", .columns = AllColumns(trace)}));
  }
};

const std::vector<std::string> kRows = {Row(1, "41500\t1\t3000\t"),     Row(2, "41000\terror\t3100\t"),
                                        Row(3, "40000\t1\terror\t"),    Row(4, "1\t"),
                                        Row(20, "40000\t1500\t3000\t"), Row(10, "41000\t1500\t3000\t")};

TEST_F(Gnuplot, DrawsAPng) {
  const std::string picture = Draw(Trace(kRows), PictureFormat::Png);
  EXPECT_EQ(picture.substr(0, 8), "\x89PNG\r\n\x1a\n");
  EXPECT_GT(picture.size(), 5000u);
}

TEST_F(Gnuplot, DrawsAnSvgWithTheNamesOfItsCurves) {
  const std::string picture = Draw(Trace(kRows), PictureFormat::Svg);
  EXPECT_NE(picture.find("<svg"), std::string::npos);
  EXPECT_NE(picture.find("KEL_MCU"), std::string::npos);
  EXPECT_NE(picture.find("</svg>"), std::string::npos);
}

TEST_F(Gnuplot, DrawsOneRow) { EXPECT_FALSE(Draw(Trace({Row(1, "1\t2\t3\t")}), PictureFormat::Png).empty()); }

TEST_F(Gnuplot, DrawsATraceWithoutReadings) {
  EXPECT_NE(Draw(Trace({Row(1, "error\terror\terror\t")}), PictureFormat::Svg).find("no readings"), std::string::npos);
}

TEST_F(Gnuplot, DrawsOnATerminal) {
  const TraceFile trace = Trace(kRows);
  const TerminalPlot plot(trace, StatisticsOf(trace), AllColumns(trace), {});
  const std::string text = plot.Text("board", RunGnuplot(plot.Script()));
  for (const char* const part : {"board\n", "deg C", "RPM", " A ", " x ", "~", "14:0"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << text;
  }
  EXPECT_EQ(text.find('\f'), std::string::npos);
}

TEST_F(Gnuplot, ShowsHostileNamesAsTheyAreAndRunsNoneOfThem) {
  char folder[] = "/tmp/hostile_XXXXXX";
  ASSERT_NE(mkdtemp(folder), nullptr);
  const std::string touch = "touch " + std::string(folder) + "/ran";
  for (const std::string& name : {"`" + touch + "`", "\"; system(\"" + touch + "\") #",
                                  "'; ! " + touch + "\n! " + touch, "$(" + touch + ")", "@" + touch, "| " + touch,
                                  std::string("\\"), std::string("{/*9 a}^b_c&{d}~e%s%n%d"), std::string("\\050a12")}) {
    TraceFile trace = Trace(kRows);
    trace.columns[0].name = name;
    EXPECT_FALSE(Draw(trace, PictureFormat::Png).empty()) << name;
    EXPECT_NE(Draw(trace, PictureFormat::Svg).find("</svg>"), std::string::npos) << name;
    EXPECT_TRUE(std::filesystem::is_empty(folder)) << name;
  }
  std::filesystem::remove_all(folder);
}

TEST_F(Gnuplot, ShowsMarkupAsText) {
  TraceFile trace = Trace(kRows);
  trace.columns[0].name = "<b>{/Bold x}_2 100%";
  EXPECT_NE(Draw(trace, PictureFormat::Svg).find("&lt;b>{/Bold x}_2 100%"), std::string::npos);
}

TEST_F(Gnuplot, ThatRefusesItsScriptSaysWhy) {
  try {
    RunGnuplot("set nonsense\n");
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Unreachable);
    EXPECT_NE(std::string(error.what()).find("nrecognized"), std::string::npos) << error.what();
  }
}

TEST(MissingGnuplot, SaysWhatToInstall) {
  setenv("PATH", "/nonexistent", 1);
  try {
    RunGnuplot("plot x\n");
    FAIL();
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Code(), ExitCode::Unreachable);
    EXPECT_NE(std::string(error.what()).find("apt-get install gnuplot-nox"), std::string::npos);
  }
}

}  // namespace
}  // namespace clmctl
