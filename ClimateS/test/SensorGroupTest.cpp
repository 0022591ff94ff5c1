/// A group of fixed sensors: reading, and the poll timer.
#include "FixedSensorGroup.h"
#include "ServiceOnBoard.h"

#include <array>

namespace ps::hwapi::common::climate {
namespace {

constexpr Sensor kSensors[] = {
    {.text = "FIRST", .name = TEMP_SENSOR_KEL_MCU, .device = 0x10000},
    {.text = "SECOND", .name = TEMP_SENSOR_TOV, .device = 0x50001},
};

class SensorGroupTest : public fake::PlatformTest {
 protected:
  SensorGroupTest() {
    fake::SetTemperature(0x10000, 40000);
    fake::SetTemperature(0x50001, 50000);
  }

  /// Reads into entries that are not zero before.
  std::array<STempMeasInfo, 2> Read() {
    std::array<STempMeasInfo, 2> entries;
    std::memset(entries.data(), 0xA5, sizeof(entries));
    m_group.Read(entries.data());
    return entries;
  }

  int Activate(u32 interval = 1000) { return m_group.ActivateTimer(ETempSensorType_Kel, kOtherClient, interval); }
  int Deactivate() { return m_group.DeactivateTimer(ETempSensorType_Kel); }

  FixedSensorGroup m_group{kSensors};
};

TEST_F(SensorGroupTest, CountsItsSensorsWhateverTheType) {
  EXPECT_EQ(m_group.GetNumberOfSensors(ETempSensorType_Kel), 2u);
  EXPECT_EQ(m_group.GetNumberOfSensors(ETempSensorType_Backplane), 2u);
}

TEST_F(SensorGroupTest, ReadReportsNamesInTheOrderOfTheTable) {
  const auto entries = Read();
  EXPECT_EQ(entries[0].unit_name, 6u);
  EXPECT_EQ(entries[1].unit_name, 34u);
}

TEST_F(SensorGroupTest, ReadReportsDegreesOfEachSensor) {
  const auto entries = Read();
  EXPECT_FLOAT_EQ(entries[0].unit_temp[0], 40.0f);
  EXPECT_FLOAT_EQ(entries[1].unit_temp[0], 50.0f);
}

TEST_F(SensorGroupTest, ReadMarksAGoodReadingAsValidWithoutFault) {
  const auto entries = Read();
  EXPECT_EQ(entries[0].temp_sensor_state, 1u);
  EXPECT_EQ(entries[0].i2c_fault_id, 0u);
}

TEST_F(SensorGroupTest, ReadZeroesTheUnusedTemperatures) {
  const auto entries = Read();
  for (int i = 1; i < 5; ++i) EXPECT_EQ(entries[0].unit_temp[i], 0.0f) << i;
}

TEST_F(SensorGroupTest, ReadAsksTheDriverOnceForEachSensorInOrder) {
  Read();
  EXPECT_EQ(fake::Calls("ddal_temp_get_curr"),
            (std::vector<fake::Call>{{"ddal_temp_get_curr", 0x10000}, {"ddal_temp_get_curr", 0x50001}}));
}

TEST_F(SensorGroupTest, ReadKeepsThousandthsButLogsTwoDecimals) {
  fake::SetTemperature(0x10000, 1234);
  EXPECT_FLOAT_EQ(Read()[0].unit_temp[0], 1.234f);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "Temperature read from sensor: FIRST (6) temperature 1.23"));
}

TEST_F(SensorGroupTest, ReadReportsTemperaturesBelowZero) {
  fake::SetTemperature(0x50001, -5678);
  EXPECT_FLOAT_EQ(Read()[1].unit_temp[0], -5.678f);
  EXPECT_TRUE(
      fake::Logged(EAaSysLogSeverityLevel_Debug, "Temperature read from sensor: SECOND (34) temperature -5.68"));
}

TEST_F(SensorGroupTest, LogLinesCarryTheFeatureOfTheService) {
  Read();
  ASSERT_FALSE(fake::LogLines().empty());
  for (const fake::LogLine& line : fake::LogLines()) EXPECT_EQ(line.feature, 131143u) << line;
}

TEST_F(SensorGroupTest, FailedSensorHasStateZeroAndTheAbsoluteFaultCode) {
  fake::FailTemperature(0x10000, -42);
  const auto entries = Read();
  EXPECT_EQ(entries[0].unit_name, 6u);
  EXPECT_EQ(entries[0].temp_sensor_state, 0u);
  EXPECT_EQ(entries[0].i2c_fault_id, 42u);
}

TEST_F(SensorGroupTest, PositiveFaultCodeStaysAsItIs) {
  fake::FailTemperature(0x10000, 42);
  EXPECT_EQ(Read()[0].i2c_fault_id, 42u);
}

TEST_F(SensorGroupTest, SmallestFaultCodeIsReportedWithoutOverflow) {
  fake::FailTemperature(0x10000, -2147483647 - 1);
  EXPECT_EQ(Read()[0].i2c_fault_id, 2147483648u);
}

TEST_F(SensorGroupTest, FailedSensorReportsZeroTemperatures) {
  fake::FailTemperature(0x10000, -2);
  const auto entries = Read();
  for (const float degrees : entries[0].unit_temp) EXPECT_EQ(degrees, 0.0f);
}

TEST_F(SensorGroupTest, FailedSensorIsLoggedWithTheDriversText) {
  fake::FailTemperature(0x10000, -2);
  Read();
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error,
                           "Can not read temperature from temp sensor: FIRST. DDAL ecode -2, driver error -2"));
  EXPECT_TRUE(fake::CalledInOrder({{"ddal_temp_get_curr", 0x10000}, {"ddal_strerror", -2, 60}}));
}

TEST_F(SensorGroupTest, FailedSensorLogsNoTemperature) {
  fake::FailTemperature(0x10000, -2);
  fake::FailTemperature(0x50001, -2);
  Read();
  for (const std::string& text : fake::LogTexts(EAaSysLogSeverityLevel_Debug)) {
    EXPECT_FALSE(text.starts_with("Temperature read")) << text;
  }
}

TEST_F(SensorGroupTest, FailedSensorDoesNotStopTheRead) {
  fake::FailTemperature(0x10000, -2);
  const auto entries = Read();
  EXPECT_EQ(entries[1].temp_sensor_state, 1u);
  EXPECT_FLOAT_EQ(entries[1].unit_temp[0], 50.0f);
}

TEST_F(SensorGroupTest, ReadWhereEverySensorFailsFillsEveryEntry) {
  fake::FailEvery("ddal_temp_get_curr", -7);
  const auto entries = Read();
  for (const STempMeasInfo& entry : entries) {
    EXPECT_EQ(entry.temp_sensor_state, 0u);
    EXPECT_EQ(entry.i2c_fault_id, 7u);
  }
  EXPECT_EQ(entries[1].unit_name, 34u);
}

TEST_F(SensorGroupTest, ReadingThatTheDriverDidNotWriteIsThatOfTheSensorBefore) {
  fake::FailCall("ddal_temp_get_curr", 2, 0);
  EXPECT_FLOAT_EQ(Read()[1].unit_temp[0], 40.0f);
}

TEST_F(SensorGroupTest, FirstReadingThatTheDriverDidNotWriteIsZero) {
  fake::FailCall("ddal_temp_get_curr", 1, 0);
  EXPECT_EQ(Read()[0].unit_temp[0], 0.0f);
}

TEST_F(SensorGroupTest, EmptyGroupReadsNothing) {
  SensorGroup empty;
  empty.Read(nullptr);
  EXPECT_EQ(empty.GetNumberOfSensors(ETempSensorType_Kel), 0u);
  EXPECT_TRUE(fake::Calls("ddal_temp_get_curr").empty());
}

struct IntervalLimit {
  u32 interval;
  int answer;
};

class SensorGroupIntervalTest : public SensorGroupTest, public testing::WithParamInterface<IntervalLimit> {};

TEST_P(SensorGroupIntervalTest, IsAcceptedWithinItsLimitsOnly) {
  EXPECT_EQ(Activate(GetParam().interval), GetParam().answer);
  EXPECT_EQ(fake::Timers().size(), GetParam().answer == 0 ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Limits, SensorGroupIntervalTest,
                         testing::Values(IntervalLimit{0, 5}, IntervalLimit{899, 5}, IntervalLimit{900, 0},
                                         IntervalLimit{4294967, 0}, IntervalLimit{4294968, 5},
                                         IntervalLimit{0xFFFFFFFF, 5}),
                         [](const auto& test) { return std::to_string(test.param.interval) + "ms"; });

TEST_F(SensorGroupTest, TimerExpiresAtOnceAndThenWithTheIntervalAsPeriod) {
  Activate(900);
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].firstUs, 1u);
  EXPECT_EQ(fake::Timers()[0].periodUs, 900000u);
}

TEST_F(SensorGroupTest, LongestIntervalFitsInTheTimersMicroseconds) {
  Activate(4294967);
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].periodUs, 4294967000u);
}

TEST_F(SensorGroupTest, TimerMessageGoesToTheServiceItselfInTheNameOfTheClient) {
  fake::SetOwnNid(0x0708);
  Activate();
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message,
            (fake::Message{.id = 0x203F, .payload = Words({6}), .sender = kOtherClient, .receiver = 0x070804B6}));
}

TEST_F(SensorGroupTest, SecondStartIsRefusedAndLeavesTheTimer) {
  Activate(1000);
  EXPECT_EQ(Activate(2000), 6);
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].periodUs, 1000000u);
}

TEST_F(SensorGroupTest, SecondStartIsRefusedBeforeItsIntervalIsLookedAt) {
  Activate(1000);
  EXPECT_EQ(Activate(0), 6);
}

TEST_F(SensorGroupTest, SecondStartCreatesNoMessage) {
  Activate();
  fake::Clear();
  Activate();
  EXPECT_TRUE(fake::Calls("AaSysComMsgCreate").empty());
}

TEST_F(SensorGroupTest, StopAnswersNoErrorAndDeletesTheTimer) {
  Activate();
  EXPECT_EQ(Deactivate(), 0);
  EXPECT_TRUE(fake::Timers().empty());
}

TEST_F(SensorGroupTest, StartAfterAStopIsAccepted) {
  Activate();
  Deactivate();
  EXPECT_EQ(Activate(), 0);
  EXPECT_EQ(fake::Timers().size(), 1u);
}

TEST_F(SensorGroupTest, StopOfAStoppedGroupAnswersNoError) { EXPECT_EQ(Deactivate(), 0); }

TEST_F(SensorGroupTest, StopOfAStoppedGroupDeletesTheTimerZeroAllTheSame) {
  Deactivate();
  EXPECT_EQ(fake::Calls("AaSysTimerDelete"), (std::vector<fake::Call>{{"AaSysTimerDelete", 0}}));
}

TEST_F(SensorGroupTest, StopAnswersNoErrorAlsoWhenTheTimerCannotBeDeleted) {
  Activate();
  fake::FailCall("AaSysTimerDelete");
  EXPECT_EQ(Deactivate(), 0);
  EXPECT_EQ(Activate(), 0);
}

TEST_F(SensorGroupTest, IntervalOutOfRangeDestroysTheTimersMessage) {
  EXPECT_EQ(Activate(899), 5);
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysComMsgCreate", 0x203F, 4, kTemperatureEndpoint},
                                   {"AaSysComMsgSetSender", 0x203F, kOtherClient},
                                   {"AaSysComMsgDestroy", 0x203F}}));
  EXPECT_TRUE(fake::Calls("AaSysTimermCreate").empty());
}

TEST_F(SensorGroupTest, TimerThatCannotBeCreatedIsAnsweredAsAnIntervalError) {
  fake::FailCall("AaSysTimermCreate");
  EXPECT_EQ(Activate(), 5);
  EXPECT_EQ(fake::LiveMessages(), 0u);
}

TEST_F(SensorGroupTest, GroupStaysStoppedWhenItsTimerCannotBeCreated) {
  fake::FailCall("AaSysTimermCreate");
  Activate();
  EXPECT_EQ(Activate(), 0);
}

TEST_F(SensorGroupTest, MessageThatCannotBeCreatedThrows) {
  fake::FailCall("AaSysComMsgCreate");
  try {
    Activate();
    FAIL() << "nothing was thrown";
  } catch (const SensorGroup::MsgCreationFailedException& e) {
    EXPECT_STREQ(e.what(), "Message creation failed");
    EXPECT_EQ(e.getDescription(), "Message allocation failed for API_TEMPERATURE_POLL_TIMER_IND_MSG");
    EXPECT_EQ(e.getFile(), "SensorGroup.cpp");
    EXPECT_NE(e.getLine(), 0u);
  }
}

TEST_F(SensorGroupTest, MessageIsCreatedBeforeTheIntervalIsLookedAt) {
  fake::FailCall("AaSysComMsgCreate");
  EXPECT_THROW(Activate(0), SensorGroup::MsgCreationFailedException);
}

TEST_F(SensorGroupTest, GroupStaysStoppedWhenItsMessageCannotBeCreated) {
  fake::FailCall("AaSysComMsgCreate");
  EXPECT_THROW(Activate(), SensorGroup::MsgCreationFailedException);
  EXPECT_EQ(Activate(), 0);
}

TEST_F(SensorGroupTest, GroupWithoutATimerAnswersSensorTypeToAStart) {
  SensorGroup group;
  EXPECT_EQ(group.ActivateTimer(ETempSensorType_Kel, kOtherClient, 1000), 3);
}

TEST_F(SensorGroupTest, GroupWithoutATimerAnswersNoErrorToAStop) {
  SensorGroup group;
  EXPECT_EQ(group.DeactivateTimer(ETempSensorType_Kel), 0);
  EXPECT_TRUE(fake::Calls("AaSysTimerDelete").empty());
}

TEST_F(SensorGroupTest, AutodetectionIsOnlyLogged) {
  m_group.HandleAutodetUnitInd(4096, 18, 2);
  EXPECT_EQ(fake::LogLines(),
            (std::vector<fake::LogLine>{{EAaSysLogSeverityLevel_Info, 131143,
                                         "SensorGroup::HandleAutodetUnitInd NOT IMPLEMENTED hw_sw_id'4096' "
                                         "unit_id'18' autodetectionState'2'"}}));
  EXPECT_EQ(m_group.GetNumberOfSensors(ETempSensorType_Kel), 2u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
