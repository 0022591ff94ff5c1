#include "PlotColumns.h"

#include "CommandError.h"
#include "TraceSample.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

using Columns = std::vector<std::size_t>;

TEST(PlotColumns, AreChosenByName) {
  const TraceFile trace = Trace({});
  EXPECT_EQ(ColumnsNamed(trace, "FAN_1,KEL"), (Columns{0, 2}));
  EXPECT_EQ(ColumnsNamed(trace, "KEL,KEL"), (Columns{0}));
}

TEST(PlotColumns, OfAnUnknownNameAreRefusedWithTheKnownOnes) {
  for (const char* const names : {"KELL", "", "KEL,", ",KEL", "kel"}) {
    try {
      ColumnsNamed(Trace({}), names);
      FAIL() << names;
    } catch (const CommandError& error) {
      EXPECT_EQ(error.Code(), ExitCode::Usage);
      EXPECT_NE(std::string(error.what()).find("KEL, KEL_MCU, FAN_1"), std::string::npos);
    }
  }
}

TEST(PlotColumns, ForATerminalAreTheHottestSensorsAndTheFans) {
  TraceFile trace;
  TraceRow row{.line = 1, .state = RowState::Good, .time = {}, .readings = {}, .text = {}};
  for (int i = 0; i < 9; ++i) {
    trace.columns.push_back({"S" + std::to_string(i), i < 8 ? Quantity::Temperature : Quantity::FanSpeed, {}, {}});
    row.readings.push_back({.state = i == 5 ? ReadingState::Failed : ReadingState::Good, .value = 1000 * i});
  }
  trace.rows.push_back(row);
  EXPECT_EQ(HottestColumns(trace, StatisticsOf(trace)), (Columns{7, 6, 4, 3, 2, 1, 8}));
}

}  // namespace
}  // namespace clmctl
