#include "TempText.h"

#include "messages/TempSensorName.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>

namespace clmctl {
namespace {

const TempIndication kEmpty{.sensorType = ETempSensorType_Dax1, .readings = {}};
const TempIndication kUnit{
    .sensorType = ETempSensorType_Dax1,
    .readings = {{.name = TEMP_SENSOR_DAX1_MCU, .celsius = 41.5, .valid = true, .driverError = 0},
                 {.name = TEMP_SENSOR_DAX1_VORNIK, .celsius = 0, .valid = false, .driverError = -2}}};

TEST(TempText, IsALineForEachSensor) {
  const std::string lines = TempLines(kUnit, "12:00");
  EXPECT_TRUE(
      lines.starts_with("12:00  DAX1_MCU             41.500 C  ok\n12:00  DAX1_VORNIK               -    failed"))
      << lines;
}

TEST(TempText, TellsADriversErrorByTheSameNumberEverywhere) {
  EXPECT_EQ(StateText(kUnit.readings[1]), "failed: The device did not answer (-2)");
  EXPECT_NE(TempLines(kUnit, "12:00").find("failed: The device did not answer (-2)\n"), std::string::npos);
  EXPECT_EQ(TempObjects(kUnit, 1, "12:00").at(1)["driver_error"], -2);
}

TEST(TempText, SaysThatATypeHasNoSensors) { EXPECT_EQ(TempLines(kEmpty, "12:00"), "12:00  Dax1 has no sensors\n"); }

TEST(TempText, IsAnObjectForEachSensor) {
  const auto objects = TempObjects(kUnit, 3, "12:00");
  ASSERT_EQ(objects.size(), 2u);
  EXPECT_TRUE(objects[0].dump().starts_with(
      R"({"time":"12:00","indication":3,"sensor_type":"Dax1","sensor":"DAX1_MCU","sensor_number":12,"state":"ok",)"
      R"("temperature_celsius":41.5,"driver_error":null,"driver_error_text":null})"))
      << objects[0];
  EXPECT_TRUE(objects[1]["temperature_celsius"].is_null());
}

TEST(TempText, IsAnObjectWithTheSameKeysWhereATypeHasNoSensors) {
  const auto objects = TempObjects(kEmpty, 1, "12:00");
  ASSERT_EQ(objects.size(), 1u);
  EXPECT_TRUE(objects[0]["sensor"].is_null());
  EXPECT_EQ(objects[0]["state"], "no sensors");
  EXPECT_EQ(objects[0].size(), TempObjects(kUnit, 1, "12:00")[0].size());
}

/// The names of every processing unit's sensors, as they are shown.
TEST(TempText, NamesTheSensorsOfProcessingUnits) {
  for (u32 slot = 0; slot < 3; ++slot) {
    const std::string unit = "DAX" + std::to_string(slot + 1);
    EXPECT_EQ(SensorText(12 + 7 * slot), unit + "_MCU");
    for (u32 dsp = 1; dsp <= 6; ++dsp) EXPECT_EQ(SensorText(12 + 7 * slot + dsp), unit + "_DSP" + std::to_string(dsp));
    for (u32 dsp = 7; dsp <= 9; ++dsp) EXPECT_EQ(SensorText(51 + 3 * slot + dsp), unit + "_DSP" + std::to_string(dsp));
    EXPECT_EQ(SensorText(67 + slot), unit + "_VORNIK");
  }
}

}  // namespace
}  // namespace clmctl
