/// The second half of the start-up: the reset service and the autodetection service.
#include "UninitializedService.h"

#include "ServiceOnBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::IsEmpty;

constexpr EAaSysLogSeverityLevel kDebug = EAaSysLogSeverityLevel_Debug;
constexpr EAaSysLogSeverityLevel kInfo = EAaSysLogSeverityLevel_Info;

constexpr u32 kSubscribeReq = 0x2C61;
constexpr u32 kAutodetReq = 0x0BBC;

/// The second half of the start-up belongs to the one service of the process.
class NeighboursTest : public fake::PlatformTest {
 protected:
  NeighboursTest() {
    fake::Unit().type = EUnitType_Vyd;
    fake::Unit().version = EUnitVersion_Vyda;
  }

  static ClimateService& TheService() { return dynamic_cast<ClimateService&>(Service::Get()); }

  static void PostInit() { ClimateService::PostInit(nullptr, nullptr, 0); }

  /// @return description of what is thrown out of the second half of the start-up; "" when nothing is
  static std::string PostInitFailure() {
    try {
      PostInit();
    } catch (const MsgHandlingException& e) {
      EXPECT_STREQ(e.what(), "Message handling error");
      EXPECT_EQ(e.getFile(), "ClimateServiceNeighbours.cpp");
      EXPECT_GT(e.getLine(), 0u);
      return e.getDescription();
    }
    return "";
  }

  static std::vector<u32> SentIds() {
    std::vector<u32> ids;
    for (const fake::Message& message : fake::SentMessages()) ids.push_back(message.id);
    return ids;
  }
};

TEST_F(NeighboursTest, TheTagOfAutodetectionStartsTheSecondHalf) {
  TheService().Init();
  fake::SetTag("app.hwapi.online.4b3", 6u);
  EXPECT_EQ(SentIds(), (std::vector{kSubscribeReq, kAutodetReq}));
}

TEST_F(NeighboursTest, AnyValueOfTheTagStartsTheSecondHalf) {
  TheService().Init();
  fake::SetTag("app.hwapi.online.4b3", 7u);
  EXPECT_EQ(SentIds(), (std::vector{kSubscribeReq, kAutodetReq}));
}

TEST_F(NeighboursTest, EachSettingOfTheTagRunsTheSecondHalfInFull) {
  TheService().Init();
  fake::SetTag("app.hwapi.online.4b3", 6u);
  fake::SetTag("app.hwapi.online.4b3", 6u);
  EXPECT_EQ(SentIds(), (std::vector{kSubscribeReq, kAutodetReq, kSubscribeReq, kAutodetReq}));
}

TEST_F(NeighboursTest, ATagThatIsAlreadySetStartsTheSecondHalfAtOnce) {
  fake::SetTag("app.hwapi.online.4b3", 6u);
  TheService().Init();
  EXPECT_EQ(SentIds(), (std::vector{kSubscribeReq, kAutodetReq}));
}

TEST_F(NeighboursTest, TheTagOfAnotherServiceStartsNothing) {
  TheService().Init();
  fake::SetTag("app.hwapi.online.4a7", 6u);
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
}

TEST_F(NeighboursTest, TheStepsComeInOrder) {
  PostInit();
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysLogPrintE", kDebug, 131143, "Waiting for ResetS to initialize"},
       {"Service::WaitForConfigTag", "app.hwapi.online.4a7", 6},
       {"AaSysComMsgCreate", kSubscribeReq, 28},
       {"AaSysLogPrintE", kInfo, 131143, "Reset event register request send to HWAPI_RESET_SERVICE"},
       {"AaSysComMsgSend", kSubscribeReq},
       {"Service::AddMsgDelegate", 0x0BBD},
       {"Service::AddMsgDelegate", 0x0BBE},
       {"AaSysComMsgCreate", kAutodetReq, 24},
       {"AaSysLogPrintE", kInfo, 131143, "RegisterAutodetMsgDelegate request send to HWAPI_AUTODET_SERVICE"},
       {"AaSysComMsgSend", kAutodetReq}}));
}

TEST_F(NeighboursTest, AutodetectionItselfIsNotWaitedFor) {
  PostInit();
  EXPECT_EQ(fake::Calls("Service::WaitForConfigTag"),
            std::vector{fake::Call("Service::WaitForConfigTag", "app.hwapi.online.4a7", 6)});
}

TEST_F(NeighboursTest, AutodetectionCanBeWaitedFor) {
  TheService().WaitingForAdetSToInit();
  EXPECT_TRUE(fake::CalledInOrder({{"AaSysLogPrintE", kDebug, 131143, "Waiting for AdetS to initialize"},
                                   {"Service::WaitForConfigTag", "app.hwapi.online.4b3", 6}}));
}

TEST_F(NeighboursTest, NothingIsSentWhenTheWaitIsBrokenOff) {
  fake::FailCall("Service::WaitForConfigTag");
  EXPECT_THROW(PostInit(), MsgHandlingException);
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
}

TEST_F(NeighboursTest, TheSubscriptionGoesToTheResetServiceOnTheOwnNode) {
  fake::SetOwnNid(0x0302);
  PostInit();
  const fake::Message expected = {
      .id = 0x2C61, .payload = Words({1206, 0, 1, 1, 1, 3, 2}), .sender = 0x030204B6, .receiver = 0x030204A7};
  EXPECT_EQ(fake::SentMessages(kSubscribeReq), std::vector{expected});
}

TEST_F(NeighboursTest, TheAutodetectionRequestGoesToItsServiceOnTheOwnNode) {
  fake::SetOwnNid(0x0302);
  PostInit();
  const fake::Message expected = {
      .id = 0x0BBC, .payload = Words({1206, 0, 1, 0, 0, 0}), .sender = 0x030204B6, .receiver = 0x030204B3};
  EXPECT_EQ(fake::SentMessages(kAutodetReq), std::vector{expected});
}

TEST_F(NeighboursTest, ASubscriptionThatCannotBeCreatedIsRefused) {
  fake::FailCall("AaSysComMsgCreate", 1);
  EXPECT_EQ(PostInitFailure(), "Creation of API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG failed");
}

TEST_F(NeighboursTest, ASubscriptionWithoutPayloadIsRefused) {
  fake::FailCall("AaSysComMsgGetPayload", 1);
  EXPECT_EQ(PostInitFailure(), "Creation of API_RESET_EVENT_NOTIF_SUBSCRIBE_REQ_MSG failed");
}

TEST_F(NeighboursTest, ARefusedSubscriptionIsNotAnnouncedInTheLog) {
  fake::FailCall("AaSysComMsgCreate", 1);
  PostInitFailure();
  EXPECT_THAT(fake::LogTexts(kInfo), IsEmpty());
}

TEST_F(NeighboursTest, AfterARefusedSubscriptionNothingElseHappens) {
  fake::FailCall("AaSysComMsgCreate", 1);
  PostInitFailure();
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  EXPECT_THAT(fake::RegisteredIds(), IsEmpty());
}

TEST_F(NeighboursTest, AnAutodetectionRequestThatCannotBeCreatedIsRefused) {
  fake::FailCall("AaSysComMsgCreate", 2);
  EXPECT_EQ(PostInitFailure(), "Payload missing from API_AUTODET_REQ_MSG");
}

TEST_F(NeighboursTest, AnAutodetectionRequestWithoutPayloadIsRefused) {
  fake::FailCall("AaSysComMsgGetPayload", 2);
  EXPECT_EQ(PostInitFailure(), "Payload missing from API_AUTODET_REQ_MSG");
}

TEST_F(NeighboursTest, ARefusedAutodetectionRequestLeavesItsHandlersRegistered) {
  fake::FailCall("AaSysComMsgCreate", 2);
  PostInitFailure();
  EXPECT_EQ(fake::RegisteredIds(), (std::vector<u32>{0x0BBD, 0x0BBE}));
}

TEST_F(NeighboursTest, ARefusedAutodetectionRequestComesAfterTheSubscription) {
  fake::FailCall("AaSysComMsgCreate", 2);
  PostInitFailure();
  EXPECT_EQ(SentIds(), std::vector{kSubscribeReq});
}

TEST_F(NeighboursTest, TheAnswerOfAutodetectionIsOnlyLogged) {
  PostInit();
  fake::ClearLog();
  fake::ClearSentMessages();
  EXPECT_TRUE(fake::Dispatch({.id = 0x0BBD, .payload = Words({1206, 0})}));
  EXPECT_EQ(fake::LogLines(), (std::vector<fake::LogLine>{{kDebug, 131143, "API_AUTODET_RESP_MSG received"}}));
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
}

TEST_F(NeighboursTest, AnAnswerOfAutodetectionWithoutPayloadIsOnlyLogged) {
  PostInit();
  EXPECT_TRUE(fake::Dispatch({.id = 0x0BBD}));
  EXPECT_TRUE(fake::Logged(kDebug, "API_AUTODET_RESP_MSG received"));
}

TEST_F(NeighboursTest, AnIndicationReachesTheSensorGroupOfTheProcessingUnits) {
  TheService().Init();
  fake::SetTag("app.hwapi.online.4b3", 6u);
  fake::Dispatch({.id = 0x0BBE, .payload = Words({2, 11, 12, 13, 14, 15})});
  EXPECT_TRUE(fake::Logged(
      kInfo, "SensorGroup::HandleAutodetUnitInd NOT IMPLEMENTED hw_sw_id'13' unit_id'11' autodetectionState'2'"));
}

/// Indications of a unit, handed to the handler itself.
class AutodetUnitIndTest : public UninitializedServiceTest {
 protected:
  /// @return the lines that an indication logs
  std::vector<fake::LogLine> LinesOf(const fake::Bytes& payload) {
    m_service->Init();
    fake::ClearLog();
    const fake::ReceivedMessage ind({.id = 0x0BBE, .payload = payload});
    try {
      m_service->HandleAutodetUnitInd(ind);
    } catch (const MsgHandlingException& e) {
      m_refusal = e.getDescription();
    }
    return fake::LogLines();
  }

  /// Lines of an indication whose words reach the group.
  static std::vector<fake::LogLine> Reaching(const std::string& values) {
    return {kReceived, {kInfo, 131143, "SensorGroup::HandleAutodetUnitInd NOT IMPLEMENTED " + values}};
  }

  static inline const fake::LogLine kReceived{kInfo, 131143, "API_AUTODET_UNIT_IND_MSG received"};
  std::string m_refusal;
};

TEST_F(AutodetUnitIndTest, StateUnitAndIdentityReachTheGroup) {
  fake::Bytes payload = Words({7, 0x101, 0x102, 0x103});
  payload.resize(84, 0xEE);
  EXPECT_EQ(LinesOf(payload), Reaching("hw_sw_id'259' unit_id'257' autodetectionState'7'"));
}

TEST_F(AutodetUnitIndTest, FieldsBehindAShortPayloadAreZero) {
  EXPECT_EQ(LinesOf(Words({7, 0x101})), Reaching("hw_sw_id'0' unit_id'257' autodetectionState'7'"));
}

TEST_F(AutodetUnitIndTest, BytesBehindTheRecordAreNotRead) {
  fake::Bytes payload = Words({7, 0x101, 0x102, 0x103});
  payload.resize(200, 0xEE);
  EXPECT_EQ(LinesOf(payload), Reaching("hw_sw_id'259' unit_id'257' autodetectionState'7'"));
}

TEST_F(AutodetUnitIndTest, AnIndicationWithoutPayloadIsRefused) {
  EXPECT_EQ(LinesOf({}), std::vector{kReceived});
  EXPECT_EQ(m_refusal, "Payload missing from API_AUTODET_UNIT_IND_MSG");
}

TEST_F(AutodetUnitIndTest, OnABoardWithoutProcessingUnitsNothingHappens) {
  fake::Unit().version = EUnitVersion_Zun;
  EXPECT_EQ(LinesOf(Words({7, 0x101, 0x102, 0x103})), std::vector{kReceived});
  EXPECT_EQ(m_refusal, "");
}

TEST_F(AutodetUnitIndTest, WithoutPayloadItIsRefusedAlsoOnABoardWithoutProcessingUnits) {
  fake::Unit().version = EUnitVersion_Zun;
  LinesOf({});
  EXPECT_EQ(m_refusal, "Payload missing from API_AUTODET_UNIT_IND_MSG");
}

}  // namespace
}  // namespace ps::hwapi::common::climate
