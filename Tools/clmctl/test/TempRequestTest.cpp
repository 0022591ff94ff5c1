#include "TempRequest.h"

#include "messages/MessageIds.h"
#include "messages/TempSensorName.h"

#include <gtest/gtest.h>

#include <cstring>

namespace clmctl {
namespace {

struct Wire {
  u32 sensorType = ETempSensorType_Kel;
  u32 numberOfSensors = 2;
  STempMeasInfo info[2] = {
      {.unit_name = TEMP_SENSOR_KEL_MCU, .unit_temp = {41.3F}, .temp_sensor_state = 1, .i2c_fault_id = 0},
      {.unit_name = TEMP_SENSOR_KEL, .unit_temp = {}, .temp_sensor_state = 0, .i2c_fault_id = 2}};
};

Message IndicationOf(const Wire& wire, u32 size = sizeof(Wire)) {
  Message msg(AaSysComMsgCreate(API_TEMP_MEAS_IND_MSG, size, 0x01010001));
  if (size != 0) std::memcpy(AaSysComMsgGetPayload(msg.get()), &wire, size);
  return msg;
}

TEST(TempIndication, HasAReadingForEachSensor) {
  const auto indication = ParseTempIndication(IndicationOf(Wire{}).get());
  ASSERT_TRUE(indication.has_value());
  ASSERT_EQ(indication->readings.size(), 2u);
  EXPECT_EQ(indication->sensorType, ETempSensorType_Kel);
  EXPECT_EQ(indication->readings[0].name, TEMP_SENSOR_KEL_MCU);
  EXPECT_DOUBLE_EQ(indication->readings[0].celsius, 41.3);
  EXPECT_TRUE(indication->readings[0].valid);
}

TEST(TempIndication, TellsTheErrorOfAFailedSensor) {
  const auto indication = ParseTempIndication(IndicationOf(Wire{}).get());
  ASSERT_TRUE(indication.has_value());
  ASSERT_EQ(indication->readings.size(), 2u);
  EXPECT_FALSE(indication->readings[1].valid);
  EXPECT_EQ(indication->readings[1].driverError, -2);
}

TEST(TempIndication, IsNotBelievedBeyondItsPayload) {
  const auto lying = ParseTempIndication(IndicationOf(Wire{.numberOfSensors = 0xFFFFFFFF}).get());
  ASSERT_TRUE(lying.has_value());
  EXPECT_EQ(lying->readings.size(), 2u);
  const auto cut = ParseTempIndication(IndicationOf(Wire{}, sizeof(Wire) - 1).get());
  ASSERT_TRUE(cut.has_value());
  EXPECT_EQ(cut->readings.size(), 1u);
}

TEST(TempIndication, ShorterThanItsHeaderIsNone) {
  EXPECT_FALSE(ParseTempIndication(IndicationOf(Wire{}, 7).get()).has_value());
  EXPECT_FALSE(ParseTempIndication(IndicationOf(Wire{}, 0).get()).has_value());
}

}  // namespace
}  // namespace clmctl
