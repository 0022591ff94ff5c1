/// Requests that start and stop the measurement of a sensor group.
#include "ServiceOnBoard.h"

#include <cstdlib>
#include <exception>
#include <stdexcept>

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kRequestId = 0x2B29;
constexpr u32 kResponseId = 0x2B2A;

struct Request {
  u32 command = 0;  ///< start
  u32 sensorType = 6;
  u32 interval = 1000;
  u32 resolution = 0;
  u32 clientAddr = 0;
};

class TemperatureRequestTest : public ServiceOnBoardTest {
 protected:
  TemperatureRequestTest() { Start(EUnitVersion_Kela); }

  static fake::Message MessageOf(fake::Bytes payload) {
    return {.id = kRequestId, .payload = std::move(payload), .sender = kRequester, .receiver = kTemperatureEndpoint};
  }
  static fake::Message MessageOf(const Request& r) {
    return MessageOf(Words({r.command, r.sensorType, r.interval, r.resolution, r.clientAddr}));
  }

  /// @return the response
  template <typename Content>
  static fake::Message Ask(const Content& content) {
    fake::ClearSentMessages();
    return AnswerTo(MessageOf(content), kResponseId);
  }
  /// @return the error of the response
  static u32 ErrorOf(const Request& request) { return WordAt(Ask(request), 8); }
  static u32 ErrorOf(const fake::Bytes& payload) { return WordAt(Ask(payload), 8); }

  u32 State() const { return m_service->GetServiceStateRad(); }
  /// The calls that tell the platform about the state.
  static std::vector<fake::Call> StateCalls() {
    return fake::Calls({"Service::SetServiceStateRad", "Service::SetUseCommonServiceState"});
  }
};

TEST_F(TemperatureRequestTest, StartIsAnsweredToTheRequester) {
  EXPECT_EQ(
      Ask(Request{}),
      (fake::Message{
          .id = kResponseId, .payload = Words({0, 6, 0}), .sender = kTemperatureEndpoint, .receiver = kRequester}));
}

TEST_F(TemperatureRequestTest, ResponseCopiesCommandAndTypeWhateverTheyAre) {
  EXPECT_EQ(Ask(Request{.command = 77, .sensorType = 99}).payload, Words({77, 99, 3}));
}

TEST_F(TemperatureRequestTest, StartArmsTheTimerOfTheGroup) {
  Ask(Request{.interval = 2500});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].firstUs, 1u);
  EXPECT_EQ(fake::Timers()[0].periodUs, 2500000u);
  EXPECT_EQ(fake::Timers()[0].message.payload, Words({6}));
}

TEST_F(TemperatureRequestTest, StartWithoutClientAddressMeansTheRequester) {
  Ask(Request{.clientAddr = 0});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.sender, kRequester);
}

TEST_F(TemperatureRequestTest, StartWithAClientAddressMeansThatClient) {
  Ask(Request{.clientAddr = kOtherClient});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.sender, kOtherClient);
}

TEST_F(TemperatureRequestTest, ResponseGoesToTheRequesterAlsoWithAClientAddress) {
  EXPECT_EQ(Ask(Request{.clientAddr = kOtherClient}).receiver, kRequester);
}

TEST_F(TemperatureRequestTest, TypeWithoutAGroupIsAnsweredAsASensorTypeError) {
  EXPECT_EQ(ErrorOf(Request{.sensorType = 0}), 3u);
  EXPECT_EQ(ErrorOf(Request{.sensorType = 5}), 3u);
  EXPECT_EQ(ErrorOf(Request{.sensorType = 0xFFFFFFFF}), 3u);
  for (u32 sensorType = 15; sensorType <= 45; ++sensorType) EXPECT_EQ(ErrorOf(Request{.sensorType = sensorType}), 3u);
}

TEST_F(TemperatureRequestTest, TypeWhoseGroupThisUnitLacksIsASensorTypeError) {
  EXPECT_EQ(ErrorOf(Request{.sensorType = 9}), 3u);
}

TEST_F(TemperatureRequestTest, MissingGroupIsFoundBeforeAnUnknownCommand) {
  EXPECT_EQ(ErrorOf(Request{.command = 2, .sensorType = 5}), 3u);
}

TEST_F(TemperatureRequestTest, MissingGroupChangesNoState) {
  Ask(Request{.sensorType = 5});
  EXPECT_TRUE(StateCalls().empty());
}

TEST_F(TemperatureRequestTest, UnknownCommandIsAnsweredAsACommandError) {
  EXPECT_EQ(ErrorOf(Request{.command = 2}), 4u);
  EXPECT_EQ(ErrorOf(Request{.command = 0xFFFFFFFF}), 4u);
}

TEST_F(TemperatureRequestTest, UnknownCommandIsFoundBeforeABadInterval) {
  EXPECT_EQ(ErrorOf(Request{.command = 2, .interval = 1}), 4u);
}

TEST_F(TemperatureRequestTest, UnknownCommandChangesNeitherStateNorTimers) {
  Ask(Request{.command = 2});
  EXPECT_TRUE(StateCalls().empty());
  EXPECT_TRUE(fake::Timers().empty());
}

TEST_F(TemperatureRequestTest, IntervalOutsideItsLimitsIsAnIntervalError) {
  EXPECT_EQ(ErrorOf(Request{.interval = 899}), 5u);
  EXPECT_EQ(ErrorOf(Request{.interval = 4294968}), 5u);
}

TEST_F(TemperatureRequestTest, IntervalsAtTheirLimitsAreAccepted) {
  EXPECT_EQ(ErrorOf(Request{.sensorType = 6, .interval = 900}), 0u);
  EXPECT_EQ(ErrorOf(Request{.sensorType = 7, .interval = 4294967}), 0u);
}

TEST_F(TemperatureRequestTest, SecondStartIsAnsweredAlreadyStarted) {
  Ask(Request{});
  EXPECT_EQ(ErrorOf(Request{}), 6u);
}

TEST_F(TemperatureRequestTest, AnotherClientCannotStartARunningGroup) {
  Ask(Request{});
  EXPECT_EQ(ErrorOf(Request{.interval = 1, .clientAddr = kOtherClient}), 6u);
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.sender, kRequester);
}

TEST_F(TemperatureRequestTest, GroupsHaveTimersOfTheirOwn) {
  EXPECT_EQ(ErrorOf(Request{.sensorType = 6}), 0u);
  EXPECT_EQ(ErrorOf(Request{.sensorType = 7}), 0u);
  EXPECT_EQ(fake::Timers().size(), 2u);
}

TEST_F(TemperatureRequestTest, DaxTypesOfARadioModuleShareOneGroup) {
  Start(EUnitVersion_Vyga);
  EXPECT_EQ(ErrorOf(Request{.sensorType = 1}), 0u);
  for (const u32 sensorType : {2u, 3u, 4u}) EXPECT_EQ(ErrorOf(Request{.sensorType = sensorType}), 6u) << sensorType;
}

TEST_F(TemperatureRequestTest, ResolutionIsIgnored) {
  EXPECT_EQ(ErrorOf(Request{.sensorType = 6, .resolution = 1}), 0u);
  EXPECT_EQ(ErrorOf(Request{.sensorType = 7, .resolution = 99}), 0u);
}

TEST_F(TemperatureRequestTest, StopEndsTheMeasurement) {
  Ask(Request{});
  EXPECT_EQ(ErrorOf(Request{.command = 1}), 0u);
  EXPECT_TRUE(fake::Timers().empty());
}

TEST_F(TemperatureRequestTest, StopOfAStoppedGroupIsNoError) { EXPECT_EQ(ErrorOf(Request{.command = 1}), 0u); }

TEST_F(TemperatureRequestTest, StopFromAnotherClientEndsTheMeasurementForWhoeverStartedIt) {
  Ask(Request{});
  fake::Message stop = MessageOf(Request{.command = 1});
  stop.sender = kOtherClient;
  EXPECT_EQ(Refusal(stop), "");
  EXPECT_TRUE(fake::Timers().empty());
}

TEST_F(TemperatureRequestTest, StopLeavesOtherGroupsRunning) {
  Ask(Request{.sensorType = 6});
  Ask(Request{.sensorType = 7});
  Ask(Request{.command = 1, .sensorType = 6});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.payload, Words({7}));
}

TEST_F(TemperatureRequestTest, StartAfterAStopIsAccepted) {
  Ask(Request{});
  Ask(Request{.command = 1});
  EXPECT_EQ(ErrorOf(Request{}), 0u);
}

TEST_F(TemperatureRequestTest, StartWithAShortIntervalAnswersIntervalButSetsTheState) {
  EXPECT_EQ(ErrorOf(Request{.interval = 500}), 5u);
  EXPECT_EQ(State(), 4096u);
}

TEST_F(TemperatureRequestTest, StartWithAShortIntervalWhileFansArePolledMeansBothArePolled) {
  fake::SetServiceState(4097);
  EXPECT_EQ(ErrorOf(Request{.interval = 500}), 5u);
  EXPECT_EQ(State(), 4098u);
}

TEST_F(TemperatureRequestTest, SecondStartSetsTheStateAgain) {
  Ask(Request{});
  fake::SetServiceState(4097);
  EXPECT_EQ(ErrorOf(Request{}), 6u);
  EXPECT_EQ(State(), 4098u);
}

TEST_F(TemperatureRequestTest, StartLeavesTheCommonStateAndThenSetsItsOwn) {
  Ask(Request{});
  EXPECT_EQ(StateCalls(),
            (std::vector<fake::Call>{{"Service::SetUseCommonServiceState", 0}, {"Service::SetServiceStateRad", 4096}}));
}

struct StateChange {
  u32 before;
  u32 after;
};

class StartStateTest : public TemperatureRequestTest, public testing::WithParamInterface<StateChange> {};

TEST_P(StartStateTest, FollowsFromTheOneBefore) {
  fake::SetServiceState(GetParam().before);
  Ask(Request{});
  EXPECT_EQ(State(), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(States, StartStateTest,
                         testing::Values(StateChange{0, 4096}, StateChange{4096, 4096}, StateChange{4097, 4098},
                                         StateChange{4098, 4096}),
                         [](const auto& test) { return "From" + std::to_string(test.param.before); });

TEST_F(TemperatureRequestTest, StopWhileOnlyFansArePolledChangesNoState) {
  fake::SetServiceState(4097);
  EXPECT_EQ(ErrorOf(Request{.command = 1}), 0u);
  EXPECT_EQ(State(), 4097u);
  EXPECT_TRUE(StateCalls().empty());
}

TEST_F(TemperatureRequestTest, StopWhileBothArePolledMeansOnlyFansArePolled) {
  fake::SetServiceState(4098);
  Ask(Request{.command = 1});
  EXPECT_EQ(StateCalls(), (std::vector<fake::Call>{{"Service::SetServiceStateRad", 4097}}));
}

TEST_F(TemperatureRequestTest, StopWhileOnlyTemperatureIsPolledReturnsToTheCommonState) {
  fake::SetServiceState(4096);
  Ask(Request{.command = 1});
  EXPECT_EQ(StateCalls(), (std::vector<fake::Call>{{"Service::SetUseCommonServiceState", 1}}));
}

TEST_F(TemperatureRequestTest, StopInAnyOtherStateReturnsToTheCommonState) {
  fake::SetServiceState(0);
  Ask(Request{.command = 1});
  EXPECT_EQ(StateCalls(), (std::vector<fake::Call>{{"Service::SetUseCommonServiceState", 1}}));
}

TEST_F(TemperatureRequestTest, ArrivalIsLoggedWithTheAnswer) {
  Ask(Request{.interval = 500, .resolution = 1, .clientAddr = kOtherClient});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "ApiTempMeasReq message arrived 0 6 500 1 0x4050DEF. Responded with status 5"));
}

TEST_F(TemperatureRequestTest, ArrivalIsLoggedWithTheClientAddressAsRequested) {
  Ask(Request{.command = 1, .sensorType = 5, .clientAddr = 0});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "ApiTempMeasReq message arrived 1 5 1000 0 0x0. Responded with status 3"));
}

TEST_F(TemperatureRequestTest, ArrivalIsLoggedBeforeTheResponseIsSent) {
  Ask(Request{});
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 131143,
                                    "ApiTempMeasReq message arrived 0 6 1000 0 0x0. Responded with status 0"},
                                   {"AaSysComMsgSend", kResponseId}}));
}

TEST_F(TemperatureRequestTest, ArrivalShowsTheClientAddressInHexadecimalAndAllElseSigned) {
  Ask(Words({0x80000000, 0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD, 0xFFFFFFFC}));
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "ApiTempMeasReq message arrived -2147483648 -1 -2 -3 0xFFFFFFFC. Responded with status 3"));
}

TEST_F(TemperatureRequestTest, ReplyThatCannotBeCreatedIsRefusedBeforeAnythingIsDone) {
  fake::FailCall("AaSysComMsgCreateReply");
  EXPECT_EQ(Refusal(MessageOf(Request{})), "Message handling error: Creation of API_TEMP_MEAS_RESP_MSG failed");
  EXPECT_TRUE(fake::Timers().empty());
  EXPECT_TRUE(fake::SentMessages().empty());
}

TEST_F(TemperatureRequestTest, TimerMessageThatCannotBeCreatedIsRefusedWithTheReasonOfTheGroup) {
  fake::FailCall("AaSysComMsgCreate");
  EXPECT_EQ(Refusal(MessageOf(Request{})),
            "Message creation failed: Message allocation failed for API_TEMPERATURE_POLL_TIMER_IND_MSG");
}

TEST_F(TemperatureRequestTest, TimerMessageThatCannotBeCreatedLeavesNoReplyAndNoState) {
  fake::FailCall("AaSysComMsgCreate");
  Refusal(MessageOf(Request{}));
  EXPECT_TRUE(fake::SentMessages().empty());
  EXPECT_TRUE(StateCalls().empty());
  EXPECT_EQ(fake::LiveMessages(), 0u);
}

TEST_F(TemperatureRequestTest, RefusalKeepsThePlaceWhereTheGroupFailed) {
  fake::FailCall("AaSysComMsgCreate");
  try {
    fake::Dispatch(MessageOf(Request{}));
    FAIL() << "nothing was thrown";
  } catch (const MsgHandlingException& refusal) {
    EXPECT_EQ(refusal.getFile(), "SensorGroup.cpp");
    EXPECT_NE(refusal.getLine(), 0u);
  }
}

TEST_F(TemperatureRequestTest, TimerThatCannotBeCreatedIsAnIntervalErrorThatSetsTheState) {
  fake::FailCall("AaSysTimermCreate");
  EXPECT_EQ(ErrorOf(Request{}), 5u);
  EXPECT_EQ(State(), 4096u);
}

TEST_F(TemperatureRequestTest, MissingPayloadIsRefusedAndTheReplyDestroyed) {
  EXPECT_EQ(Refusal(MessageOf(fake::Bytes{})), "Message handling error: Payload missing from API_TEMP_MEAS_REQ_MSG");
  EXPECT_TRUE(fake::SentMessages().empty());
  EXPECT_EQ(fake::LiveMessages(), 0u);
}

TEST_F(TemperatureRequestTest, FieldsBeyondAShortPayloadAreZero) {
  EXPECT_EQ(ErrorOf(Words({0, 6})), 5u);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "ApiTempMeasReq message arrived 0 6 0 0 0x0. Responded with status 5"));
}

TEST_F(TemperatureRequestTest, PayloadWithoutItsLastFieldMeansTheRequester) {
  EXPECT_EQ(ErrorOf(Words({0, 6, 1000, 0})), 0u);
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.sender, kRequester);
}

TEST_F(TemperatureRequestTest, FieldThatIsCutIsFilledWithZeros) {
  EXPECT_EQ(Ask(fake::Bytes{1}).payload, Words({1, 0, 3}));
}

TEST_F(TemperatureRequestTest, BytesBehindTheRecordAreIgnored) {
  EXPECT_EQ(Ask(Words({0, 6, 1000, 0, kOtherClient, 0xDEAD, 0xBEEF})).payload, Words({0, 6, 0}));
}

TEST_F(TemperatureRequestTest, AnyOtherExceptionThanOneOfMessageHandlingEndsTheProcess) {
  fake::OnSent(kResponseId, [](const fake::Message&) { throw std::runtime_error("something else"); });
  const auto request = [] {
    std::set_terminate([] { std::exit(3); });  // not killed: what counts lines is still heard
    fake::Dispatch(MessageOf(Request{}));
  };
  EXPECT_EXIT(request(), testing::ExitedWithCode(3), "");
}

}  // namespace
}  // namespace ps::hwapi::common::climate
