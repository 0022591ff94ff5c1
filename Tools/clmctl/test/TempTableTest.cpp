#include "TempTable.h"

#include "ShownLines.h"
#include "messages/TempSensorName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

namespace clmctl {
namespace {

TempIndication OneSensor(double celsius, bool valid = true) {
  return {
      .sensorType = ETempSensorType_Kel,
      .readings = {{.name = TEMP_SENSOR_KEL_MCU, .celsius = celsius, .valid = valid, .driverError = valid ? 0 : -2}}};
}

TempIndication ManySensors(std::size_t count) {
  TempIndication indication{.sensorType = ETempSensorType_DaxAll, .readings = {}};
  indication.readings.resize(count, {.name = TEMP_SENSOR_KEL, .celsius = 40, .valid = true, .driverError = 0});
  return indication;
}

std::string Text(const TempTable& table, const Screen& screen) { return Joined(table.Draw(screen)); }

TEST(TempTable, ShowsNameAndTemperatureWithThreeDecimals) {
  TempTable table("Kel");
  table.Add(OneSensor(41.5), "12:00:00");
  const std::string text = Text(table, {.columns = 80, .rows = 24});
  EXPECT_NE(text.find("KEL_MCU"), std::string::npos);
  EXPECT_NE(text.find("41.500 °C"), std::string::npos);
  EXPECT_NE(text.find("last at 12:00:00"), std::string::npos);
}

TEST(TempTable, RemembersTheExtremes) {
  TempTable table("Kel");
  for (const double celsius : {41.0, 39.5, 43.25}) table.Add(OneSensor(celsius), "12:00:00");
  const std::string text = Text(table, {.columns = 80, .rows = 24});
  EXPECT_NE(text.find("39.500"), std::string::npos);
  EXPECT_NE(text.find("43.250"), std::string::npos);
}

TEST(TempTable, ShowsTheErrorOfAFailedSensor) {
  TempTable table("Kel");
  table.Add(OneSensor(41), "12:00:00");
  table.Add(OneSensor(0, false), "12:00:01");
  const std::string text = Text(table, {.columns = 120, .rows = 24});
  EXPECT_NE(text.find("failed: "), std::string::npos);
  EXPECT_NE(text.find("(-2)"), std::string::npos);
}

/// @return an indication of sensors that all show the same
TempIndication Sensors(std::initializer_list<u32> names, double celsius) {
  TempIndication indication{.sensorType = ETempSensorType_DaxAll, .readings = {}};
  for (const u32 name : names) {
    indication.readings.push_back({.name = name, .celsius = celsius, .valid = true, .driverError = 0});
  }
  return indication;
}

TEST(TempTable, KeepsTheCourseOfASensorWhenOthersComeAndGo) {
  TempTable table("DaxAll");
  table.Add(Sensors({TEMP_SENSOR_DAX1_MCU, TEMP_SENSOR_DAX3_MCU}, 31.5), "12:00:00");
  table.Add(Sensors({TEMP_SENSOR_DAX3_MCU}, 42.5), "12:00:01");
  table.Add(Sensors({TEMP_SENSOR_DAX1_MCU, TEMP_SENSOR_DAX3_MCU}, 53.5), "12:00:02");
  const std::string text = Text(table, {.columns = 120, .rows = 24});
  const std::string back = text.substr(text.find("DAX1_MCU"), text.find("DAX3_MCU") - text.find("DAX1_MCU"));
  EXPECT_EQ(back.find("31.500"), std::string::npos) << back;  // another unit, for all one knows
  EXPECT_NE(text.find("31.500", text.find("DAX3_MCU")), std::string::npos) << text;
}

TEST(TempTable, ForgetsSensorsThatAreGone) {
  TempTable table("DaxAll");
  table.Add(Sensors({TEMP_SENSOR_DAX1_MCU, TEMP_SENSOR_DAX3_MCU}, 31.5), "12:00:00");
  table.Add(Sensors({TEMP_SENSOR_DAX3_MCU}, 42.5), "12:00:01");
  EXPECT_EQ(Text(table, {.columns = 80, .rows = 24}).find("DAX1_MCU"), std::string::npos);
}

TEST(TempTable, SaysThatThereAreNoSensors) {
  TempTable table("Dax1");
  EXPECT_EQ(Text(table, {}).find("no sensors"), std::string::npos);
  table.Add(Sensors({}, 0), "12:00:00");
  EXPECT_NE(Text(table, {}).find("no sensors"), std::string::npos);
  EXPECT_EQ(table.Draw({.columns = 80, .rows = 1, .colours = true}).size(), 1u);
}

TEST(TempTable, IsNeverWiderThanTheTerminal) {
  TempTable table("Kel temperatures every 1s");
  for (int i = 0; i < 100; ++i) table.Add(OneSensor(40 + i, i % 7 != 0), "12:00:00");
  for (unsigned columns = 1; columns < 200; ++columns) {
    for (const std::string& line : table.Draw({.columns = columns, .rows = 24, .colours = true}))
      ASSERT_LE(ShownWidth(line), columns) << line;
  }
}

TEST(TempTable, IsNeverTallerThanTheTerminal) {
  TempTable table("DaxAll");
  table.Add(ManySensors(30), "12:00:00");
  for (unsigned rows = 1; rows < 50; ++rows)
    ASSERT_LE(table.Draw({.columns = 80, .rows = rows, .colours = true}).size(), rows);
  EXPECT_NE(Text(table, {.columns = 80, .rows = 20}).find("more"), std::string::npos);
}

TEST(TempTable, HasNoEscapeSequencesWithoutColours) {
  TempTable table("Kel");
  table.Add(OneSensor(41), "12:00:00");
  EXPECT_EQ(Text(table, {.columns = 80, .rows = 24}).find('\x1b'), std::string::npos);
}

TEST(TempTable, IsAsciiWhereTheTerminalIs) {
  TempTable table("Kel");
  for (const double celsius : {41.0, 43.0, 42.0}) table.Add(OneSensor(celsius), "12:00:00");
  const std::string text = Text(table, {.utf8 = false});
  EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
}

TEST(TempTable, DrawsATrendThatRises) {
  TempTable table("Kel");
  for (int i = 0; i < 8; ++i) table.Add(OneSensor(40 + i), "12:00:00");
  EXPECT_NE(Text(table, {.columns = 80, .rows = 24}).find("▁▂▃▄▅▆▇█"), std::string::npos);
}

}  // namespace
}  // namespace clmctl
