/// The polling of fans: its timer's expiries, and the speed indications that they bring.
#include "FanTest.h"

namespace ps::hwapi::common::climate {
namespace {

constexpr u32 kTimerId = 0x2C78;
constexpr u32 kIndicationId = 0x2C17;
constexpr std::uint64_t kSecond = 1000000;

class FanSpeedIndicationTest : public FanTest {
 protected:
  static fake::Message Expiry(fake::Bytes payload = Words({7, kOtherClient})) {
    return {.id = kTimerId, .payload = std::move(payload), .sender = kFanEndpoint, .receiver = kFanEndpoint};
  }
  /// @return the indication
  static fake::Message Poll() { return AnswerTo(Expiry(), kIndicationId); }
  static std::vector<fake::Message> Indications() { return fake::SentMessages(kIndicationId); }
  static std::vector<std::string> Warnings() { return fake::LogTexts(EAaSysLogSeverityLevel_Warning); }

  /// Starts polling with a second-version request.
  static void RequestSpeed(u32 timePeriod) {
    fake::Dispatch({.id = 0x2CF1, .payload = Words({7, 0, timePeriod, 1, 201, 40}), .sender = kRequester});
    fake::ClearSentMessages();
  }
  /// Starts polling anew, as transaction 8 and for another recipient.
  static void RequestSpeedForOtherClient() {
    fake::Dispatch({.id = 0x2C15, .payload = Words({8, Receiver(4, 5, 0xDEF), 1, 201, 40}), .sender = kRequester});
  }
};

/// An expiry that has come, and that waits while a new request is handled.
class QueuedExpiryTest : public FanSpeedIndicationTest {
 protected:
  QueuedExpiryTest() {
    RequestSpeed(20);
    fake::AdvanceTime(20 * kSecond);
    RequestSpeedForOtherClient();
    fake::DispatchQueued();
  }
};

TEST_F(QueuedExpiryTest, StillBringsItsIndicationToItsOwnRecipient) {
  ASSERT_EQ(Indications().size(), 1u);
  EXPECT_EQ(Indications()[0].receiver, kRequester);
  EXPECT_EQ(WordAt(Indications()[0], 0), 7u);
}

TEST_F(QueuedExpiryTest, LeavesOneTimerWhichIsItsOwn) {
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].firstUs, 60000000u);
  EXPECT_EQ(fake::Timers()[0].message.payload, Words({7, kRequester}));
}

TEST_F(QueuedExpiryTest, DoesNotDoubleThePolling) {
  Pass(60 * kSecond);
  EXPECT_EQ(Indications().size(), 2u);
}

/// A reading of a fan that fails, and what is then said about it.
struct FailedReading {
  const char* function;
  const char* what;  ///< in the warning
};

class FailedReadingTest : public FanSpeedIndicationTest, public testing::WithParamInterface<FailedReading> {};

TEST_P(FailedReadingTest, IsLoggedWithTheNameOfItsFan) {
  Start(EUnitVersion_Vyda);
  fake::FailEvery(GetParam().function, -7);
  Poll();
  std::vector<std::string> warnings;
  for (const char* fan : {"GAR_FAN1", "GAR_FAN2", "GAR_FAN3"}) {
    warnings.push_back(std::string("Failed to read ") + fan + " " + GetParam().what +
                       ". DDAL ecode -7, driver error -7");
  }
  EXPECT_EQ(Warnings(), warnings);
}

INSTANTIATE_TEST_SUITE_P(Readings, FailedReadingTest,
                         testing::Values(FailedReading{"ddal_fan_get_rpm", "RPM"},
                                         FailedReading{"ddal_fan_get_fan_pwm_freq", "PWM frequency"},
                                         FailedReading{"ddal_fan_get_pwm", "PWM control word"}),
                         [](const auto& test) { return std::string(test.param.function); });

TEST_F(FanSpeedIndicationTest, FirstOneComesAfterThePeriodOfTheRequest) {
  RequestSpeed(30);
  Pass(30 * kSecond - 1);
  EXPECT_TRUE(Indications().empty());
  Pass(1);
  ASSERT_EQ(Indications().size(), 1u);
  EXPECT_EQ(Indications()[0].receiver, kRequester);
}

TEST_F(FanSpeedIndicationTest, LaterOnesComeEverySixtySeconds) {
  RequestSpeed(8);
  Pass(8 * kSecond);
  Pass(60 * kSecond - 1);
  EXPECT_EQ(Indications().size(), 1u);
  Pass(1);
  EXPECT_EQ(Indications().size(), 2u);
  Pass(60 * kSecond);
  EXPECT_EQ(Indications().size(), 3u);
}

TEST_F(FanSpeedIndicationTest, ExpiryArmsTheNextOneWithTheSameTransactionAndRecipient) {
  Poll();
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].firstUs, 60000000u);
  EXPECT_EQ(fake::Timers()[0].periodUs, 0u);
  EXPECT_EQ(fake::Timers()[0].message, Expiry());
}

TEST_F(FanSpeedIndicationTest, ExpiryDeletesTheTimerBeforeItArmsTheNextOne) {
  RequestSpeed(20);
  const TAaSysTimerId first = fake::Timers().at(0).id;
  Poll();
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysTimerDelete", first}, {"AaSysComMsgCreate", kTimerId, 8, kFanEndpoint}, {"AaSysTimermCreate"}}));
  EXPECT_EQ(fake::Timers().size(), 1u);
}

TEST_F(FanSpeedIndicationTest, NextExpiryIsArmedBeforeFansAreRead) {
  Poll();
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysTimermCreate"}, {"ddal_fan_get_rpm", 0}, {"AaSysComMsgSendS"}}));
}

TEST_F(FanSpeedIndicationTest, ExpiryIsLoggedBeforeTheNextOneIsArmed) {
  Poll();
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysLogPrintE", EAaSysLogSeverityLevel_Debug, 0x20047,
                                    "ApiFanSpeedPollTimerIndMsg message arrived 7 0x4050def 0x10104ad"},
                                   {"AaSysTimermCreate"}}));
}

TEST_F(FanSpeedIndicationTest, TransactionIsLoggedSigned) {
  fake::Dispatch(Expiry(Words({0xFFFFFFFF, kOtherClient})));
  EXPECT_TRUE(
      fake::Logged(EAaSysLogSeverityLevel_Debug, "ApiFanSpeedPollTimerIndMsg message arrived -1 0x4050def 0x10104ad"));
}

TEST_F(FanSpeedIndicationTest, ExpiryIsLogged) {
  Poll();
  EXPECT_TRUE(
      fake::Logged(EAaSysLogSeverityLevel_Debug, "ApiFanSpeedPollTimerIndMsg message arrived 7 0x4050def 0x10104ad"));
}

TEST_F(FanSpeedIndicationTest, GoesFromTheFanEndpointToTheRecipient) {
  fake::SetOwnNid(0x0708);
  const fake::Message indication = Poll();
  EXPECT_EQ(indication.sender, 0x070804ADu);
  EXPECT_EQ(indication.receiver, kOtherClient);
}

TEST_F(FanSpeedIndicationTest, CarriesTheTransactionAndEachFan) {
  fake::SetFan(0, {.rpm = 3100, .hertz = 5000, .control = 40});
  fake::SetFan(1, {.rpm = 4200, .hertz = 1000, .control = 60});
  EXPECT_EQ(Poll().payload, Words({7, 2, 201, 0, 3100, 1, 202, 0, 4200, 3}));
}

TEST_F(FanSpeedIndicationTest, CarriesThreeFansWhereTheUnitHasThree) {
  Start(EUnitVersion_Vyda);
  const fake::Message indication = Poll();
  EXPECT_EQ(indication.payload, Words({7, 3, 201, 0, 3000, 2, 202, 0, 3100, 2, 203, 0, 3200, 2}));
}

TEST_F(FanSpeedIndicationTest, CarriesNoFanWhereTheUnitHasNone) {
  Start(EUnitVersion_Zun);
  const fake::ReceivedMessage expiry(Expiry());
  m_service->HandleFanSpeedPollTimerIndMsg(expiry);
  ASSERT_EQ(Indications().size(), 1u);
  EXPECT_EQ(Indications()[0].payload, Words({7, 0}));
  EXPECT_TRUE(fake::Calls("ddal_fan_get_rpm").empty());
}

TEST_F(FanSpeedIndicationTest, CarriesTwoFansWhereTheUnitIsUnknown) {
  Start(EUnitVersion_Pivoc);
  EXPECT_EQ(WordAt(Poll(), 4), 2u);
}

TEST_F(FanSpeedIndicationTest, EachFanIsLogged) {
  fake::SetFan(0, {.rpm = 3100, .hertz = 5000, .control = 40});
  Poll();
  EXPECT_EQ(fake::LogTexts(EAaSysLogSeverityLevel_Info),
            (std::vector<std::string>{"GAR_FAN1: rotating speed: 3100 (RPM), control value: 40, PWM frequency: 5kHz",
                                      "GAR_FAN2: rotating speed: 3100 (RPM), control value: 0, PWM frequency: 25kHz"}));
}

TEST_F(FanSpeedIndicationTest, NegativeReadingsAreLoggedSigned) {
  fake::SetFan(0, {.rpm = -1, .hertz = -5000, .control = -2});
  EXPECT_EQ(WordAt(Poll(), 16), 0xFFFFFFFFu);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info,
                           "GAR_FAN1: rotating speed: -1 (RPM), control value: -2, PWM frequency: -5kHz"));
}

TEST_F(FanSpeedIndicationTest, ThirdFanIsLoggedWhereTheUnitHasThree) {
  Start(EUnitVersion_Vyda);
  fake::SetFan(2, {.rpm = 3300, .hertz = 1000, .control = 70});
  Poll();
  EXPECT_EQ(fake::LogTexts(EAaSysLogSeverityLevel_Info).back(),
            "GAR_FAN3: rotating speed: 3300 (RPM), control value: 70, PWM frequency: 1kHz");
}

TEST_F(FanSpeedIndicationTest, EachFanIsReadInOrder) {
  Poll();
  EXPECT_EQ(fake::Calls({"ddal_fan_get_rpm", "ddal_fan_get_fan_pwm_freq", "ddal_fan_get_pwm"}),
            (std::vector<fake::Call>{{"ddal_fan_get_rpm", 0},
                                     {"ddal_fan_get_fan_pwm_freq", 0},
                                     {"ddal_fan_get_pwm", 0},
                                     {"ddal_fan_get_rpm", 1},
                                     {"ddal_fan_get_fan_pwm_freq", 1},
                                     {"ddal_fan_get_pwm", 1}}));
}

TEST_F(FanSpeedIndicationTest, SpeedThatCannotBeReadIsZero) {
  fake::FailCall("ddal_fan_get_rpm", 1, -2);
  EXPECT_EQ(WordsFrom(Poll(), 8), (std::vector<u32>{201, 0, 0, 2, 202, 0, 3100, 2}));
  EXPECT_EQ(Warnings(), std::vector<std::string>{"Failed to read GAR_FAN1 RPM. DDAL ecode -2, driver error -2"});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info,
                           "GAR_FAN1: rotating speed: 0 (RPM), control value: 0, PWM frequency: 25kHz"));
}

TEST_F(FanSpeedIndicationTest, FrequencyThatCannotBeReadIsUnknown) {
  fake::FailCall("ddal_fan_get_fan_pwm_freq", 2, -2);
  EXPECT_EQ(WordsFrom(Poll(), 8), (std::vector<u32>{201, 0, 3000, 2, 202, 0, 3100, 0}));
  EXPECT_EQ(Warnings(),
            std::vector<std::string>{"Failed to read GAR_FAN2 PWM frequency. DDAL ecode -2, driver error -2"});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info,
                           "GAR_FAN2: rotating speed: 3100 (RPM), control value: 0, PWM frequency: 0kHz"));
}

TEST_F(FanSpeedIndicationTest, ControlValueThatCannotBeReadIsZeroInTheLog) {
  fake::SetFan(0, {.rpm = 3000, .hertz = 25000, .control = 40});
  fake::FailCall("ddal_fan_get_pwm", 1, -2);
  EXPECT_EQ(WordsFrom(Poll(), 8), (std::vector<u32>{201, 0, 3000, 2, 202, 0, 3100, 2}));
  EXPECT_EQ(Warnings(),
            std::vector<std::string>{"Failed to read GAR_FAN1 PWM control word. DDAL ecode -2, driver error -2"});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info,
                           "GAR_FAN1: rotating speed: 3000 (RPM), control value: 0, PWM frequency: 25kHz"));
}

TEST_F(FanSpeedIndicationTest, DriverIsAskedForTextsOf60Bytes) {
  fake::SetFan(0, {.readError = -2});
  Poll();
  const std::vector<fake::Call> texts = fake::Calls("ddal_strerror");
  EXPECT_EQ(texts, std::vector<fake::Call>(3, {"ddal_strerror", -2, 60}));
}

TEST_F(FanSpeedIndicationTest, FrequencyWithoutACodeIsUnknownButLogged) {
  fake::SetFan(0, {.rpm = 3000, .hertz = 3000});
  EXPECT_EQ(WordAt(Poll(), 8 + 12), 0u);
  EXPECT_EQ(Warnings(), std::vector<std::string>{"Invalid frequency rate 3 kHz to be converted"});
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info,
                           "GAR_FAN1: rotating speed: 3000 (RPM), control value: 0, PWM frequency: 3kHz"));
}

TEST_F(FanSpeedIndicationTest, IsSentAlsoWhenNoFanCanBeRead) {
  for (const u32 fan : {0u, 1u}) fake::SetFan(fan, {.rpm = 3000, .readError = -2});
  EXPECT_EQ(Poll().payload, Words({7, 2, 201, 0, 0, 0, 202, 0, 0, 0}));
  EXPECT_EQ(Warnings().size(), 6u);
}

TEST_F(FanSpeedIndicationTest, NothingOfAFailedReadIsReportedWhateverTheDriverLeft) {
  fake::SetFan(0, {.readError = -2, .garbage = 5000});
  EXPECT_EQ(Poll().payload, Words({7, 2, 201, 0, 0, 0, 202, 0, 3100, 2}));
}

TEST_F(FanSpeedIndicationTest, OfAFailedReadOnlyAFrequencyThatTheDriverLeftIsLogged) {
  fake::SetFan(0, {.readError = -2, .garbage = 5000});
  Poll();
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Info,
                           "GAR_FAN1: rotating speed: 0 (RPM), control value: 0, PWM frequency: 5kHz"));
}

TEST_F(FanSpeedIndicationTest, IsSentAlsoWhenTheNextExpiryCannotBeArmed) {
  fake::FailCall("AaSysTimermCreate");
  Poll();
  EXPECT_EQ(Warnings(), std::vector<std::string>{"Could not start 60s Fan speed polling timer!"});
  EXPECT_TRUE(fake::Timers().empty());
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysTimermCreate"}, {"AaSysComMsgDestroy", kTimerId}}));
}

TEST_F(FanSpeedIndicationTest, IsSentAlsoWhenTheNextTimersMessageCannotBeCreated) {
  fake::FailCall("AaSysComMsgCreate");
  Poll();
  EXPECT_EQ(Warnings(), std::vector<std::string>{"Could not start 60s Fan speed polling timer!"});
}

TEST_F(FanSpeedIndicationTest, PollingGoesOnWhenAnIndicationCannotBeCreated) {
  fake::FailCall("AaSysComMsgCreate", 2);
  EXPECT_EQ(Refusal(Expiry()), "Message handling error: Creation of API_FAN_SPEED_IND_MSG failed");
  EXPECT_TRUE(fake::SentMessages().empty());
  EXPECT_EQ(fake::Timers().size(), 1u);
}

TEST_F(FanSpeedIndicationTest, NoFanIsReadWhenAnIndicationCannotBeCreated) {
  fake::FailCall("AaSysComMsgCreate", 2);
  EXPECT_THROW(fake::Dispatch(Expiry()), MsgHandlingException);
  EXPECT_TRUE(fake::Calls("ddal_fan_get_rpm").empty());
}

TEST_F(FanSpeedIndicationTest, IndicationWithoutPayloadIsDestroyed) {
  Poll();
  LosePayload("AaSysComMsgCreate", kIndicationId);
  EXPECT_EQ(Refusal(Expiry()), "Message handling error: Creation of API_FAN_SPEED_IND_MSG failed");
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysComMsgDestroy", kIndicationId}}));
}

TEST_F(FanSpeedIndicationTest, NextTimersMessageWithoutPayloadIsDestroyed) {
  Poll();
  LosePayload("AaSysComMsgCreate", kTimerId);
  Poll();
  EXPECT_EQ(Warnings(), std::vector<std::string>{"Could not start 60s Fan speed polling timer!"});
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysComMsgDestroy", kTimerId}}));
}

TEST_F(FanSpeedIndicationTest, ExpiryWithoutPayloadIsRefused) {
  EXPECT_EQ(Refusal(Expiry({})), "Message handling error: Payload missing from API_FAN_SPEED_POLL_TIMER_IND_MSG");
  EXPECT_TRUE(fake::SentMessages().empty());
  EXPECT_TRUE(fake::Timers().empty());
}

TEST_F(FanSpeedIndicationTest, ExpiryWithAShortPayloadIsFilledWithZeros) {
  const fake::Message indication = AnswerTo(Expiry(Words({7})), kIndicationId);
  EXPECT_EQ(WordAt(indication, 0), 7u);
  EXPECT_EQ(indication.receiver, 0u);
}

TEST_F(FanSpeedIndicationTest, ExpiryWithALongPayloadIsReadFromItsBeginning) {
  const fake::Message indication = AnswerTo(Expiry(Words({7, kOtherClient, 1, 2, 3})), kIndicationId);
  EXPECT_EQ(indication.receiver, kOtherClient);
  EXPECT_EQ(indication.payload.size(), 40u);
}

TEST_F(FanSpeedIndicationTest, ComesNoMoreWhenTheNextExpiryCouldNotBeArmed) {
  RequestSpeed(20);
  fake::FailCall("AaSysTimermCreate");
  Pass(20 * kSecond);
  Pass(3600 * kSecond);
  EXPECT_EQ(Indications().size(), 1u);
}

TEST_F(FanSpeedIndicationTest, RequestDeletesNoTimerWhenTheNextExpiryCouldNotBeArmed) {
  RequestSpeed(20);
  fake::FailCall("AaSysTimermCreate");
  Poll();
  Forget();
  RequestSpeed(20);
  EXPECT_TRUE(fake::Calls("AaSysTimerDelete").empty());
}

TEST_F(FanSpeedIndicationTest, NewRequestChangesTheRecipient) {
  RequestSpeed(20);
  RequestSpeedForOtherClient();
  Pass(20 * kSecond);
  ASSERT_EQ(Indications().size(), 1u);
  EXPECT_EQ(Indications()[0].receiver, kOtherClient);
  EXPECT_EQ(WordAt(Indications()[0], 0), 8u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
