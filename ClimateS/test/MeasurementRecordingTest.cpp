/// When the start of a temperature measurement lets the black box record readings.
#include "BlackBoxTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::IsEmpty;

/// A service with a black box that does not record yet.
class MeasurementRecordingTest : public ServiceOnBoardTest {
 protected:
  static constexpr u32 kRequest = 0x2B29;
  static constexpr u32 kResponse = 0x2B2A;
  static constexpr u32 kTimerMessage = 0x203F;

  MeasurementRecordingTest() {
    fake::Unit().type = EUnitType_Kel;
    Start(EUnitVersion_Kela);
  }

  static fake::Message StartMeasuring(u32 interval) {
    return {.id = kRequest, .payload = Words({0, 6, interval, 0, 0}), .sender = kRequester};
  }
  /// @return the error of the response
  static u32 ErrorOfStart(u32 interval = 1000) {
    fake::ClearSentMessages();
    return WordAt(AnswerTo(StartMeasuring(interval), kResponse), 8);
  }

  static bool Records() { return BlackBoxData::getInstance()->isTemperatureTraceEnabled() == 1; }

  BlackBoxBoard m_board;
  const fake::Call m_recording{"AaSysComEuCreateAndStart", "BlackBoxData"};
  const fake::Call m_ownState{"Service::SetUseCommonServiceState", 0};
  const fake::Call m_state{"Service::SetServiceStateRad", 4096};
};

TEST_F(MeasurementRecordingTest, BeginsBetweenTheStartOfTheTimerAndTheState) {
  EXPECT_EQ(ErrorOfStart(), 0u);
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysTimermCreate"}, m_recording, m_ownState, m_state}));
}

TEST_F(MeasurementRecordingTest, BeginsBetweenARefusedIntervalAndTheState) {
  EXPECT_EQ(ErrorOfStart(899), 5u);
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysComMsgDestroy", kTimerMessage}, m_recording, m_ownState, m_state}));
}

TEST_F(MeasurementRecordingTest, BeginsBetweenAFailedStartOfTheTimerAndTheState) {
  fake::FailCall("AaSysTimermCreate");
  EXPECT_EQ(ErrorOfStart(), 5u);
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysTimermCreate"}, {"AaSysComMsgDestroy", kTimerMessage}, m_recording, m_ownState, m_state}));
}

TEST_F(MeasurementRecordingTest, BeginsWithASecondStartWhenItCouldNotWithTheFirst) {
  fake::FailCall("AaSysComEuCreateAndStart", 1, 11);
  EXPECT_EQ(ErrorOfStart(), 0u);
  EXPECT_FALSE(Records());
  fake::Clear();
  EXPECT_EQ(ErrorOfStart(), 6u);
  EXPECT_TRUE(Records());
  EXPECT_TRUE(fake::CalledInOrder({m_recording, m_ownState, m_state}));
}

TEST_F(MeasurementRecordingTest, DoesNotBeginWhenTheTimersMessageCannotBeCreated) {
  fake::FailCall("AaSysComMsgCreate");
  EXPECT_EQ(Refusal(StartMeasuring(1000)),
            "Message creation failed: Message allocation failed for API_TEMPERATURE_POLL_TIMER_IND_MSG");
  EXPECT_FALSE(Records());
  EXPECT_THAT(fake::Calls("AaSysComEuCreateAndStart"), IsEmpty());
}

}  // namespace
}  // namespace ps::hwapi::common::climate
