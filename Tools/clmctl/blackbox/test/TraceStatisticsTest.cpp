#include "TraceStatistics.h"

#include "TraceSample.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

TEST(TraceStatistics, TellLastLowestMeanAndHighestOfAColumn) {
  const TraceStatistics statistics =
      StatisticsOf(Trace({Row(5, "40000\t0\t0\t"), Row(6, "43000\t0\t0\t"), Row(7, "41000\t0\t0\t")}));
  ASSERT_EQ(statistics.columns.size(), 3u);
  const ColumnStatistics& kel = statistics.columns[0];
  EXPECT_EQ(kel.readings, 3u);
  EXPECT_EQ(kel.last.value().Value(), 41000);
  EXPECT_EQ(kel.minimum, 40000);
  EXPECT_EQ(kel.maximum, 43000);
  EXPECT_NEAR(kel.mean.value_or(0), 41333.333, 0.001);
}

TEST(TraceStatistics, CountFailedReadingsAndLeaveThemOutOfTheRest) {
  const TraceStatistics statistics = StatisticsOf(Trace({Row(5, "-5\t0\t0\t"), Row(6, "error\t0\t0\t")}));
  const ColumnStatistics& kel = statistics.columns.at(0);
  EXPECT_EQ(kel.errors, 1u);
  EXPECT_EQ(kel.readings, 1u);
  EXPECT_EQ(kel.last.value().Value(), std::nullopt);
  EXPECT_EQ(kel.maximum, -5);
}

TEST(TraceStatistics, TakeNotYetMeasuredForNeitherAReadingNorAFailure) {
  const ColumnStatistics kel = StatisticsOf(Trace({Row(5, "0\t0\t0\t"), Row(6, "40000\t0\t0\t")})).columns.at(0);
  EXPECT_EQ(kel.readings, 1u);
  EXPECT_EQ(kel.errors, 0u);
  EXPECT_EQ(kel.minimum, 40000);
}

TEST(TraceStatistics, OfNothingReadHaveNoValues) {
  const ColumnStatistics kel = StatisticsOf(Trace({Row(5, "error\t0\t0\t")})).columns.at(0);
  EXPECT_EQ(kel.minimum, std::nullopt);
  EXPECT_EQ(kel.maximum, std::nullopt);
  EXPECT_EQ(kel.mean, std::nullopt);
}

TEST(TraceStatistics, LeaveRowsOfOtherColumnsAndDamagedOnesOut) {
  const TraceStatistics statistics = StatisticsOf(Trace({Row(4, "90000\t1\t"), "rubbish\n", Row(5, "1\t2\t3\t")}));
  EXPECT_EQ(statistics.good, 1u);
  EXPECT_EQ(statistics.otherColumns, 1u);
  EXPECT_EQ(statistics.damaged, 1u);
  EXPECT_EQ(statistics.columns.at(0).maximum, 1);
}

TEST(TraceStatistics, TellTheGapBetweenRowsThatAreMoreThanOneAndAHalfMinutesApart) {
  const TraceStatistics statistics =
      StatisticsOf(Trace({Row(5, "1\t2\t3\t"), Row(6, "1\t2\t3\t"), Row(10, "1\t2\t3\t")}));
  ASSERT_EQ(statistics.gaps.size(), 1u);
  EXPECT_EQ(UtcSeconds(statistics.gaps[0].begin), "2024-03-07 14:06:09");
  EXPECT_EQ(UtcSeconds(statistics.gaps[0].end), "2024-03-07 14:10:09");
  EXPECT_EQ(statistics.gaps[0].MissingRows(), 3u);
}

TEST(TraceStatistics, TakeALateRowForNoGap) {
  EXPECT_TRUE(StatisticsOf(Trace({"2024-03-07T14:05:00.000Z\t1\t2\t3\t\n", "2024-03-07T14:06:30.000Z\t1\t2\t3\t\n"}))
                  .gaps.empty());
  EXPECT_EQ(StatisticsOf(Trace({"2024-03-07T14:05:00.000Z\t1\t2\t3\t\n", "2024-03-07T14:06:30.001Z\t1\t2\t3\t\n"}))
                .gaps.size(),
            1u);
}

TEST(TraceStatistics, TellThatTheClockWasSetBack) {
  const TraceStatistics statistics = StatisticsOf(Trace({Row(30, "1\t2\t3\t"), Row(5, "1\t2\t3\t")}));
  EXPECT_EQ(statistics.clockSetBack.size(), 1u);
  EXPECT_TRUE(statistics.gaps.empty());
  EXPECT_EQ(UtcSeconds(statistics.first.value()), "2024-03-07 14:05:09");
  EXPECT_EQ(UtcSeconds(statistics.last.value()), "2024-03-07 14:30:09");
}

TEST(TraceStatistics, DoNotSpanTheTimeBeforeTheClockWasSet) {
  const TraceStatistics statistics =
      StatisticsOf(Trace({"1970-01-01T00:01:00.000Z\t1\t2\t3\t\n", Row(5, "1\t2\t3\t")}));
  EXPECT_EQ(statistics.clockNotSet, 1u);
  EXPECT_EQ(UtcSeconds(statistics.first.value()), "2024-03-07 14:05:09");
  EXPECT_TRUE(statistics.gaps.empty());
}

}  // namespace
}  // namespace clmctl
