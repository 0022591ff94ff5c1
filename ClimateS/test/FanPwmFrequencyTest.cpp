/// Requests that set the PWM frequency of fans.
#include "FanTest.h"

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kRequestId = 0x2C13;
constexpr u32 kResponseId = 0x2C14;

class FanPwmFrequencyTest : public FanTest {
 protected:
  static fake::Message MessageOf(fake::Bytes payload) {
    return {.id = kRequestId, .payload = std::move(payload), .sender = kRequester, .receiver = kFanEndpoint};
  }

  /// @return the response to transaction, number of items, and fan and frequency of each
  static fake::Message Ask(const std::vector<u32>& words) { return AnswerTo(MessageOf(Words(words)), kResponseId); }
};

TEST_F(FanPwmFrequencyTest, EachFanGetsItsFrequency) {
  Ask({7, 3, 201, 3, 202, 1, 203, 2});
  EXPECT_EQ(fake::Calls("ddal_fan_set_fan_pwm_freq"),
            (std::vector<fake::Call>{{"ddal_fan_set_fan_pwm_freq", 0, 1000},
                                     {"ddal_fan_set_fan_pwm_freq", 1, 5000},
                                     {"ddal_fan_set_fan_pwm_freq", 2, 25000}}));
}

TEST_F(FanPwmFrequencyTest, ResponseGoesToTheRequester) {
  const fake::Message response = Ask({7, 1, 201, 3});
  EXPECT_EQ(response.receiver, kRequester);
  EXPECT_EQ(response.sender, kFanEndpoint);
}

TEST_F(FanPwmFrequencyTest, ResponseCarriesTheTransactionTheOutcomeAndEachItem) {
  const fake::Message response = Ask({7, 2, 201, 3, 202, 1});
  EXPECT_EQ(WordAt(response, 0), 7u);
  EXPECT_EQ(StatusOf(response), 0u);
  EXPECT_EQ(InfoOf(response), "Set Fan PWM FREQ passed.");
  EXPECT_EQ(WordsFrom(response, 40), (std::vector<u32>{2, 201, 3, 0, 202, 1, 0}));
}

TEST_F(FanPwmFrequencyTest, InfoTextIsFollowedByZeros) {
  EXPECT_EQ(InfoFieldOf(Ask({7, 1, 201, 3})), InfoField("Set Fan PWM FREQ passed."));
  Forget();
  EXPECT_EQ(InfoFieldOf(Ask({7, 1, 155, 3})), InfoField("Set Fan PWM FREQ failed."));
}

TEST_F(FanPwmFrequencyTest, MoreThanThreeItemsAreHandled) {
  const fake::Message response = Ask({7, 4, 201, 3, 202, 3, 203, 3, 201, 1});
  EXPECT_EQ(response.payload.size(), 92u);
  EXPECT_EQ(fake::GetFan(0).hertz, 5000);
}

TEST_F(FanPwmFrequencyTest, UnknownFanFailsAloneButMarksTheRequest) {
  const fake::Message response = Ask({7, 2, 201, 3, 155, 3});
  EXPECT_EQ(fake::GetFan(0).hertz, 1000);
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(InfoOf(response), "Set Fan PWM FREQ failed.");
  EXPECT_EQ(WordsFrom(response, 40), (std::vector<u32>{2, 201, 3, 0, 155, 3, 4}));
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Warning, "Invalid EFanUnit: 0x9b"));
}

TEST_F(FanPwmFrequencyTest, ItemsBehindAFailedOneAreHandled) {
  const fake::Message response = Ask({7, 2, 155, 3, 202, 3});
  EXPECT_EQ(fake::GetFan(1).hertz, 1000);
  EXPECT_EQ(StatusOf(response), 4u);
}

TEST_F(FanPwmFrequencyTest, UnknownFrequencyIsRefusedWithoutTheDriver) {
  EXPECT_EQ(WordsFrom(Ask({7, 1, 201, 9}), 40), (std::vector<u32>{1, 201, 9, 4}));
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Warning, "Invalid EFanParam: 9"));
  EXPECT_TRUE(fake::Calls("ddal_fan_set_fan_pwm_freq").empty());
}

TEST_F(FanPwmFrequencyTest, UnknownFrequencyIsLoggedSigned) {
  Ask({7, 1, 201, 0xFFFFFFFF});
  EXPECT_EQ(fake::LogTexts(EAaSysLogSeverityLevel_Warning), std::vector<std::string>{"Invalid EFanParam: -1"});
}

TEST_F(FanPwmFrequencyTest, FrequencyOfAnUnknownFanIsNotLookedAt) {
  Ask({7, 1, 204, 9});
  EXPECT_EQ(fake::LogTexts(EAaSysLogSeverityLevel_Warning), std::vector<std::string>{"Invalid EFanUnit: 0xcc"});
}

TEST_F(FanPwmFrequencyTest, DriverFailureFailsItsItem) {
  fake::FailCall("ddal_fan_set_fan_pwm_freq", 1, -2);
  const fake::Message response = Ask({7, 2, 201, 2, 202, 3});
  EXPECT_EQ(WordsFrom(response, 40), (std::vector<u32>{2, 201, 2, 4, 202, 3, 0}));
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(fake::GetFan(1).hertz, 1000);
}

TEST_F(FanPwmFrequencyTest, DriverFailureIsLoggedWithItsText) {
  fake::FailCall("ddal_fan_set_fan_pwm_freq", 1, -2);
  Ask({7, 1, 201, 2});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error,
                           "Setting pwm freq 25kHz for 0xc9 failed. DDAL ecode -2, driver error -2"));
  EXPECT_TRUE(fake::CalledInOrder({{"ddal_strerror", -2, 60}}));
}

TEST_F(FanPwmFrequencyTest, ArrivalIsLoggedWithThreeItems) {
  Ask({7, 3, 201, 3, 202, 1, 203, 2});
  EXPECT_TRUE(
      fake::Logged(EAaSysLogSeverityLevel_Debug, "ApiSetFanPwmFreqReqMsg message arrived 7 3 0xc9 3 0xca 1 0xcb 2"));
}

TEST_F(FanPwmFrequencyTest, ArrivalShowsItemsBeyondThePayloadAsZero) {
  Ask({7, 1, 201, 3});
  EXPECT_TRUE(
      fake::Logged(EAaSysLogSeverityLevel_Debug, "ApiSetFanPwmFreqReqMsg message arrived 7 1 0xc9 3 0x0 0 0x0 0"));
}

TEST_F(FanPwmFrequencyTest, ArrivalShowsThreeItemsWhateverTheirNumber) {
  Ask({7, 1, 201, 3, 202, 1, 203, 2});
  EXPECT_TRUE(
      fake::Logged(EAaSysLogSeverityLevel_Debug, "ApiSetFanPwmFreqReqMsg message arrived 7 1 0xc9 3 0xca 1 0xcb 2"));
}

TEST_F(FanPwmFrequencyTest, ArrivalShowsFansInHexadecimalAndAllElseSigned) {
  Ask({0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD, 0xFFFFFFFC, 0x80000000, 0x80000000, 0xAB, 0x7FFFFFFF});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug,
                           "ApiSetFanPwmFreqReqMsg message arrived -1 -2 0xfffffffd -4 0x80000000 -2147483648 0xab "
                           "2147483647"));
}

TEST_F(FanPwmFrequencyTest, ArrivalIsLoggedBeforeItsSizeIsChecked) {
  Ask({7, 2, 201, 3});
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 0x20047,
        "ApiSetFanPwmFreqReqMsg message arrived 7 2 0xc9 3 0x0 0 0x0 0"},
       {"AaSysLogPrintE", EAaSysLogSeverityLevel_Error, 0x20047,
        "Message payload size seems wrong in API_SET_FAN_PWM_FREQ_REQ_MSG (size 16 != calculated size 24)"},
       {"AaSysComMsgCreateReply", kResponseId}}));
}

TEST_F(FanPwmFrequencyTest, OutcomeIsLoggedBetweenTheLastFanAndTheResponse) {
  Ask({7, 2, 201, 3, 202, 3});
  EXPECT_TRUE(fake::CalledInOrder(
      {{"ddal_fan_set_fan_pwm_freq", 1, 1000},
       {"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 0x20047, "ApiSetFanPwmFreqReqMsg message handled, status: 0x0"},
       {"AaSysComMsgSend", kResponseId}}));
}

TEST_F(FanPwmFrequencyTest, OutcomeIsLogged) {
  Ask({7, 1, 201, 3});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "ApiSetFanPwmFreqReqMsg message handled, status: 0x0"));
  Forget();
  Ask({7, 1, 155, 3});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "ApiSetFanPwmFreqReqMsg message handled, status: 0x4"));
}

TEST_F(FanPwmFrequencyTest, LongerPayloadIsASizeErrorAndOnlyItsFirstItemIsHandled) {
  const fake::Message response = Ask({7, 1, 201, 3, 202, 3});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error,
                           "Message payload size seems wrong in API_SET_FAN_PWM_FREQ_REQ_MSG (size 24 != calculated "
                           "size 16)"));
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(InfoOf(response), "Set Fan PWM FREQ failed.");
  EXPECT_EQ(WordsFrom(response, 40), (std::vector<u32>{1, 201, 3, 0}));
  EXPECT_EQ(fake::GetFan(1).hertz, 25000);
}

TEST_F(FanPwmFrequencyTest, ShorterPayloadIsASizeErrorAndOnlyItsFirstItemIsHandled) {
  const fake::Message response = Ask({7, 3, 201, 3, 202, 3});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error,
                           "Message payload size seems wrong in API_SET_FAN_PWM_FREQ_REQ_MSG (size 24 != calculated "
                           "size 32)"));
  EXPECT_EQ(WordsFrom(response, 40), (std::vector<u32>{1, 201, 3, 0}));
  EXPECT_EQ(fake::GetFan(1).hertz, 25000);
}

TEST_F(FanPwmFrequencyTest, NoItemsAreASizeErrorAlsoWhenThePayloadHasNone) {
  const fake::Message response = Ask({7, 0});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error,
                           "Message payload size seems wrong in API_SET_FAN_PWM_FREQ_REQ_MSG (size 8 != calculated "
                           "size 16)"));
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(WordsFrom(response, 40), (std::vector<u32>{1, 0, 0, 4}));
}

TEST_F(FanPwmFrequencyTest, NoItemsAreASizeErrorAlsoWhenThePayloadHasOne) {
  const fake::Message response = Ask({7, 0, 201, 3});
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(WordsFrom(response, 40), (std::vector<u32>{1, 201, 3, 0}));
  EXPECT_EQ(fake::GetFan(0).hertz, 1000);
}

TEST_F(FanPwmFrequencyTest, NumberOfItemsWhoseSizeWouldWrapIsASizeError) {
  for (const u32 items : {0x20000001u, 0xFFFFFFFFu, 0x80000001u}) {
    Forget();
    const fake::Message response = Ask({7, items, 201, 3});
    EXPECT_EQ(StatusOf(response), 4u) << items;
    EXPECT_EQ(WordAt(response, 40), 1u) << items;
  }
}

TEST_F(FanPwmFrequencyTest, CalculatedSizeIsLoggedInItsLow32BitsSigned) {
  Ask({7, 0x10000001, 201, 3});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Error,
                           "Message payload size seems wrong in API_SET_FAN_PWM_FREQ_REQ_MSG (size 16 != calculated "
                           "size -2147483632)"));
}

TEST_F(FanPwmFrequencyTest, FieldsBeyondACutPayloadAreZero) {
  const fake::Message response = AnswerTo(MessageOf({7, 0}), kResponseId);
  EXPECT_EQ(WordAt(response, 0), 7u);
  EXPECT_EQ(WordsFrom(response, 40), (std::vector<u32>{1, 0, 0, 4}));
}

TEST_F(FanPwmFrequencyTest, OtherByteOrderIsNotConverted) {
  fake::Message request = MessageOf(Words({7, 1, 201, 3}));
  request.otherEndian = true;
  EXPECT_EQ(WordsFrom(AnswerTo(request, kResponseId), 40), (std::vector<u32>{1, 201, 3, 0}));
}

TEST_F(FanPwmFrequencyTest, MissingPayloadIsRefused) {
  EXPECT_EQ(Refusal(MessageOf({})), "Message handling error: Payload missing from API_SET_FAN_PWM_FREQ_REQ_MSG");
  EXPECT_TRUE(fake::SentMessages().empty());
  EXPECT_TRUE(fake::LogTexts(EAaSysLogSeverityLevel_Debug).empty());
}

TEST_F(FanPwmFrequencyTest, ReplyThatCannotBeCreatedIsRefusedBeforeAFanIsSet) {
  fake::FailCall("AaSysComMsgCreateReply");
  EXPECT_EQ(Refusal(MessageOf(Words({7, 1, 201, 3}))),
            "Message handling error: Payload missing from API_SET_FAN_PWM_FREQ_RESP_MSG");
  EXPECT_TRUE(fake::Calls("ddal_fan_set_fan_pwm_freq").empty());
  EXPECT_TRUE(fake::SentMessages().empty());
}

TEST_F(FanPwmFrequencyTest, ReplyWithoutPayloadIsRefusedAndDestroyed) {
  Ask({7, 1, 201, 3});
  LosePayload("AaSysComMsgCreateReply", kResponseId);
  EXPECT_EQ(Refusal(MessageOf(Words({7, 1, 201, 3}))),
            "Message handling error: Payload missing from API_SET_FAN_PWM_FREQ_RESP_MSG");
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysComMsgDestroy", kResponseId}}));
}

TEST_F(FanPwmFrequencyTest, ServiceStateStaysAsItIs) {
  Ask({7, 1, 201, 3});
  EXPECT_TRUE(fake::Calls({"Service::SetServiceStateRad", "Service::SetUseCommonServiceState"}).empty());
}

TEST_F(FanPwmFrequencyTest, PollingIsNotStarted) {
  Ask({7, 1, 201, 3});
  EXPECT_TRUE(fake::Timers().empty());
}

TEST_F(FanPwmFrequencyTest, PollingGoesOnAsItWas) {
  fake::Dispatch({.id = 0x2C15, .payload = Words({7, 0, 1, 201, 40}), .sender = kRequester});
  const TAaSysTimerId polling = fake::Timers().at(0).id;
  Ask({7, 1, 201, 3});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].id, polling);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
