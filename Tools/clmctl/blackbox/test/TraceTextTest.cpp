#include "TraceText.h"

#include "TraceSample.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

using Lines = std::vector<std::string>;

Lines Head(const TraceFile& trace) { return TraceHeadLines(trace, StatisticsOf(trace)); }
Lines Summary(const TraceFile& trace) { return TraceSummaryLines(trace, StatisticsOf(trace), Screen{}); }

TEST(TraceText, TellsTheSpanAndTheRows) {
  EXPECT_EQ(Head(Trace({Row(5, "1\t2\t3\t"), Row(6, "1\t2\t3\t")})),
            (Lines{"2 rows, 2024-03-07 14:05:09 to 14:06:09 UTC (1 min)"}));
  EXPECT_EQ(Head(Trace({})), (Lines{"0 rows"}));
}

TEST(TraceText, TellsWhatIsMissing) {
  const Lines lines = Head(Trace({Row(1, "1\t2\t3\t"), Row(5, "1\t"), "rubbish\n", Row(4, "1\t2\t3\t")}));
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[1], "1 gap, about 3 rows missing: 2024-03-07 14:01:09 to 14:05:09");
  EXPECT_EQ(lines[2], "the clock was set back 1 time");
  EXPECT_EQ(lines[3].find("1 row with other columns"), 0u);
  EXPECT_EQ(lines[4].find("1 damaged row"), 0u);
}

TEST(TraceSummary, HasALineForEachColumn) {
  EXPECT_EQ(
      Summary(Trace({Row(5, "41500\terror\t3000\t"), Row(6, "42500\terror\t3100\t")})),
      (Lines{"SENSOR, \xc2\xb0"
             "C    LAST  LOWEST    MEAN  HIGHEST  FAILED    MIN*    MAX*",
             "KEL         42.500  41.500  42.000   42.500       -  39.000  43.500",
             "KEL_MCU      error       -       -        -       2       -       -", "* since the service started", "",
             "FAN, RPM  LAST  LOWEST  MEAN  HIGHEST  FAILED", "FAN_1     3100    3000  3050     3100       -"}));
}

TEST(TraceSummary, ShowsNothingForASensorNotYetMeasured) {
  EXPECT_EQ(Summary(Trace({Row(5, "41500\t0\t3000\t")})).at(2),
            "KEL_MCU          -       -       -        -       -       -       -");
}

TEST(TraceSummary, OfATraceWithoutColumnsIsEmpty) { EXPECT_TRUE(Summary(TraceFile{}).empty()); }

TEST(TraceRows, StandUnderTheirColumns) {
  EXPECT_EQ(TraceRowLines(Trace({Row(5, "41500\terror\t3000\t")}), Screen{}),
            (Lines{"TIME, UTC               KEL  KEL_MCU  FAN_1", "2024-03-07 14:05:09  41.500    error   3000"}));
}

TEST(TraceRows, GoOnInBlocksWhereTheScreenIsNarrow) {
  const TraceFile trace = Trace({Row(5, "41500\terror\t3000\t")});
  const Lines lines = TraceRowLines(trace, {.columns = 36});
  EXPECT_EQ(lines, (Lines{"TIME, UTC               KEL  KEL_MCU", "2024-03-07 14:05:09  41.500    error", "",
                          "TIME, UTC            FAN_1", "2024-03-07 14:05:09   3000"}));
}

TEST(TraceRows, ThatBelongToNoColumnAreShownAsTheyAre) {
  const Lines lines = TraceRowLines(Trace({Row(4, "7\terror\t"), Row(5, "1\t2\t3\t"),
                                           "rub\x1b"
                                           "bish\n"}),
                                    Screen{});
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[1], "2024-03-07 14:04:09  other columns: 7 error");
  EXPECT_EQ(lines[3], "damaged: rub\\x1bbish");
}

TEST(TraceRows, OfNoKnownColumnsAreShownAllTheSame) {
  const TraceFile trace = ParseTraceFile("#TEMPANDSPEED: temperatures and fan speeds\nx\n" + Row(4, "7\t"));
  const Lines lines = TraceRowLines(trace, Screen{});
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[1], "2024-03-07 14:04:09  other columns: 7");
}

}  // namespace
}  // namespace clmctl
