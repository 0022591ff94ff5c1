#include "TracePlot.h"

#include "GnuplotText.h"
#include "PlotColumns.h"
#include "TraceSample.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

std::string Script(const TraceFile& trace, PictureFormat format = PictureFormat::Png) {
  return TracePlotScript(
      trace, StatisticsOf(trace),
      {.format = format, .size = {.width = 800, .height = 600}, .title = "board", .columns = AllColumns(trace)});
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(GnuplotString, LeavesNothingThatMeansSomethingToGnuplot) {
  std::string all;
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
  const std::string constant = GnuplotString(all);
  EXPECT_EQ(constant.front(), '"');
  EXPECT_EQ(constant.back(), '"');
  const std::string_view inside = std::string_view(constant).substr(1, constant.size() - 2);
  EXPECT_EQ(inside.find_first_not_of("\\ .,:-0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"),
            std::string_view::npos);
}

TEST(GnuplotString, WritesADigitBehindACodeByItsCode) { EXPECT_EQ(GnuplotString("a(12"), "\"a\\050\\061\\062\""); }

TEST(GnuplotString, HasNoLineEnds) { EXPECT_EQ(GnuplotString("a\nb"), "\"a\\134x0ab\""); }

TEST(TracePlot, ShadesAGapInEachPanel) {
  const std::string script = Script(Trace({Row(5, "1\t2\t3\t"), Row(20, "1\t2\t3\t")}));
  EXPECT_EQ(Count(script, "set object rectangle from 1709820309.042, graph 0 to 1709821209.042"), 2u);
}

TEST(TracePlot, MarksFailedReadingsAtTheBottom) {
  const std::string script = Script(Trace({Row(5, "1\terror\t3\t"), Row(6, "1\t2\t3\t")}));
  EXPECT_NE(script.find("$failures1 << EOD\n1709820309.042\nEOD"), std::string::npos);
  EXPECT_EQ(Count(script, "with points pt 2"), 1u);
}

TEST(TracePlot, DrawsTheExtremesOfFewSensors) {
  EXPECT_NE(Script(Trace({Row(5, "1\t2\t3\t")})).find("43.500 with lines"), std::string::npos);
}

TEST(TracePlot, SaysThatAPanelIsEmpty) {
  EXPECT_EQ(Count(Script(Trace({Row(5, "error\terror\terror\t")})), "no readings"), 2u);
}

TEST(TracePlot, IsLargerForMoreCurves) {
  EXPECT_GT(ReadableSize(34, 3).height, ReadableSize(3, 3).height);
  EXPECT_LE(ReadableSize(100000, 100000).height, 4000u);
}

TEST(TracePlot, OfNamesFromAFileIsAsLongAsItsLines) {
  TraceFile trace = Trace({Row(5, "1\t2\t3\t")});
  const std::size_t lines = Count(Script(trace), "\n");
  trace.columns[0].name = "\n`reboot`\n! reboot\nsystem(\"reboot\")";
  const std::string script = Script(trace);
  EXPECT_EQ(Count(script, "\n"), lines);
  EXPECT_EQ(script.find('`'), std::string::npos);
  EXPECT_EQ(script.find("system("), std::string::npos);
}

}  // namespace
}  // namespace clmctl
