#include "FanRequest.h"

#include "messages/MessageIds.h"

#include <gtest/gtest.h>

#include <cstring>

namespace clmctl {
namespace {

template <typename Record>
Message MessageOf(u32 id, const Record& record, u32 size = sizeof(Record)) {
  Message msg(AaSysComMsgCreate(id, size, 0x01010001));
  if (size != 0) std::memcpy(AaSysComMsgGetPayload(msg.get()), &record, size);
  return msg;
}

struct SpeedAnswer {
  SApi2SetFanSpeedResp first{.transactionId = 1,
                             .response = {.status = EStatus_InvalidParam, .info = {'s', 't', 'a', 'r', 't', 'e', 'd'}},
                             .timePeriod = 8,
                             .numOfItems = 2,
                             .unit = {{.param = {.fanId = EFanUnit_GarFan1, .speed = 60}, .status = EStatus_NoError}}};
  SFanSpeedResp second{.param = {.fanId = EFanUnit_GarFan4, .speed = 70}, .status = EStatus_InvalidParam};
};

struct Report {
  SApiFanSpeedInd first{
      .transactionId = 1,
      .numOfItems = 2,
      .unit = {{.fanId = EFanUnit_GarFan1, .manId = 0, .speed = 3100, .pwmFreq = EFanParam_PwmFreq25k}}};
  SHwapiFanUnitInfo second{.fanId = EFanUnit_GarFan2, .manId = 0, .speed = 0, .pwmFreq = EFanParam{}};
};

TEST(FanAnswer, TellsTheOutcomeOfEachFan) {
  const FanAnswer answer = ParseFanAnswer(MessageOf(API2_SET_FAN_SPEED_RESP_MSG, SpeedAnswer{}).get());
  EXPECT_EQ(answer.status, EStatus_InvalidParam);
  EXPECT_EQ(answer.info, "started");
  EXPECT_EQ(answer.periodSeconds, 8u);
  ASSERT_EQ(answer.fans.size(), 2u);
  EXPECT_EQ(answer.fans[0].fan, EFanUnit_GarFan1);
  EXPECT_EQ(answer.fans[0].value, 60u);
  EXPECT_EQ(answer.fans[0].status, EStatus_NoError);
  EXPECT_EQ(answer.fans[1].status, EStatus_InvalidParam);
}

TEST(FanAnswer, OfTheOtherRequestsHasNoPeriod) {
  SApiSetFanPwmFreqResp record{};
  record.numOfItems = 1;
  record.unit[0] = {.param = {.fanId = EFanUnit_GarFan2, .pwmFreq = EFanParam_PwmFreq1k}, .status = EStatus_NoError};
  const FanAnswer answer = ParseFanAnswer(MessageOf(API_SET_FAN_PWM_FREQ_RESP_MSG, record).get());
  EXPECT_EQ(answer.periodSeconds, 0u);
  ASSERT_EQ(answer.fans.size(), 1u);
  EXPECT_EQ(answer.fans[0].fan, EFanUnit_GarFan2);
  EXPECT_EQ(answer.fans[0].value, EFanParam_PwmFreq1k);
}

TEST(FanAnswer, TakesAnInfoTextThatFillsItsField) {
  SApiSetFanSpeedResp record{};
  std::memset(record.response.info, 'x', sizeof record.response.info);
  EXPECT_EQ(ParseFanAnswer(MessageOf(API_SET_FAN_SPEED_RESP_MSG, record).get()).info, std::string(32, 'x'));
}

TEST(FanAnswer, IsNotBelievedBeyondItsPayload) {
  SpeedAnswer lying;
  lying.first.numOfItems = 0xFFFFFFFF;
  EXPECT_EQ(ParseFanAnswer(MessageOf(API2_SET_FAN_SPEED_RESP_MSG, lying).get()).fans.size(), 2u);
  for (u32 size = 0; size < sizeof lying; ++size) {
    const FanAnswer cut = ParseFanAnswer(MessageOf(API2_SET_FAN_SPEED_RESP_MSG, lying, size).get());
    EXPECT_EQ(cut.fans.size(), size < sizeof lying.first ? 0u : 1u) << size;
  }
}

TEST(FanRefusal, NamesTheFansThatWereNotSet) {
  const FanAnswer answer = ParseFanAnswer(MessageOf(API2_SET_FAN_SPEED_RESP_MSG, SpeedAnswer{}).get());
  const std::string text = RefusalText(answer);
  EXPECT_NE(text.find("GAR_FAN4"), std::string::npos) << text;
  EXPECT_EQ(text.find("GAR_FAN1"), std::string::npos) << text;
}

TEST(FanRefusal, OfTheWholeRequestSaysWhatTheServiceSays) {
  const FanAnswer answer{
      .status = EStatus_UndefinedError, .info = "Couldn't start speed polling!", .periodSeconds = 8, .fans = {}};
  EXPECT_NE(RefusalText(answer).find("Couldn't start speed polling!"), std::string::npos);
}

TEST(FanIndication, HasAReadingForEachFan) {
  const auto indication = ParseFanIndication(MessageOf(API_FAN_SPEED_IND_MSG, Report{}).get());
  ASSERT_TRUE(indication.has_value());
  ASSERT_EQ(indication->readings.size(), 2u);
  EXPECT_EQ(indication->readings[0].fan, EFanUnit_GarFan1);
  EXPECT_EQ(indication->readings[0].rpm, 3100u);
  EXPECT_EQ(indication->readings[0].frequency, EFanParam_PwmFreq25k);
  EXPECT_EQ(indication->readings[1].rpm, 0u);
}

TEST(FanIndication, IsNotBelievedBeyondItsPayload) {
  Report lying;
  lying.first.numOfItems = 0xFFFFFFFF;
  const auto whole = ParseFanIndication(MessageOf(API_FAN_SPEED_IND_MSG, lying).get());
  ASSERT_TRUE(whole.has_value());
  EXPECT_EQ(whole->readings.size(), 2u);
  const auto cut = ParseFanIndication(MessageOf(API_FAN_SPEED_IND_MSG, lying, sizeof lying - 1).get());
  ASSERT_TRUE(cut.has_value());
  EXPECT_EQ(cut->readings.size(), 1u);
}

TEST(FanIndication, ShorterThanItsHeaderIsNone) {
  EXPECT_FALSE(ParseFanIndication(MessageOf(API_FAN_SPEED_IND_MSG, Report{}, 7).get()).has_value());
  EXPECT_FALSE(ParseFanIndication(MessageOf(API_FAN_SPEED_IND_MSG, Report{}, 0).get()).has_value());
}

}  // namespace
}  // namespace clmctl
