/// Requests that set the speed of fans: what both versions do with their items.
#include "FanSpeedTest.h"

namespace ps::hwapi::common::climate {
namespace {

using FanSpeedRequestTest = EachFanSpeedVersionTest;

TEST_P(FanSpeedRequestTest, EachFanGetsItsSpeed) {
  Ask(SpeedRequest{.items = {201, 40, 202, 50, 203, 60}});
  EXPECT_EQ(SpeedCalls(), (std::vector<fake::Call>{
                              {"ddal_fan_set_pwm", 0, 40}, {"ddal_fan_set_pwm", 1, 50}, {"ddal_fan_set_pwm", 2, 60}}));
}

TEST_P(FanSpeedRequestTest, ResponseGoesToTheRequester) {
  const fake::Message response = Ask(SpeedRequest{.receiver = Receiver(4, 5, 0xDEF)});
  EXPECT_EQ(response.receiver, kRequester);
  EXPECT_EQ(response.sender, kFanEndpoint);
}

TEST_P(FanSpeedRequestTest, ResponseCarriesTheTransactionTheOutcomeAndEachItem) {
  const fake::Message response = Ask(SpeedRequest{.items = {201, 40, 203, 60}});
  EXPECT_EQ(WordAt(response, 0), 7u);
  EXPECT_EQ(StatusOf(response), 0u);
  EXPECT_EQ(InfoOf(response), "Fan speed polling started.");
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{2, 201, 40, 0, 203, 60, 0}));
}

TEST_P(FanSpeedRequestTest, InfoTextIsFollowedByZeros) {
  EXPECT_EQ(InfoFieldOf(Ask(SpeedRequest{})), InfoField("Fan speed polling started."));
  Forget();
  fake::FailCall("AaSysTimermCreate");
  EXPECT_EQ(InfoFieldOf(Ask(SpeedRequest{})), InfoField("Couldn't start speed polling!"));
}

TEST_P(FanSpeedRequestTest, MoreThanThreeItemsAreHandled) {
  const fake::Message response = Ask(SpeedRequest{.items = {201, 1, 202, 2, 203, 3, 201, 4}});
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{4, 201, 1, 0, 202, 2, 0, 203, 3, 0, 201, 4, 0}));
  EXPECT_EQ(fake::GetFan(0).control, 4);
}

TEST_P(FanSpeedRequestTest, UnknownFanFailsAloneButMarksTheRequest) {
  const fake::Message response = Ask(SpeedRequest{.items = {155, 40, 202, 50}});
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{2, 155, 40, 4, 202, 50, 0}));
  EXPECT_EQ(fake::GetFan(1).control, 50);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Warning, "Invalid EFanUnit: 0x9b"));
}

TEST_P(FanSpeedRequestTest, FailedItemDoesNotHideThatPollingStarted) {
  const fake::Message response = Ask(SpeedRequest{.items = {155, 40}});
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(InfoOf(response), "Fan speed polling started.");
  EXPECT_EQ(fake::Timers().size(), 1u);
}

TEST_P(FanSpeedRequestTest, DriverFailureFailsItsItem) {
  fake::FailCall("ddal_fan_set_pwm", 1, -2);
  const fake::Message response = Ask(SpeedRequest{.items = {201, 40, 202, 50}});
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{2, 201, 40, 4, 202, 50, 0}));
  EXPECT_EQ(fake::GetFan(1).control, 50);
}

TEST_P(FanSpeedRequestTest, DriverFailureIsLoggedWithItsText) {
  Ask(SpeedRequest{.items = {202, 101}});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error,
                           "Setting speed value 101 for 0xca failed. DDAL ecode -3, driver error -3"));
  EXPECT_TRUE(fake::CalledInOrder({{"ddal_strerror", -3, 60}}));
}

TEST_P(FanSpeedRequestTest, SpeedThatTheDriverRefusesIsLoggedSigned) {
  Ask(SpeedRequest{.items = {201, 0xFFFFFFFF}});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error,
                           "Setting speed value -1 for 0xc9 failed. DDAL ecode -3, driver error -3"));
}

TEST_P(FanSpeedRequestTest, SizeIsCheckedBeforeTheReplyIsCreated) {
  Ask(SpeedRequest{.numOfItems = 2});
  const std::string sizes = " (size " + std::to_string(GetParam().head + 8) + " != calculated size " +
                            std::to_string(GetParam().head + 16) + ")";
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug},
                                   {"AaSysLogPrintE", EAaSysLogSeverityLevel_Error, 0x20047,
                                    "Message payload size seems wrong in " + GetParam().message + "_REQ_MSG" + sizes},
                                   {"AaSysComMsgCreateReply", GetParam().responseId}}));
}

TEST_P(FanSpeedRequestTest, OutcomeIsLoggedBetweenTheStartOfPollingAndTheResponse) {
  Ask(SpeedRequest{});
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysTimermCreate"},
       {"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 0x20047, GetParam().logName + " message handled, status: 0x0"},
       {"AaSysComMsgSend", GetParam().responseId}}));
}

TEST_P(FanSpeedRequestTest, OutcomeIsLogged) {
  Ask(SpeedRequest{});
  EXPECT_TRUE(LoggedDebug(" message handled, status: 0x0"));
}

TEST_P(FanSpeedRequestTest, FailedOutcomeIsLogged) {
  Ask(SpeedRequest{.items = {155, 40}});
  EXPECT_TRUE(LoggedDebug(" message handled, status: 0x4"));
}

TEST_P(FanSpeedRequestTest, LongerPayloadIsASizeErrorAndOnlyItsFirstItemIsHandled) {
  const fake::Message response = Ask(SpeedRequest{.numOfItems = 1, .items = {201, 40, 202, 50}});
  EXPECT_TRUE(LoggedSizes(GetParam().head + 16, GetParam().head + 8));
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{1, 201, 40, 0}));
  EXPECT_EQ(SpeedCalls().size(), 1u);
}

TEST_P(FanSpeedRequestTest, ShorterPayloadIsASizeErrorAndOnlyItsFirstItemIsHandled) {
  const fake::Message response = Ask(SpeedRequest{.numOfItems = 3, .items = {201, 40, 202, 50}});
  EXPECT_TRUE(LoggedSizes(GetParam().head + 16, GetParam().head + 24));
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{1, 201, 40, 0}));
  EXPECT_EQ(SpeedCalls().size(), 1u);
}

TEST_P(FanSpeedRequestTest, SizeErrorStillStartsPolling) {
  EXPECT_EQ(InfoOf(Ask(SpeedRequest{.numOfItems = 2})), "Fan speed polling started.");
  EXPECT_EQ(fake::Timers().size(), 1u);
}

TEST_P(FanSpeedRequestTest, NoItemsInAPayloadWithoutAnyAreASizeError) {
  const fake::Message response = Ask(SpeedRequest{.items = {}});
  EXPECT_TRUE(LoggedSizes(GetParam().head, GetParam().head + 8));
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{1, 0, 0, 4}));
  EXPECT_TRUE(SpeedCalls().empty());
}

TEST_P(FanSpeedRequestTest, NoItemsInAPayloadWithOneAreASizeErrorAndThatOneIsHandled) {
  const fake::Message response = Ask(SpeedRequest{.numOfItems = 0});
  EXPECT_TRUE(LoggedSizes(GetParam().head + 8, GetParam().head + 8));
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{1, 201, 40, 0}));
  EXPECT_EQ(fake::GetFan(0).control, 40);
}

TEST_P(FanSpeedRequestTest, NumberOfItemsWhoseSizeWouldWrapIsASizeError) {
  for (const u32 items : {0x20000001u, 0xFFFFFFFFu, 0x80000001u}) {
    Forget();
    const fake::Message response = Ask(SpeedRequest{.numOfItems = items});
    EXPECT_EQ(StatusOf(response), 4u) << items;
    EXPECT_EQ(ItemsOf(response), (std::vector<u32>{1, 201, 40, 0})) << items;
  }
}

TEST_P(FanSpeedRequestTest, FieldsBeyondACutPayloadAreZero) {
  const fake::Message response = Ask(fake::Bytes{7});
  EXPECT_EQ(WordAt(response, 0), 7u);
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{1, 0, 0, 4}));
}

TEST_P(FanSpeedRequestTest, ItemThatIsCutIsFilledWithZeros) {
  const fake::Message response = Ask(SpeedRequest{.numOfItems = 1, .items = {201}});
  EXPECT_TRUE(LoggedSizes(GetParam().head + 4, GetParam().head + 8));
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{1, 201, 0, 0}));
}

TEST_P(FanSpeedRequestTest, MissingPayloadIsRefused) {
  EXPECT_EQ(Refusal(RequestOf(fake::Bytes{})),
            "Message handling error: Payload missing from " + GetParam().message + "_REQ_MSG");
  EXPECT_TRUE(fake::SentMessages().empty());
  EXPECT_TRUE(fake::LogTexts(EAaSysLogSeverityLevel_Debug).empty());
  EXPECT_TRUE(fake::Timers().empty());
}

TEST_P(FanSpeedRequestTest, ReplyThatCannotBeCreatedIsRefusedBeforeAFanIsSet) {
  fake::FailCall("AaSysComMsgCreateReply");
  EXPECT_EQ(Refusal(RequestOf(SpeedRequest{})),
            "Message handling error: Payload missing from " + GetParam().message + "_RESP_MSG");
  EXPECT_TRUE(SpeedCalls().empty());
  EXPECT_TRUE(fake::Timers().empty());
}

TEST_P(FanSpeedRequestTest, ReplyWithoutPayloadIsRefusedAndDestroyed) {
  Ask(SpeedRequest{});
  LosePayload("AaSysComMsgCreateReply", GetParam().responseId);
  EXPECT_EQ(Refusal(RequestOf(SpeedRequest{})),
            "Message handling error: Payload missing from " + GetParam().message + "_RESP_MSG");
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysComMsgDestroy", GetParam().responseId}}));
}

INSTANTIATE_FOR_BOTH_SPEED_VERSIONS(FanSpeedRequestTest);

using FanSpeedArrivalTest = FanSpeedTest;

TEST_F(FanSpeedArrivalTest, Version1IsLoggedWithThreeItems) {
  Ask(kVersion1, SpeedRequest{.receiver = Receiver(4, 5, 0x123), .items = {201, 40, 202, 50, 203, 60}});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "ApiSetFanSpeedReqMsg message arrived  0x2030abc 7 0x123 3 0xc9 40 0xca 50 0xcb 60"));
}

TEST_F(FanSpeedArrivalTest, Version1ShowsItemsBeyondThePayloadAsZero) {
  Ask(kVersion1, SpeedRequest{});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "ApiSetFanSpeedReqMsg message arrived  0x2030abc 7 0x0 1 0xc9 40 0x0 0 0x0 0"));
}

TEST_F(FanSpeedArrivalTest, Version2IsLoggedWithItsPeriodAndThreeItems) {
  Ask(kVersion2,
      SpeedRequest{.receiver = Receiver(4, 5, 0x123), .timePeriod = 30, .items = {201, 40, 202, 50, 203, 60}});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "Api2SetFanSpeedReqMsg message arrived  0x2030abc 7 0x123 30 0x3 201 0x28 202 0x32 203 60"));
}

TEST_F(FanSpeedArrivalTest, Version1ShowsFansAndReceiverInHexadecimalAndAllElseSigned) {
  Ask(kVersion1, Words({0xFFFFFFFF, Receiver(0, 0, 0xFFFF), 0xFFFFFFFE, 0xFFFFFFFD, 0xFFFFFFFC, 201, 0x80000000}));
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "ApiSetFanSpeedReqMsg message arrived  0x2030abc -1 0xffff -2 0xfffffffd -4 0xc9 "
                           "-2147483648 0x0 0"));
}

TEST_F(FanSpeedArrivalTest, Version2ShowsReceiverNumberOfItemsAndTwoSpeedsInHexadecimalAndAllElseSigned) {
  Ask(kVersion2, Words({0xFFFFFFFF, Receiver(0, 0, 0xFFFF), 0xFFFFFFFE, 0xFFFFFFFD, 0xFFFFFFFC, 0xFFFFFFFB, 0xFFFFFFFA,
                        0xFFFFFFF9, 0xFFFFFFF8, 0xFFFFFFF7}));
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "Api2SetFanSpeedReqMsg message arrived  0x2030abc -1 0xffff -2 0xfffffffd -4 0xfffffffb -6 "
                           "0xfffffff9 -8 -9"));
}

TEST_F(FanSpeedArrivalTest, Version2ShowsItemsBeyondThePayloadAsZero) {
  Ask(kVersion2, SpeedRequest{});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "Api2SetFanSpeedReqMsg message arrived  0x2030abc 7 0x0 20 0x1 201 0x28 0 0x0 0 0"));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
