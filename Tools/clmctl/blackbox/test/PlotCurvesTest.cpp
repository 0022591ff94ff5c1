#include "PlotCurves.h"

#include "PlotAxis.h"
#include "PlotColumns.h"
#include "PlotLegend.h"
#include "TraceSample.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace clmctl {
namespace {

constexpr PlotMarks kMarks = {.failure = "x", .gap = "~", .otherColumns = "?", .clockSetBack = "<"};

std::vector<PlotPanel> PanelsOf(const std::vector<std::string>& rows) {
  const TraceFile trace = Trace(rows);
  return PanelsOf(trace, StatisticsOf(trace), AllColumns(trace));
}

std::size_t Lines(const std::string& data) {
  return static_cast<std::size_t>(std::count(data.begin(), data.end(), '\n'));
}

TEST(PlotPanels, AreTemperaturesAndFanSpeeds) {
  const auto panels = PanelsOf({Row(5, "41500\t40000\t3000\t")});
  ASSERT_EQ(panels.size(), 2u);
  EXPECT_EQ(panels[0].curves.size(), 2u);
  EXPECT_EQ(panels[1].curves.size(), 1u);
}

TEST(PlotPanels, WithoutACurveAreLeftOut) {
  const TraceFile trace = Trace({});
  EXPECT_EQ(PanelsOf(trace, StatisticsOf(trace), {2}).size(), 1u);
  EXPECT_TRUE(PanelsOf(trace, StatisticsOf(trace), {}).empty());
}

TEST(PlotPanels, WithoutAReadingSaySo) { EXPECT_TRUE(PanelsOf({Row(5, "1\t2\terror\t")}).at(1).empty); }

TEST(PlotPanels, HaveTheHighestLastValueFirst) {
  const auto panels = PanelsOf({Row(5, "41500\t50000\t3000\t")});
  EXPECT_EQ(panels.at(0).curves.at(0).name, "KEL_MCU");
  EXPECT_EQ(panels.at(0).curves.at(1).name, "KEL");
}

TEST(PlotPanels, ShowReadingsAndExtremes) {
  const PlotPanel panel = PanelsOf({Row(5, "50000\t20000\t3000\t")}).at(0);
  EXPECT_LT(panel.range.low, 20.0);
  EXPECT_GT(panel.range.high, 50.0);
  EXPECT_GT(PanelsOf({Row(5, "41000\t42000\t3000\t")}).at(0).range.high, 43.5);
}

TEST(PlotPanels, HaveNoAxisOfNegativeSpeeds) {
  const PlotPanel fans = PanelsOf({Row(5, "41000\t42000\t0\t")}).at(1);
  EXPECT_LT(fans.range.low, 0);
  EXPECT_GT(fans.range.low, -5);
  EXPECT_GE(fans.range.high, 50);
}

TEST(PlotCurve, IsInDegreesAndSeconds) {
  const PlotPanel panel = PanelsOf({Row(5, "41500\t1\t3000\t"), Row(6, "41501\t1\t3000\t")}).at(0);
  EXPECT_EQ(panel.curves.at(0).readings, "1709820309.042 41.500\n1709820369.042 41.501\n\n");
}

TEST(PlotCurve, BreaksAtAFailedReadingAndNeverShowsZeroForIt) {
  const PlotCurve curve = PanelsOf({Row(1, "41500\t1\t0\t"), Row(2, "41500\t1\t0\t"), Row(3, "error\t1\t0\t"),
                                    Row(4, "41500\t1\t0\t"), Row(5, "41500\t1\t0\t")})
                              .at(0)
                              .curves.at(0);
  EXPECT_EQ(Lines(curve.readings), 6u);
  EXPECT_NE(curve.readings.find("41.500\n\n17"), std::string::npos);
  EXPECT_EQ(curve.readings.find(" 0.000"), std::string::npos);
  EXPECT_EQ(curve.failures, "1709820189.042\n");
}

TEST(PlotCurve, BreaksAtAGapAndWhereTheClockWentBack) {
  for (const int minute : {9, 1}) {
    const PlotCurve curve =
        PanelsOf({Row(4, "1\t1\t0\t"), Row(5, "1\t1\t0\t"), Row(minute, "1\t1\t0\t"), Row(minute + 1, "1\t1\t0\t")})
            .at(0)
            .curves.at(0);
    EXPECT_EQ(Lines(curve.readings), 6u) << minute;
  }
}

TEST(PlotCurve, BreaksAtRowsThatAreNotItsOwn) {
  for (const std::string& other : {Row(5, "7\t8\t"), std::string("rubbish\n")}) {
    const PlotCurve curve =
        PanelsOf({Row(3, "1\t1\t0\t"), Row(4, "1\t1\t0\t"), other, Row(5, "1\t1\t0\t"), Row(6, "1\t1\t0\t")})
            .at(0)
            .curves.at(0);
    EXPECT_EQ(Lines(curve.readings), 6u) << other;
    EXPECT_EQ(curve.readings.find(" 0.007"), std::string::npos);
  }
}

TEST(PlotCurve, ShowsAReadingWithoutNeighboursAsAPoint) {
  const PlotCurve curve = PanelsOf({Row(1, "41500\t1\t0\t")}).at(0).curves.at(0);
  EXPECT_EQ(curve.readings, "");
  EXPECT_EQ(Lines(curve.loneReadings), 1u);
}

TEST(PlotCurve, NeverShowsZeroForASensorNotYetMeasured) {
  const PlotCurve curve =
      PanelsOf({Row(1, "0\t1\t0\t"), Row(2, "0\t1\t0\t"), Row(3, "41500\t1\t0\t")}).at(0).curves.at(0);
  EXPECT_EQ(curve.readings + curve.failures, "");
  EXPECT_EQ(Lines(curve.loneReadings), 1u);
}

TEST(PlotCurve, LeavesRowsFromBeforeTheClockWasSetOut) {
  const PlotCurve curve =
      PanelsOf({"1970-01-01T00:01:00.000Z\t5\terror\t0\t\n", Row(1, "41500\t1\t0\t")}).at(0).curves.at(0);
  EXPECT_EQ(Lines(curve.loneReadings), 1u);
  EXPECT_EQ(curve.failures, "");
}

TEST(Stretches, OfOtherColumnsJoinRowsThatFollowEachOther) {
  const auto stretches =
      StretchesOfOtherColumns(Trace({Row(1, "1\t"), Row(2, "1\t"), Row(3, "1\t2\t3\t"), Row(4, "1\t"), Row(9, "1\t")}));
  ASSERT_EQ(stretches.size(), 3u);
  EXPECT_EQ(stretches[0].end - stretches[0].begin, std::chrono::minutes(2));
  EXPECT_EQ(stretches[1].end - stretches[1].begin, std::chrono::minutes(1));
}

TEST(Legend, HasLinesAsWideAsItsHead) {
  for (const PlotPanel& panel : PanelsOf({Row(5, "41500\terror\t3000\t")})) {
    const std::string head = LegendHead(panel.curves, panel.quantity);
    for (const PlotCurve& curve : panel.curves) {
      EXPECT_EQ(LegendLine(curve, panel.curves, panel.quantity).size(), head.size());
    }
  }
}

TEST(Legend, TellsLastMinimumMaximumAndFailures) {
  const PlotPanel panel = PanelsOf({Row(5, "41500\terror\t3000\t")}).at(0);
  EXPECT_EQ(LegendHead(panel.curves, panel.quantity), "sensor    last    min    max  failed");
  EXPECT_EQ(LegendLine(panel.curves.at(0), panel.curves, panel.quantity), "KEL       41.5   39.0   43.5        ");
  EXPECT_EQ(LegendLine(panel.curves.at(1), panel.curves, panel.quantity), "KEL_MCU      -      -      -       1");
}

TEST(Notes, ExplainOnlyTheMarksThatThereAre) {
  const TraceFile good = Trace({Row(5, "1\t2\t3\t")});
  EXPECT_TRUE(NotesOf(StatisticsOf(good), AllColumns(good), kMarks).empty());
  const TraceFile bad = Trace({"1970-01-01T00:01:00.000Z\t1\t2\t3\t\n", Row(1, "1\t"), Row(5, "error\t2\t3\t"),
                               Row(4, "1\t2\t3\t"), "rubbish\n"});
  EXPECT_EQ(NotesOf(StatisticsOf(bad), AllColumns(bad), kMarks),
            (std::vector<std::string>{"x: failed reading (1)", "~: no rows (3 missing)",
                                      "?: 1 row of an earlier set of sensors", "<: the clock was set back",
                                      "left out: 1 damaged row", "left out: 1 row from before the clock was set"}));
}

TEST(TimeAxis, HasNoMoreLabelsThanThereIsRoomFor) {
  for (const int minutes : {0, 1, 3, 10, 59, 180, 1000, 20000, 3000000}) {
    TraceStatistics statistics;
    statistics.first = *ParseUtcTime("2024-03-07T14:05:09.042Z");
    statistics.last = *statistics.first + std::chrono::minutes(minutes);
    const TimeAxis axis = TimeAxisOf(statistics, 9);
    EXPECT_GT(axis.end, axis.begin);
    EXPECT_LE((axis.end - axis.begin) / axis.step, 9.0001) << minutes;
  }
}

TEST(ValueAxis, HasRoundLabelsAroundAllValues) {
  const ValueAxis axis = ValueAxisOf({.low = 23.9, .high = 55.9}, 13, 2);
  EXPECT_EQ(axis.firstLabel, 20);
  EXPECT_EQ(axis.lastLabel, 60);
  EXPECT_EQ(axis.step, 10);
}

TEST(ValueAxis, KeepsItsRowsBelowTheValuesFree) {
  for (const PlotRange values : {PlotRange{0, 3000}, PlotRange{-40, 100}, PlotRange{41, 42}, PlotRange{-5, -4}}) {
    for (const std::size_t rows : {3u, 4u, 8u, 9u, 30u, 300u}) {
      for (const std::size_t below : {1u, 2u}) {
        const ValueAxis axis = ValueAxisOf(values, rows, below);
        const double row = (axis.high - axis.low) / static_cast<double>(rows);
        EXPECT_NEAR(axis.lowestRow, axis.low + row, row / 100);
        EXPECT_GE(axis.firstLabel, axis.low + static_cast<double>(below) * row * 0.99);
        EXPECT_LE(axis.firstLabel, values.low);
        EXPECT_LE(values.high, axis.lastLabel);
        EXPECT_LT(axis.high - axis.lastLabel, row / 2);
      }
    }
  }
}

TEST(ValueAxis, HasNoMoreLabelsThanThereIsRoomFor) {
  for (const double high : {1.0, 1.9, 5.5, 99.9, 3150.0, 2147483647.0}) {
    for (const std::size_t rows : {3u, 8u, 13u, 40u}) {
      const ValueAxis axis = ValueAxisOf({.low = 0, .high = high}, rows, 1);
      EXPECT_LT((axis.lastLabel - axis.firstLabel) / axis.step, static_cast<double>(rows - 1)) << high << " " << rows;
    }
  }
}

}  // namespace
}  // namespace clmctl
