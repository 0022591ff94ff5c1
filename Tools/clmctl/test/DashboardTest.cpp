#include "Dashboard.h"

#include "ShownLines.h"

#include <gtest/gtest.h>

namespace clmctl {
namespace {

constexpr FanTable::Clock::time_point kStart{};

/// Many sensors, two fans, a note.
Dashboard FullDashboard() {
  Dashboard dashboard;
  TempIndication sensors{.sensorType = ETempSensorType_DaxAll, .readings = {}};
  sensors.readings.resize(30, {.name = 1, .celsius = 40, .valid = true, .driverError = 0});
  dashboard.temperatures.emplace("temperatures").Add(sensors, "12:00:00");
  dashboard.fans.emplace("fans").Add({.readings = {{.fan = EFanUnit_GarFan1, .rpm = 3100, .frequency = 2},
                                                   {.fan = EFanUnit_GarFan2, .rpm = 3200, .frequency = 2}}},
                                     "12:00:00", kStart);
  dashboard.note = "something about the watch";
  return dashboard;
}

TEST(Dashboard, ShowsTheFansBelowTheTemperatures) {
  const std::string text = Joined(FullDashboard().Draw({}, kStart));
  const std::size_t temperatures = text.find("SENSOR");
  const std::size_t fans = text.find("GAR_FAN2");
  ASSERT_NE(temperatures, std::string::npos) << text;
  ASSERT_NE(fans, std::string::npos) << text;
  EXPECT_LT(temperatures, fans);
}

TEST(Dashboard, CutsTheTemperaturesBeforeTheFans) {
  const auto lines = FullDashboard().Draw({.columns = 80, .rows = 20}, kStart);
  ASSERT_EQ(lines.size(), 20u);
  EXPECT_NE(Joined(lines).find("GAR_FAN2"), std::string::npos);
  EXPECT_NE(Joined(lines).find("more"), std::string::npos);
}

TEST(Dashboard, ShowsItsNoteLast) {
  EXPECT_EQ(FullDashboard().Draw({.columns = 80, .rows = 24}, kStart).back(), "something about the watch");
}

TEST(Dashboard, OfOneTableHasNothingElse) {
  Dashboard dashboard;
  dashboard.fans.emplace("fans");
  EXPECT_EQ(dashboard.Draw({.columns = 80, .rows = 24}, kStart).front(), "fans");
}

TEST(Dashboard, StaysWithinTheTerminal) {
  const Dashboard dashboard = FullDashboard();
  for (unsigned size = 1; size < 120; ++size) {
    const auto lines = dashboard.Draw({.columns = size, .rows = size, .colours = true}, kStart);
    ASSERT_LE(lines.size(), size);
    for (const std::string& line : lines) ASSERT_LE(ShownWidth(line), size) << line;
  }
}

}  // namespace
}  // namespace clmctl
