/// Speed requests that were written in the other byte order.
#include "AaSysCom.h"
#include "FanSpeedTest.h"

namespace ps::hwapi::common::climate {
namespace {

class FanSpeedByteOrderTest : public EachFanSpeedVersionTest {
 protected:
  /// Writes a request as a peer of the other byte order does. Items from @p untilItem on stay as they are.
  static fake::Message InOtherOrder(fake::Message message, std::size_t untilItem = 100) {
    constexpr std::ptrdiff_t kReceiver = 4;
    const std::size_t end = std::min(message.payload.size() / 4 * 4, GetParam().head + 8 * untilItem);
    for (auto offset = std::ptrdiff_t{0}; offset < static_cast<std::ptrdiff_t>(end); offset += 4) {
      const auto word = message.payload.begin() + offset;
      std::reverse(offset == kReceiver ? word + 2 : word, word + 4);
    }
    message.otherEndian = true;
    return message;
  }

  /// @return the response to a request of the other byte order
  static fake::Message AskInOtherOrder(const SpeedRequest& request) {
    return AnswerTo(InOtherOrder(RequestOf(request)), GetParam().responseId);
  }

  /// @return the payload of a request once its handler has worked on it
  fake::Bytes HandledPayload(const fake::Message& request) {
    const fake::ReceivedMessage received(request);
    if (GetParam().hasPeriod) {
      m_service->HandleApi2SetFanSpeedReqMsg(received);
    } else {
      m_service->HandleApiSetFanSpeedReqMsg(received);
    }
    const auto* payload = static_cast<const u8*>(AaSysComMsgGetPayload(received));
    return fake::Bytes(payload, payload + AaSysComMsgGetPayloadSize(received));
  }
};

TEST_P(FanSpeedByteOrderTest, EachItemIsConverted) {
  AskInOtherOrder({.items = {201, 40, 202, 50}});
  EXPECT_EQ(SpeedCalls(), (std::vector<fake::Call>{{"ddal_fan_set_pwm", 0, 40}, {"ddal_fan_set_pwm", 1, 50}}));
}

TEST_P(FanSpeedByteOrderTest, ResponseIsInThisHostsOrder) {
  const fake::Message response = AskInOtherOrder({.items = {201, 40, 202, 50}});
  EXPECT_EQ(WordAt(response, 0), 7u);
  EXPECT_EQ(StatusOf(response), 0u);
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{2, 201, 40, 0, 202, 50, 0}));
  EXPECT_FALSE(response.otherEndian);
}

TEST_P(FanSpeedByteOrderTest, ReceiverHasOnlyItsTaskConverted) {
  AskInOtherOrder({.receiver = Receiver(0x12, 0x34, 0x0567)});
  ASSERT_EQ(fake::Timers().size(), 1u);
  EXPECT_EQ(fake::Timers()[0].message.payload, Words({7, 0x12340567}));
}

TEST_P(FanSpeedByteOrderTest, RequestIsConvertedInPlace) {
  const fake::Message request = RequestOf(SpeedRequest{.receiver = Receiver(1, 2, 0x345), .items = {201, 40, 202, 50}});
  EXPECT_EQ(HandledPayload(InOtherOrder(request)), request.payload);
}

TEST_P(FanSpeedByteOrderTest, ItemsBeyondTheirNumberStayAsTheyAre) {
  const fake::Message request = RequestOf(SpeedRequest{.numOfItems = 1, .items = {201, 40, 202, 50}});
  EXPECT_EQ(HandledPayload(InOtherOrder(request, 1)), request.payload);
}

TEST_P(FanSpeedByteOrderTest, RequestOfThisOrderIsNotConverted) {
  const fake::Message request = RequestOf(SpeedRequest{.receiver = Receiver(1, 2, 0x345)});
  EXPECT_EQ(HandledPayload(request), request.payload);
}

TEST_P(FanSpeedByteOrderTest, NumberOfItemsThatExceedsThePayloadConvertsWhatIsThere) {
  const fake::Message response = AskInOtherOrder({.numOfItems = 0x10000, .items = {201, 40}});
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(ItemsOf(response), (std::vector<u32>{1, 201, 40, 0}));
}

TEST_P(FanSpeedByteOrderTest, FanOfAnItemWhoseSpeedIsCutOffIsConverted) {
  const fake::Message response = AskInOtherOrder({.numOfItems = 1, .items = {201}});
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_EQ(SpeedCalls(), (std::vector<fake::Call>{{"ddal_fan_set_pwm", 0, 0}}));
}

TEST_P(FanSpeedByteOrderTest, WithoutItemsNoItemIsConverted) {
  const fake::Message response = AskInOtherOrder({.numOfItems = 0, .items = {201, 40}});
  EXPECT_EQ(StatusOf(response), 4u);
  EXPECT_TRUE(SpeedCalls().empty());
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Warning, "Invalid EFanUnit: 0xc9000000"));
}

TEST_P(FanSpeedByteOrderTest, EveryCutOfARequestIsAnswered) {
  const fake::Message whole = InOtherOrder(RequestOf(SpeedRequest{.items = {201, 40, 202, 50}}));
  for (std::size_t size = 1; size < whole.payload.size(); ++size) {
    fake::ClearSentMessages();
    fake::Message cut = whole;
    cut.payload.resize(size);
    EXPECT_EQ(StatusOf(AnswerTo(cut, GetParam().responseId)), 4u) << size << " bytes";
  }
}

INSTANTIATE_FOR_BOTH_SPEED_VERSIONS(FanSpeedByteOrderTest);

TEST_F(FanSpeedTest, PeriodOfTheOtherByteOrderIsConverted) {
  fake::Message request = MessageOf(kVersion2, Words({0x07000000, 0, 0x1E000000, 0x01000000, 0xC9000000, 0x28000000}));
  request.otherEndian = true;
  EXPECT_EQ(WordsFrom(AnswerTo(request, kVersion2.responseId), 40), (std::vector<u32>{30, 1, 201, 40, 0}));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
