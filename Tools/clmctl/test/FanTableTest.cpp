#include "FanTable.h"

#include "ShownLines.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

using std::chrono::seconds;

constexpr FanTable::Clock::time_point kStart{};

FanTable TableOf(u32 rpm) {
  FanTable table("fans");
  table.Add({.readings = {{.fan = EFanUnit_GarFan1, .rpm = rpm, .frequency = EFanParam_PwmFreq25k}}}, "12:00:08",
            kStart);
  return table;
}

TEST(FanTable, ShowsNameSpeedAndFrequency) {
  const std::string text = Joined(TableOf(3100).Draw({.columns = 80, .rows = 24}, kStart));
  EXPECT_NE(text.find("GAR_FAN1"), std::string::npos) << text;
  EXPECT_NE(text.find("3100 rpm"), std::string::npos) << text;
  EXPECT_NE(text.find("25 kHz"), std::string::npos) << text;
  EXPECT_NE(text.find("last at 12:00:08"), std::string::npos) << text;
}

TEST(FanTable, TellsHowOldItsReadingsAre) {
  const FanTable table = TableOf(3100);
  EXPECT_NE(Joined(table.Draw({.columns = 80, .rows = 24}, kStart + seconds(59))).find(" 59 s  ok"), std::string::npos);
  EXPECT_NE(Joined(table.Draw({.columns = 80, .rows = 24}, kStart + seconds(61))).find(" 1 min 1 s  ok"),
            std::string::npos);
}

TEST(FanTable, MarksAFanWithoutASpeed) {
  const std::string text = Joined(TableOf(0).Draw({.colours = true}, kStart));
  EXPECT_NE(text.find("\x1b[1;31mno speed\x1b"), std::string::npos) << text;
}

TEST(FanTable, WaitsForItsFirstIndication) {
  EXPECT_NE(Joined(FanTable("fans").Draw({}, kStart)).find("waiting"), std::string::npos);
}

TEST(FanTable, StaysWithinTheTerminal) {
  const FanTable table = TableOf(0);
  for (unsigned size = 1; size < 120; ++size) {
    const auto lines = table.Draw({.columns = size, .rows = size, .colours = true}, kStart);
    ASSERT_LE(lines.size(), size);
    for (const std::string& line : lines) ASSERT_LE(ShownWidth(line), size) << line;
  }
}

}  // namespace
}  // namespace clmctl
