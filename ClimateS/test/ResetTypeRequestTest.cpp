/// The question to the reset service: how was the board last reset?
#include "ResetHistory.h"

#include <gmock/gmock.h>

#include <utility>

namespace ps::hwapi::common::climate {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr u32 kRequest = 0x2BC5;
constexpr u32 kResponse = 0x2BC6;
constexpr u32 kNoType = 0xFFFFFFFF;
constexpr std::uint64_t kSecond = 1'000'000;
const std::string kOnlineTag = "app.hwapi.online.4a7";
const std::string kName = "Blackbox::readResetTypeFromRpram(): ";

class ResetTypeRequestTest : public ResetHistoryTest {
 protected:
  ResetTypeRequestTest() { m_board.SetResetType(4); }

  u32 Ask() { return m_blackBox.readResetTypeFromRpram(); }
  u32 AskAnsweredBy(const fake::Bytes& answer) {
    m_board.answer = answer;
    return Ask();
  }

  /// Lets the answer come so much later.
  void AnswerAfter(std::uint64_t microseconds) {
    fake::OnSent(kRequest, [microseconds, answer = *std::exchange(m_board.answer, {})](const fake::Message& request) {
      fake::After(microseconds, [answer, to = request.sender] {
        fake::Deliver({.id = kResponse, .payload = answer, .sender = 0x010104A7, .receiver = to});
      });
    });
  }

  /// @return the expression of the assertion that ends it; "" when none does
  std::string Assertion() {
    try {
      Ask();
      return "";
    } catch (const fake::AssertionFailed& failed) {
      return failed.expression;
    }
  }

  /// @return the task of the one request that was sent
  static u32 TemporaryTask() {
    const std::vector<fake::Message> sent = fake::SentMessages(kRequest);
    EXPECT_EQ(sent.size(), 1u);
    return sent.empty() ? 0 : sent.front().sender & 0xFFFF;
  }
  static testing::AssertionResult DeregisteredOnce() {
    const std::vector<fake::Call> calls = fake::Calls("AaSysComUserDeregister");
    if (calls.size() == 1 && calls.front() == fake::Call("AaSysComUserDeregister", TemporaryTask())) {
      return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << testing::PrintToString(calls);
  }

  const fake::LogLine m_waiting = Line(kDebug, "Wait that HWAPI_RESET_SERVICE has started");
  const fake::LogLine m_sending = Line(kDebug, kName + "sending API_OM_GET_RP_RAM_REQ_MSG to HWAPI_RESET_SERVICE");
  const fake::LogLine m_received = Line(kDebug, kName + "received API_OM_GET_RP_RAM_RESP_MSG from HWAPI_RESET_SERVICE");
  const fake::LogLine m_noResponse =
      Line(kError, kName + "No response to API_OM_GET_RP_RAM_REQ_MSG received from HWAPI_RESET_SERVICE");
  static fake::LogLine TypeLine(int type) {
    return Line(kDebug, kName + "last reset type was " + std::to_string(type));
  }
  static fake::LogLine StatusLine(int status) {
    return Line(kError, kName + "Error " + std::to_string(status) +
                            " returned by HWAPI_RESET_SERVICE in API_OM_GET_RP_RAM_RESP_MSG");
  }
  const fake::Call m_poll{"AaConfigTagGetU32", kOnlineTag};
  const fake::Call m_sleep{"AaSysTimeSleep", 500, EAaSysTimeScale_Millisec};
};

TEST_F(ResetTypeRequestTest, TheTypeIsThatOfTheAnswer) {
  for (const u32 type : {0u, 4u, 16u, 0x12345678u}) EXPECT_EQ(AskAnsweredBy(Words({0, 0, type})), type);
}

TEST_F(ResetTypeRequestTest, TheRequestAsksForTheResetTypeInFourBytes) {
  Ask();
  EXPECT_THAT(
      fake::SentMessages(),
      ElementsAre(fake::Message{
          .id = kRequest, .payload = {0, 0, 0, 0}, .sender = 0x01010000 | TemporaryTask(), .receiver = 0x010104A7}));
  EXPECT_THAT(fake::Calls("AaSysComMsgCreate"), ElementsAre(fake::Call("AaSysComMsgCreate", kRequest, 4, 0x010104A7)));
}

TEST_F(ResetTypeRequestTest, BothAddressesAreOnTheOwnNode) {
  fake::SetOwnNid(0x0203);
  EXPECT_EQ(Ask(), 4u);
  const fake::Message request = fake::SentMessages(kRequest).at(0);
  EXPECT_EQ(request.receiver, 0x020304A7u);
  EXPECT_EQ(request.sender >> 16, 0x0203u);
}

TEST_F(ResetTypeRequestTest, EverythingHappensOnceInOrder) {
  const TAaProEuId self = AaProEuCurrent();
  Forget();
  Ask();
  const u32 task = TemporaryTask();
  EXPECT_THAT(fake::Calls({"AaConfigTagGetU32", "AaSysTimeSleep", "AaSysComMsgCreate", "AaSysComUserRegister",
                           "AaSysComMsgSendS", "AaSysComMsgSend", "hwapiMsgQueueReceiveSelective", "AaSysComMsgDestroy",
                           "AaSysComUserDeregister"}),
              ElementsAre(m_poll, fake::Call("AaSysComMsgCreate", kRequest, 4, 0x010104A7),
                          fake::Call("AaSysComUserRegister", 0, self),
                          fake::Call("AaSysComMsgSendS", kRequest, 0x010104A7, 0x01010000 | task),
                          fake::Call("hwapiMsgQueueReceiveSelective", 10'000'000, kResponse),
                          fake::Call("AaSysComMsgDestroy", kResponse), fake::Call("AaSysComUserDeregister", task)));
}

TEST_F(ResetTypeRequestTest, EachStepIsLoggedInItsPlace) {
  Ask();
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_waiting, m_sending, m_received, TypeLine(4)));
  EXPECT_TRUE(fake::CalledInOrder({Logging(kDebug, m_waiting.text),
                                   m_poll,
                                   {"AaSysComMsgSendS"},
                                   Logging(kDebug, m_sending.text),
                                   {"hwapiMsgQueueReceiveSelective"},
                                   Logging(kDebug, m_received.text),
                                   Logging(kDebug, TypeLine(4).text),
                                   {"AaSysComMsgDestroy", kResponse}}));
}

TEST_F(ResetTypeRequestTest, AnOnlineServiceIsAskedAtOnce) {
  Ask();
  EXPECT_EQ(fake::Now(), 0u);
}

TEST_F(ResetTypeRequestTest, AServiceWithoutItsTagIsLookedForEveryHalfSecond) {
  fake::RemoveTag(kOnlineTag);
  fake::After(1'200'000, [] { fake::SetTag(kOnlineTag, 6u); });
  EXPECT_EQ(Ask(), 4u);
  EXPECT_THAT(fake::Calls({"AaConfigTagGetU32", "AaSysTimeSleep", "AaSysComMsgCreate"}),
              ElementsAre(m_poll, m_sleep, m_poll, m_sleep, m_poll, m_sleep, m_poll,
                          fake::Call("AaSysComMsgCreate", kRequest, 4, 0x010104A7)));
}

TEST_F(ResetTypeRequestTest, ATagOfAnyOtherValueIsWaitedOut) {
  for (const u32 value : {0u, 1u, 5u, 7u, 0x06000000u, 0xFFFFFFFFu}) {
    fake::SetTag(kOnlineTag, value);
    fake::After(kSecond, [] { fake::SetTag(kOnlineTag, 6u); });
    Forget();
    Ask();
    EXPECT_THAT(fake::Calls("AaSysTimeSleep"), ElementsAre(m_sleep, m_sleep)) << value;
  }
}

TEST_F(ResetTypeRequestTest, ATagThatCannotBeReadIsWaitedOut) {
  for (const int result : {1, -1, 22}) {
    Forget();
    fake::FailCall("AaConfigTagGetU32", 1, result);
    Ask();
    EXPECT_THAT(fake::Calls({"AaConfigTagGetU32", "AaSysTimeSleep"}), ElementsAre(m_poll, m_sleep, m_poll));
  }
}

TEST_F(ResetTypeRequestTest, AnOldValueDoesNotStandForOneThatCannotBeRead) {
  fake::SetTag(kOnlineTag, 5u);
  fake::FailFrom("AaConfigTagGetU32", 2);
  fake::After(kSecond, [] {
    fake::SetTag(kOnlineTag, 6u);
    fake::StopFailing();
  });
  Ask();
  EXPECT_THAT(fake::Calls("AaSysTimeSleep"), ElementsAre(m_sleep, m_sleep));
}

TEST_F(ResetTypeRequestTest, TheWaitHasNoEnd) {
  fake::RemoveTag(kOnlineTag);
  fake::After(3600 * kSecond, [] { fake::SetTag(kOnlineTag, 6u); });
  EXPECT_EQ(Ask(), 4u);
  EXPECT_EQ(fake::Calls("AaSysTimeSleep").size(), 7200u);
}

TEST_F(ResetTypeRequestTest, AWaitIsLoggedOnce) {
  fake::RemoveTag(kOnlineTag);
  fake::After(10 * kSecond, [] { fake::SetTag(kOnlineTag, 6u); });
  Ask();
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_waiting, m_sending, m_received, TypeLine(4)));
}

TEST_F(ResetTypeRequestTest, TheAnswerMayTakeTenSeconds) {
  AnswerAfter(10 * kSecond - 1);
  EXPECT_EQ(Ask(), 4u);
}

TEST_F(ResetTypeRequestTest, AnAnswerAfterTenSecondsIsTooLate) {
  AnswerAfter(10 * kSecond + 1);
  EXPECT_EQ(Ask(), kNoType);
  EXPECT_EQ(fake::Now(), 10 * kSecond);
}

TEST_F(ResetTypeRequestTest, WithoutAnAnswerThereIsNoType) {
  m_board.answer.reset();
  EXPECT_EQ(Ask(), kNoType);
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_waiting, m_sending, m_noResponse));
}

TEST_F(ResetTypeRequestTest, WithoutAnAnswerTheUserIsDeregisteredAfterTheLine) {
  m_board.answer.reset();
  Ask();
  EXPECT_TRUE(DeregisteredOnce());
  EXPECT_TRUE(fake::CalledInOrder({Logging(kError, m_noResponse.text), {"AaSysComUserDeregister"}}));
  EXPECT_THAT(fake::Calls("AaSysComMsgDestroy"), IsEmpty());
}

TEST_F(ResetTypeRequestTest, AReceiveThatFailsIsNoAnswer) {
  fake::FailCall("hwapiMsgQueueReceiveSelective");
  EXPECT_EQ(Ask(), kNoType);
  EXPECT_TRUE(DeregisteredOnce());
}

TEST_F(ResetTypeRequestTest, OtherMessagesStayWhereTheyAre) {
  const fake::Message other{.id = 0x2BC7, .payload = Words({0, 0, 9}), .receiver = kTemperatureEndpoint};
  fake::Deliver(other);
  EXPECT_EQ(Ask(), 4u);
  EXPECT_THAT(fake::QueuedMessages(), ElementsAre(other));
}

TEST_F(ResetTypeRequestTest, EveryStatusButSuccessIsLoggedAndGivesNoType) {
  for (const u32 status : {1u, 2u, 3u, 0xFFFFFFFFu}) {
    Forget();
    EXPECT_EQ(AskAnsweredBy(Words({0, status, 2})), kNoType);
    EXPECT_THAT(fake::LogLines(), ElementsAre(m_waiting, m_sending, m_received, StatusLine(static_cast<int>(status))));
    EXPECT_TRUE(DeregisteredOnce());
  }
}

TEST_F(ResetTypeRequestTest, AnAnswerWithAnErrorIsDestroyedBeforeTheUserIsDeregistered) {
  AskAnsweredBy(Words({0, 1, 2}));
  EXPECT_TRUE(fake::CalledInOrder({Logging(kError, StatusLine(1).text),
                                   {"AaSysComMsgDestroy", kResponse},
                                   {"AaSysComUserDeregister", TemporaryTask()}}));
}

TEST_F(ResetTypeRequestTest, ATypeIsLoggedAsASignedNumber) {
  EXPECT_EQ(AskAnsweredBy(Words({0, 0, 0xFFFFFFFE})), 0xFFFFFFFEu);
  EXPECT_EQ(fake::LogLines().back(), TypeLine(-2));
}

TEST_F(ResetTypeRequestTest, TheFieldOfTheAnswerIsNoMatter) { EXPECT_EQ(AskAnsweredBy(Words({77, 0, 9})), 9u); }

TEST_F(ResetTypeRequestTest, WhatFollowsTheAnswerIsNoMatter) { EXPECT_EQ(AskAnsweredBy(Words({0, 0, 9, 1, 2})), 9u); }

TEST_F(ResetTypeRequestTest, AnAnswerThatIsTooShortForTheTypeGivesNone) {
  for (std::size_t size = 1; size < 12; ++size) EXPECT_EQ(AskAnsweredBy(fake::Bytes(size, 0)), kNoType) << size;
}

TEST_F(ResetTypeRequestTest, AnAnswerThatIsTooShortHasNoLineOfItsOwn) {
  AskAnsweredBy({0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0});
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_waiting, m_sending, m_received));
}

TEST_F(ResetTypeRequestTest, TheErrorOfAnAnswerWithoutATypeIsLogged) {
  EXPECT_EQ(AskAnsweredBy(Words({0, 2})), kNoType);
  EXPECT_EQ(fake::LogLines().back(), StatusLine(2));
}

TEST_F(ResetTypeRequestTest, AnAnswerWithoutAPayloadIsFatal) {
  m_board.answer = fake::Bytes{};
  EXPECT_EQ(Assertion(), "response != GLO_NULL");
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_waiting, m_sending));
}

TEST_F(ResetTypeRequestTest, ARequestThatCannotBeCreatedIsFatal) {
  fake::FailCall("AaSysComMsgCreate");
  EXPECT_EQ(Assertion(), "request != GLO_NULL");
  EXPECT_THAT(fake::Calls({"AaSysComUserRegister", "AaSysComMsgSendS", "hwapiMsgQueueReceiveSelective"}), IsEmpty());
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_waiting));
}

TEST_F(ResetTypeRequestTest, ARequestWithoutAPayloadIsFatal) {
  AllowLeaks();  // the process ends there
  fake::FailCall("AaSysComMsgGetPayload");
  EXPECT_EQ(Assertion(), "request != GLO_NULL");
  EXPECT_THAT(fake::Calls({"AaSysComUserRegister", "AaSysComMsgSendS"}), IsEmpty());
}

TEST_F(ResetTypeRequestTest, WithoutAUserTheQuestionIsAskedAndNotAnswered) {
  m_board.answer.reset();
  fake::FailCall("AaSysComUserRegister");
  EXPECT_EQ(Ask(), kNoType);
  EXPECT_EQ(fake::SentMessages(kRequest).at(0).sender, 0x01010000u);
  EXPECT_THAT(fake::LogLines(), ElementsAre(m_waiting, m_sending, m_noResponse));
  EXPECT_TRUE(DeregisteredOnce());  // task 0, which is harmless
}

TEST_F(ResetTypeRequestTest, EachQuestionHasAUserOfItsOwn) {
  Ask();
  Ask();
  EXPECT_EQ(fake::Calls("AaSysComUserRegister").size(), 2u);
  EXPECT_EQ(fake::Calls("AaSysComUserDeregister").size(), 2u);
  EXPECT_EQ(fake::SentMessages(kRequest).size(), 2u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
