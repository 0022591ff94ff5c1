#include "TraceFile.h"

#include "TraceSample.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

std::string ProblemsOf(const TraceFile& trace) {
  std::string text;
  for (const FileProblem& problem : trace.problems) text += std::to_string(problem.line) + ": " + problem.text + "\n";
  return text;
}

TEST(TraceFile, HasTheSensorsAndThenTheFans) {
  const TraceFile trace = Trace({});
  ASSERT_EQ(trace.columns.size(), 3u);
  EXPECT_EQ(trace.columns[1].name, "KEL_MCU");
  EXPECT_EQ(trace.columns[1].quantity, Quantity::Temperature);
  EXPECT_EQ(trace.columns[2].name, "FAN_1");
  EXPECT_EQ(trace.columns[2].quantity, Quantity::FanSpeed);
  EXPECT_EQ(ProblemsOf(trace), "");
}

TEST(TraceFile, KnowsTheExtremesOfMeasuredSensorsOnly) {
  const TraceFile trace = Trace({});
  ASSERT_EQ(trace.columns.size(), 3u);
  EXPECT_EQ(trace.columns[0].minimum, 39000);
  EXPECT_EQ(trace.columns[0].maximum, 43500);
  EXPECT_EQ(trace.columns[1].minimum, std::nullopt);
  EXPECT_EQ(trace.columns[1].maximum, std::nullopt);
  EXPECT_EQ(trace.columns[2].minimum, std::nullopt);
}

TEST(TraceFile, ReadsARowWithItsTimeAndItsFailedReadings) {
  const TraceFile trace = Trace({Row(5, "41500\terror\t3000\t")});
  ASSERT_EQ(trace.rows.size(), 1u);
  EXPECT_EQ(trace.rows[0].state, RowState::Good);
  EXPECT_EQ(trace.rows[0].line, 8u);
  EXPECT_EQ(UtcText(trace.rows[0].time), "2024-03-07T14:05:09.042Z");
  EXPECT_EQ(trace.rows[0].readings, (std::vector<TraceReading>{{.state = ReadingState::Good, .value = 41500},
                                                               {.state = ReadingState::Failed, .value = 0},
                                                               {.state = ReadingState::Good, .value = 3000}}));
}

TEST(TraceFile, TakesZeroOfASensorThatNeverShowedItForNotYetMeasured) {
  const TraceFile trace = Trace({Row(5, "0\t0\t0\t")});
  EXPECT_EQ(trace.rows.at(0).readings.at(0).state, ReadingState::NotYet);
  EXPECT_EQ(trace.rows.at(0).readings.at(1).state, ReadingState::NotYet);
  EXPECT_EQ(trace.rows.at(0).readings.at(2).state, ReadingState::Good);
}

TEST(TraceFile, TakesZeroBetweenTheExtremesForATemperature) {
  std::string text = kTraceHead + Row(5, "0\t0\t0\t");
  const std::string from = "MIN:\t39000";
  text.replace(text.find(from), from.size(), "MIN:\t-2000");
  EXPECT_EQ(ParseTraceFile(text).rows.at(0).readings.at(0).state, ReadingState::Good);
}

TEST(TraceFile, OfABoardWithoutSensorsHasRowsOfTheTimeAlone) {
  const TraceFile trace = ParseTraceFile(
      "#MINMAX: Minimum and maximum measured temperatures\n#\t\nMIN:\t\nMAX:\t\n\n"
      "#TEMPANDSPEED: temperatures and fan speeds\n#                  \t\n" +
      Row(5, ""));
  EXPECT_EQ(ProblemsOf(trace), "");
  ASSERT_EQ(trace.rows.size(), 1u);
  EXPECT_EQ(trace.rows[0].state, RowState::Good);
}

TEST(TraceFile, NeverAttributesARowWithAnotherNumberOfValues) {
  const TraceFile trace = Trace({Row(5, "41500\t3000\t"), Row(6, "1\t2\t3\t4\t"), Row(7, "")});
  ASSERT_EQ(trace.rows.size(), 3u);
  for (const TraceRow& row : trace.rows) EXPECT_EQ(row.state, RowState::OtherColumns);
  EXPECT_EQ(trace.rows[0].readings.size(), 2u);
  EXPECT_EQ(ProblemsOf(trace), "");
}

struct DamagedRow {
  const char* text;
  const char* why;
};

class TraceFileWithADamagedRow : public testing::TestWithParam<DamagedRow> {};

TEST_P(TraceFileWithADamagedRow, SaysLineAndFaultAndReadsTheOthers) {
  const TraceFile trace = Trace({Row(5, "1\t2\t3\t"), std::string(GetParam().text) + "\n", Row(7, "1\t2\t3\t")});
  ASSERT_EQ(trace.rows.size(), 3u);
  EXPECT_EQ(trace.rows[0].state, RowState::Good);
  EXPECT_EQ(trace.rows[1].state, RowState::Damaged);
  EXPECT_EQ(trace.rows[1].text, GetParam().text);
  EXPECT_EQ(trace.rows[2].state, RowState::Good);
  EXPECT_EQ(ProblemsOf(trace).find("9: "), 0u);
  EXPECT_NE(ProblemsOf(trace).find(GetParam().why), std::string::npos) << ProblemsOf(trace);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TraceFileWithADamagedRow,
    testing::Values(DamagedRow{"", "does not begin with a time"}, DamagedRow{"\t", "does not begin with a time"},
                    DamagedRow{"2024-13-07T14:05:09.042Z\t1\t2\t3\t", "does not begin with a time"},
                    DamagedRow{"0000-00-00T00:00:00.000Z\t1\t2\t3\t", "does not begin with a time"},
                    DamagedRow{"2024-03-07T14:05:09.042Z", "no tab behind its time"},
                    DamagedRow{"2024-03-07T14:05:09.042Z 1\t2\t3\t", "no tab behind its time"},
                    DamagedRow{"2024-03-07T14:05:09.042Z\t1\t2\t3", "does not end with a tab"},
                    DamagedRow{"2024-03-07T14:05:09.042Z\t1\t2\t3\t\r", "does not end with a tab"},
                    DamagedRow{"2024-03-07T14:05:09.042Z\t1\tx\t3\t", "value 2, 'x'"},
                    DamagedRow{"2024-03-07T14:05:09.042Z\t1\t\t3\t", "value 2, ''"},
                    DamagedRow{"2024-03-07T14:05:09.042Z\t1\t2\t2147483648\t", "value 3"},
                    DamagedRow{"2024-03-07T14:05:09.042Z\t1\t2 \t3\t", "value 2"},
                    DamagedRow{"2024-03-07T14:05:09.042Z\t1\tERROR\t3\t", "value 2"}));

TEST(TraceFile, WithItsLastRowCutIsDamagedThere) {
  const TraceFile trace = ParseTraceFile(kTraceHead + "2024-03-07T14:05:09.042Z\t1\t2\t3\t");
  ASSERT_EQ(trace.rows.size(), 1u);
  EXPECT_EQ(trace.rows[0].state, RowState::Damaged);
  EXPECT_EQ(ProblemsOf(trace), "8: is cut off\n");
}

TEST(TraceFile, OfAnotherKindHasNoRows) {
  for (const char* const text : {"", "\n", "hello\n", "TIMESTAMP: 2024-03-07T14:05:09.042Z\n"}) {
    const TraceFile trace = ParseTraceFile(text);
    EXPECT_TRUE(trace.rows.empty());
    EXPECT_NE(ProblemsOf(trace).find("is no trace file"), std::string::npos);
  }
}

struct DamagedHead {
  const char* from;
  const char* to;
  const char* problem;
  std::size_t columns;  ///< that are known nevertheless
};

class TraceFileWithADamagedHead : public testing::TestWithParam<DamagedHead> {};

TEST_P(TraceFileWithADamagedHead, KnowsNoColumnItCannotTrust) {
  std::string text = kTraceHead + Row(5, "1\t2\t3\t");
  const std::string from = GetParam().from;
  text.replace(text.find(from), from.size(), GetParam().to);
  const TraceFile trace = ParseTraceFile(text);
  EXPECT_EQ(trace.columns.size(), GetParam().columns);
  EXPECT_NE(ProblemsOf(trace).find(GetParam().problem), std::string::npos) << ProblemsOf(trace);
  ASSERT_EQ(trace.rows.size(), 1u);
  EXPECT_EQ(trace.rows[0].state, GetParam().columns == 3 ? RowState::Good : RowState::OtherColumns);
}

INSTANTIATE_TEST_SUITE_P(
    Heads, TraceFileWithADamagedHead,
    testing::Values(DamagedHead{"#MINMAX:", "#MAXMIN:", "1: should be", 3},
                    DamagedHead{"#\tKEL\tKEL_MCU\t\n", "#\tKEL\tKEL_MCU\n", "2: the names of the sensors do not end",
                                0},
                    DamagedHead{"#\tKEL\tKEL_MCU\t\n", "KEL\tKEL_MCU\t\n", "2: should be the names of the sensors", 0},
                    DamagedHead{"#\tKEL\tKEL_MCU\t\n", "#\tKEL_MCU\tKEL\t\n", "do not begin with the sensors", 0},
                    DamagedHead{"#\tKEL\tKEL_MCU\t\n", "", "begins here, not in line 6", 0},
                    DamagedHead{"MIN:\t39000\t-\t", "MIN:\t39000\t", "3: has 1 minimums for 2 sensors", 3},
                    DamagedHead{"MIN:\t39000", "MIN:\tx", "3: 'x' of 'KEL' is neither", 3},
                    DamagedHead{"\nMAX:", "\nMAY:", "4: should be the maximums", 3},
                    DamagedHead{"-\t\n\n#TEMP", "-\t\n \n#TEMP", "5: should be empty", 3},
                    DamagedHead{"fan speeds", "fans", "6: should be", 3},
                    DamagedHead{"#                  \t", "# \t", "7: should be the names of the columns", 0}));

TEST(TraceFile, WithColumnsInAnotherOrderThanTheSensorsKnowsNone) {
  std::string text = kTraceHead + Row(5, "1\t2\t3\t");
  const std::string from = "\tKEL\tKEL_MCU\tFAN_1\t";
  text.replace(text.find(from), from.size(), "\tKEL_MCU\tKEL\tFAN_1\t");
  const TraceFile trace = ParseTraceFile(text);
  EXPECT_TRUE(trace.columns.empty());
  EXPECT_NE(ProblemsOf(trace).find("7: the columns do not begin with the sensors"), std::string::npos);
}

}  // namespace
}  // namespace clmctl
