/// What a speed request does besides setting speeds: it starts the polling of fans.
#include "FanSpeedTest.h"

namespace ps::hwapi::common::climate {
namespace {

using FanPollingStartTest = EachFanSpeedVersionTest;

TEST_P(FanPollingStartTest, TimerExpiresOnceAfterTwentySeconds) {
  Ask(SpeedRequest{.timePeriod = 20});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].firstUs, 20000000u);
  EXPECT_EQ(fake::Timers()[0].periodUs, 0u);
}

TEST_P(FanPollingStartTest, TimerMessageGoesFromTheFanEndpointToItself) {
  fake::SetOwnNid(0x0708);
  Ask(SpeedRequest{});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.id, 0x2C78u);
  EXPECT_EQ(fake::Timers()[0].message.receiver, 0x070804ADu);
  EXPECT_EQ(fake::Timers()[0].message.sender, 0x070804ADu);
}

TEST_P(FanPollingStartTest, RecipientIsTheGivenReceiver) {
  Ask(SpeedRequest{.receiver = Receiver(0x12, 0x34, 0x5678)});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.payload, Words({7, 0x12345678}));
  for (const std::string& text : fake::LogTexts(EAaSysLogSeverityLevel_Info)) {
    EXPECT_FALSE(text.starts_with("Recipient")) << text;
  }
}

TEST_P(FanPollingStartTest, RecipientWithOnlyATaskIsThatTask) {
  Ask(SpeedRequest{.receiver = Receiver(0, 0, 0x123)});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.payload, Words({7, 0x123}));
}

TEST_P(FanPollingStartTest, RecipientWithoutATaskIsTheRequester) {
  Ask(SpeedRequest{.receiver = Receiver(0x12, 0x34, 0)});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.payload, Words({7, kRequester}));
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info,
                           "Recipient for API_FAN_SPEED_IND_MSG not given, request sender: 0x2030abc is used instead"));
}

TEST_P(FanPollingStartTest, RequesterIsTakenOnceTheTimerMessageExists) {
  Ask(SpeedRequest{});
  EXPECT_TRUE(
      fake::CalledInOrder({{"AaSysComMsgCreate", 0x2C78, 8, kFanEndpoint},
                           {"AaSysLogPrintE", EAaSysLogSeverityLevel_Info, 0x20047,
                            "Recipient for API_FAN_SPEED_IND_MSG not given, request sender: 0x2030abc is used instead"},
                           {"AaSysTimermCreate"}}));
}

TEST_P(FanPollingStartTest, TimerThatCannotBeCreatedIsLoggedBeforeItsMessageIsDestroyed) {
  fake::FailCall("AaSysTimermCreate");
  Ask(SpeedRequest{});
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysLogPrintE", EAaSysLogSeverityLevel_Warning, 0x20047, "Could not start Fan speed polling!"},
       {"AaSysComMsgDestroy", 0x2C78}}));
}

TEST_P(FanPollingStartTest, FirstRequestDeletesNoTimer) {
  Ask(SpeedRequest{});
  EXPECT_TRUE(fake::Calls("AaSysTimerDelete").empty());
}

TEST_P(FanPollingStartTest, NextRequestReplacesTheTimer) {
  Ask(SpeedRequest{});
  const TAaSysTimerId first = fake::Timers().at(0).id;
  Forget();
  Ask(SpeedRequest{.receiver = Receiver(4, 5, 0xDEF)});
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysTimerDelete", first},
                                   {"AaSysComMsgCreate", 0x2C78, 8, kFanEndpoint},
                                   {"AaSysTimermCreate", 20000000, 0, 0x2C78, kFanEndpoint}}));
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.payload, Words({7, kOtherClient}));
}

TEST_P(FanPollingStartTest, TimerIsArmedAfterTheSpeedsAreSet) {
  Ask(SpeedRequest{});
  EXPECT_TRUE(fake::CalledInOrder(
      {{"ddal_fan_set_pwm", 0, 40}, {"AaSysTimermCreate"}, {"AaSysComMsgSend", GetParam().responseId}}));
}

TEST_P(FanPollingStartTest, TimerThatCannotBeCreatedIsAnUndefinedError) {
  fake::FailCall("AaSysTimermCreate");
  const fake::Message response = Ask(SpeedRequest{});
  EXPECT_EQ(StatusOf(response), 1u);
  EXPECT_EQ(InfoOf(response), "Couldn't start speed polling!");
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{1, 201, 40, 0}));
}

TEST_P(FanPollingStartTest, TimerThatCannotBeCreatedIsLogged) {
  fake::FailCall("AaSysTimermCreate");
  Ask(SpeedRequest{});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Warning, "Could not start Fan speed polling!"));
  EXPECT_TRUE(LoggedDebug(" message handled, status: 0x1"));
}

TEST_P(FanPollingStartTest, TimerThatCannotBeCreatedHasItsMessageDestroyed) {
  fake::FailCall("AaSysTimermCreate");
  Ask(SpeedRequest{});
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysTimermCreate"}, {"AaSysComMsgDestroy", 0x2C78}}));
  EXPECT_EQ(fake::LiveMessages(), 0u);
}

TEST_P(FanPollingStartTest, UndefinedErrorOverridesThatOfAnItem) {
  fake::FailCall("AaSysTimermCreate");
  EXPECT_EQ(StatusOf(Ask(SpeedRequest{.items = {155, 40}})), 1u);
}

TEST_P(FanPollingStartTest, TimerThatCannotBeCreatedChangesNoState) {
  fake::FailCall("AaSysTimermCreate");
  Ask(SpeedRequest{});
  EXPECT_TRUE(StateCalls().empty());
}

TEST_P(FanPollingStartTest, TimerMessageThatCannotBeCreatedIsAFailedStart) {
  fake::FailCall("AaSysComMsgCreate");
  const fake::Message response = Ask(SpeedRequest{});
  EXPECT_EQ(StatusOf(response), 1u);
  EXPECT_EQ(InfoOf(response), "Couldn't start speed polling!");
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Warning, "Could not start Fan speed polling!"));
}

TEST_P(FanPollingStartTest, TimerMessageWithoutPayloadIsAFailedStart) {
  Ask(SpeedRequest{});
  LosePayload("AaSysComMsgCreate", 0x2C78);
  EXPECT_EQ(StatusOf(Ask(SpeedRequest{})), 1u);
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysComMsgDestroy", 0x2C78}}));
}

TEST_P(FanPollingStartTest, RequestWhoseTimerCannotBeCreatedEndsThePollingOfTheOneBefore) {
  Ask(SpeedRequest{});
  Forget();
  fake::FailCall("AaSysTimermCreate");
  Ask(SpeedRequest{});
  EXPECT_TRUE(fake::Timers().empty());
}

TEST_P(FanPollingStartTest, RequestAfterAFailedStartDeletesNoTimer) {
  Ask(SpeedRequest{});
  fake::FailCall("AaSysTimermCreate");
  Forget();
  Ask(SpeedRequest{});
  Forget();
  Ask(SpeedRequest{});
  EXPECT_TRUE(fake::Calls("AaSysTimerDelete").empty());
}

TEST_P(FanPollingStartTest, PollingCanBeStartedAfterAFailure) {
  fake::FailCall("AaSysTimermCreate");
  Ask(SpeedRequest{});
  Forget();
  EXPECT_EQ(StatusOf(Ask(SpeedRequest{})), 0u);
  EXPECT_EQ(fake::Timers().size(), 1u);
}

INSTANTIATE_FOR_BOTH_SPEED_VERSIONS(FanPollingStartTest);

struct StateChange {
  u32 before;
  u32 after;
};

class FanPollingStateTest : public FanSpeedTest, public testing::WithParamInterface<StateChange> {};

TEST_P(FanPollingStateTest, FollowsFromTheOneBeforeInVersion1) {
  fake::SetServiceState(GetParam().before);
  Ask(kVersion1, SpeedRequest{});
  EXPECT_EQ(StateCalls(), (std::vector<fake::Call>{{"Service::SetUseCommonServiceState", 0},
                                                   {"Service::SetServiceStateRad", GetParam().after}}));
}

TEST_P(FanPollingStateTest, IsLeftAloneByVersion2) {
  fake::SetServiceState(GetParam().before);
  Ask(kVersion2, SpeedRequest{});
  EXPECT_TRUE(StateCalls().empty());
  EXPECT_EQ(m_service->GetServiceStateRad(), GetParam().before);
}

TEST_F(FanSpeedTest, StateIsSetBetweenTheStartOfPollingAndTheResponse) {
  Ask(kVersion1, SpeedRequest{});
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysTimermCreate"},
       {"Service::SetUseCommonServiceState", 0},
       {"Service::SetServiceStateRad", 4097},
       {"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 0x20047, "ApiSetFanSpeedReqMsg message handled, status: 0x0"},
       {"AaSysComMsgSend", kVersion1.responseId}}));
}

INSTANTIATE_TEST_SUITE_P(States, FanPollingStateTest,
                         testing::Values(StateChange{0, 4097}, StateChange{4096, 4098}, StateChange{4097, 4097},
                                         StateChange{4098, 4097}),
                         [](const auto& test) { return "From" + std::to_string(test.param.before); });

struct Period {
  u32 asked;
  u32 used;
  u32 status;
};

class FanPollingPeriodTest : public FanSpeedTest, public testing::WithParamInterface<Period> {};

TEST_P(FanPollingPeriodTest, IsAnsweredAndIsTheFirstDelay) {
  const fake::Message response = Ask(kVersion2, SpeedRequest{.timePeriod = GetParam().asked});
  EXPECT_EQ(StatusOf(response), GetParam().status);
  EXPECT_EQ(WordAt(response, 40), GetParam().used);
  EXPECT_EQ(InfoOf(response), "Fan speed polling started.");
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].firstUs, GetParam().used * 1000000);
}

INSTANTIATE_TEST_SUITE_P(Limits, FanPollingPeriodTest,
                         testing::Values(Period{0, 20, 4}, Period{7, 20, 4}, Period{8, 8, 0}, Period{120, 120, 0},
                                         Period{121, 20, 4}, Period{0xFFFFFFFF, 20, 4}),
                         [](const auto& test) { return std::to_string(test.param.asked) + "s"; });

TEST_F(FanSpeedTest, PeriodOutOfRangeIsLogged) {
  Ask(kVersion2, SpeedRequest{.timePeriod = 121});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Warning,
                           "req->timePeriod 121 is not within the acceptable range 8-120 seconds, default time 20 "
                           "seconds is used"));
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "Api2SetFanSpeedReqMsg message handled, status: 0x4"));
}

TEST_F(FanSpeedTest, PeriodOutOfRangeIsLoggedSigned) {
  Ask(kVersion2, SpeedRequest{.timePeriod = 0xFFFFFFFF});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Warning,
                           "req->timePeriod -1 is not within the acceptable range 8-120 seconds, default time 20 "
                           "seconds is used"));
}

TEST_F(FanSpeedTest, PeriodIsLookedAtBetweenTheLastFanAndTheStartOfPolling) {
  Ask(kVersion2, SpeedRequest{.timePeriod = 7});
  EXPECT_TRUE(fake::CalledInOrder(
      {{"ddal_fan_set_pwm", 0, 40},
       {"AaSysLogPrintE", EAaSysLogSeverityLevel_Warning, 0x20047,
        "req->timePeriod 7 is not within the acceptable range 8-120 seconds, default time 20 seconds is used"},
       {"AaSysComMsgCreate", 0x2C78}}));
}

TEST_F(FanSpeedTest, PeriodWithinItsLimitsIsNotLogged) {
  Ask(kVersion2, SpeedRequest{.timePeriod = 8});
  EXPECT_TRUE(fake::LogTexts(EAaSysLogSeverityLevel_Warning).empty());
}

TEST_F(FanSpeedTest, PeriodIsAnsweredAlsoWhenPollingCannotStart) {
  fake::FailCall("AaSysTimermCreate");
  const fake::Message response = Ask(kVersion2, SpeedRequest{.timePeriod = 30});
  EXPECT_EQ(StatusOf(response), 1u);
  EXPECT_EQ(WordAt(response, 40), 30u);
}

TEST_F(FanSpeedTest, UndefinedErrorOverridesThatOfAPeriodOutOfRange) {
  fake::FailCall("AaSysTimermCreate");
  EXPECT_EQ(StatusOf(Ask(kVersion2, SpeedRequest{.timePeriod = 7})), 1u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
