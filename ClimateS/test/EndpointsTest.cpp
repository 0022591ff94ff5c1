/// Publishing of the temperature, fan and black-box endpoints.
#include "UninitializedService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr EAaSysLogSeverityLevel kDebug = EAaSysLogSeverityLevel_Debug;
constexpr EAaSysLogSeverityLevel kInfo = EAaSysLogSeverityLevel_Info;
constexpr EAaSysLogSeverityLevel kError = EAaSysLogSeverityLevel_Error;

/// Which registration of a messaging user comes when.
constexpr unsigned kFanRegistration = 1;
constexpr unsigned kBlackBoxRegistration = 2;

const std::vector<u32> kFanIds = {0x2C13, 0x2C15, 0x2CF1, 0x2C78};

class EndpointsTest : public UninitializedServiceTest {
 protected:
  /// @return which of the fan messages have a handler, in order of registration
  static std::vector<u32> RegisteredFanIds() {
    std::vector<u32> ids = fake::RegisteredIds();
    std::erase_if(ids, [](u32 id) { return std::find(kFanIds.begin(), kFanIds.end(), id) == kFanIds.end(); });
    return ids;
  }

  static std::vector<std::string> AllTexts() {
    std::vector<std::string> texts;
    for (const fake::LogLine& line : fake::LogLines()) texts.push_back(line.text);
    return texts;
  }

  /// @return what is thrown out of Init: "reason: description (file)"; "" when nothing is
  std::string InitFailure() {
    try {
      m_service->Init();
    } catch (const Service::InitFailedException& e) {
      EXPECT_GT(e.getLine(), 0u);
      return std::string(e.what()) + ": " + e.getDescription() + " (" + e.getFile() + ")";
    }
    return "";
  }
};

TEST_F(EndpointsTest, TheTemperatureEndpointItselfIsLeftToTheBase) {
  m_service->Init();
  EXPECT_THAT(fake::Calls("AaSysComUserRegister"), Not(Contains(fake::Call("AaSysComUserRegister", 0x4B6, 1))));
  EXPECT_EQ(fake::Calls("AaSysComUserRegister").size(), 2u);
}

TEST_F(EndpointsTest, TheTemperatureEndpointIsAnnouncedWithFourBytes) {
  m_service->Init();
  EXPECT_EQ(fake::TagValue("app.hwapi.online.4b6"), (fake::Bytes{6, 0, 0, 0}));
}

TEST_F(EndpointsTest, TheFanEndpointIsAnnounced) {
  m_service->Init();
  EXPECT_EQ(fake::TagValue("app.hwapi.online.4ad"), (fake::Bytes{6, 0, 0, 0}));
}

TEST_F(EndpointsTest, TheBlackBoxEndpointIsAnnounced) {
  m_service->Init();
  EXPECT_EQ(fake::TagValue("app.hwapi.online.4d9"), (fake::Bytes{6, 0, 0, 0}));
}

TEST_F(EndpointsTest, TheFanEndpointBelongsToTheServiceThread) {
  m_service->Init();
  EXPECT_TRUE(fake::CalledInOrder({{"AaProEuCurrent"}, {"AaSysComUserRegister", 0x4AD, AaProEuCurrent()}}));
}

TEST_F(EndpointsTest, TheBlackBoxEndpointBelongsToTheServiceThread) {
  m_service->Init();
  EXPECT_TRUE(fake::CalledInOrder({{"AaProEuCurrent"}, {"AaSysComUserRegister", 0x4D9, AaProEuCurrent()}}));
}

TEST_F(EndpointsTest, MessagesToTheFanEndpointReachTheService) {
  m_service->Init();
  void* msg = AaSysComMsgCreate(0x2C14, 4, 0x010104AD);
  AaSysComMsgSend(&msg);
  EXPECT_EQ(fake::DispatchQueued(), 1u);
}

TEST_F(EndpointsTest, ARefusedFanEndpointIsNotAnnounced) {
  fake::FailCall("AaSysComUserRegister", kFanRegistration);
  m_service->Init();
  EXPECT_EQ(fake::TagValue("app.hwapi.online.4ad"), std::nullopt);
}

TEST_F(EndpointsTest, ARefusedFanEndpointHasNoHandlers) {
  fake::FailCall("AaSysComUserRegister", kFanRegistration);
  m_service->Init();
  EXPECT_THAT(RegisteredFanIds(), IsEmpty());
}

TEST_F(EndpointsTest, ARefusedFanEndpointIsSilent) {
  fake::FailCall("AaSysComUserRegister", kFanRegistration);
  m_service->Init();
  EXPECT_THAT(AllTexts(), Not(Contains(HasSubstr("HWAPI_FAN_SERVICE"))));
}

TEST_F(EndpointsTest, ARefusedFanEndpointDoesNotStopTheStartUp) {
  fake::FailCall("AaSysComUserRegister", kFanRegistration);
  m_service->Init();
  EXPECT_TRUE(
      fake::CalledInOrder({TagSet("app.hwapi.online.4d9", 6), {"AaConfigTagRegister", "app.hwapi.online.4b3"}}));
}

TEST_F(EndpointsTest, AFanEndpointWithAnotherNumberIsARefusedOne) {
  fake::FailCall("AaSysComUserRegister", kFanRegistration, 0x4AE);
  m_service->Init();
  EXPECT_EQ(fake::TagValue("app.hwapi.online.4ad"), std::nullopt);
  EXPECT_THAT(RegisteredFanIds(), IsEmpty());
}

TEST_F(EndpointsTest, TheNumberOfFansIsLogged) {
  InitOn(EUnitVersion_Vyda);
  EXPECT_TRUE(fake::Logged(kDebug, "HWAPI_FAN_SERVICE is running on a unit version: 26 (0x1a), number of fans: 3"));
}

TEST_F(EndpointsTest, AUnitWithTwoFansHasFanHandlers) {
  InitOn(EUnitVersion_Vyga);
  EXPECT_TRUE(fake::Logged(kDebug, "HWAPI_FAN_SERVICE is running on a unit version: 30 (0x1e), number of fans: 2"));
  EXPECT_EQ(RegisteredFanIds(), kFanIds);
}

TEST_F(EndpointsTest, AUnitWithoutAFanTableGetsTwoFans) {
  InitOn(EUnitVersion{99});
  EXPECT_TRUE(fake::Logged(kError,
                           "HWAPI_FAN_SERVICE is running on a unsupported unit version: 99 (0x63), default number of "
                           "fans: 2"));
}

TEST_F(EndpointsTest, AUnitWithoutAFanTableHasFanHandlers) {
  InitOn(EUnitVersion{99});
  EXPECT_EQ(RegisteredFanIds(), kFanIds);
}

TEST_F(EndpointsTest, AUnitWithoutAFanTableLogsNoOtherNumberOfFans) {
  InitOn(EUnitVersion{99});
  EXPECT_THAT(fake::LogTexts(kDebug), Not(Contains(HasSubstr("HWAPI_FAN_SERVICE"))));
}

TEST_F(EndpointsTest, AFailedBackplaneReadGivesTwoFans) {
  fake::FailEvery("ddal_bp_3hu_backplane_type_get");
  InitOn(EUnitVersion_Kelc);
  EXPECT_TRUE(fake::CalledInOrder(
      {{"AaSysLogPrintE", kError, 131143, "Indoor backplane type reading failed!"},
       {"AaSysLogPrintE", kError, 131143,
        "HWAPI_FAN_SERVICE is running on a unsupported unit version: 17 (0x11), default number of fans: 2"},
       HandlerAdded(0x2C13)}));
}

TEST_F(EndpointsTest, TheFanEndpointOfAUnitWithoutFansStaysOnline) {
  InitOn(EUnitVersion_Kele);
  EXPECT_EQ(fake::TagValue("app.hwapi.online.4ad"), (fake::Bytes{6, 0, 0, 0}));
}

TEST_F(EndpointsTest, TheFanEndpointOfAUnitWithoutFansHasNoHandlers) {
  InitOn(EUnitVersion_Kele);
  EXPECT_THAT(RegisteredFanIds(), IsEmpty());
}

TEST_F(EndpointsTest, AUnitWithoutFansSaysSo) {
  InitOn(EUnitVersion_Kele);
  EXPECT_TRUE(fake::CalledInOrder(
      {TagSet("app.hwapi.online.4ad", 6),
       {"AaSysLogPrintE", kDebug, 131143,
        "HWAPI_FAN_SERVICE is running on a unit version: 31 (0x1f), number of fans: 0"},
       {"AaSysLogPrintE", kInfo, 131143,
        "HWAPI_FAN_SERVICE is running but doesn't response request messages because unit 31 (0x1f) has no fans"}}));
}

TEST_F(EndpointsTest, AUnitWithFansDoesNotSayThatItHasNone) {
  m_service->Init();
  EXPECT_THAT(fake::LogTexts(kInfo), Not(Contains(HasSubstr("has no fans"))));
}

TEST_F(EndpointsTest, TheBlackBoxEndpointIsLoggedBetweenItsTagAndItsHandlers) {
  m_service->Init();
  EXPECT_TRUE(
      fake::CalledInOrder({TagSet("app.hwapi.online.4d9", 6),
                           {"AaSysLogPrintE", kInfo, 131143, "HWAPI_BLACKBOX registered to SysCom, CpId: (0x4d9)"},
                           HandlerAdded(0x43A2),
                           HandlerAdded(0x1302)}));
}

TEST_F(EndpointsTest, ABoardWithoutABlackBoxHasNoResetHandlers) {
  m_service->Init();
  for (const u32 id : {0x2C62u, 0x1134u, 0x08E6u, 0x1177u}) EXPECT_THAT(fake::RegisteredIds(), Not(Contains(id)));
}

TEST_F(EndpointsTest, ARefusedBlackBoxEndpointEndsTheStartUp) {
  fake::FailCall("AaSysComUserRegister", kBlackBoxRegistration);
  EXPECT_EQ(InitFailure(),
            "Initialization failed: HWAPI_BLACKBOX Service SysCom registration failed (ClimateService.cpp)");
}

TEST_F(EndpointsTest, ABlackBoxEndpointWithAnotherNumberEndsTheStartUp) {
  fake::FailCall("AaSysComUserRegister", kBlackBoxRegistration, 0x4DA);
  EXPECT_NE(InitFailure(), "");
}

TEST_F(EndpointsTest, ARefusedBlackBoxEndpointIsNotAnnounced) {
  fake::FailCall("AaSysComUserRegister", kBlackBoxRegistration);
  InitFailure();
  EXPECT_EQ(fake::TagValue("app.hwapi.online.4d9"), std::nullopt);
}

TEST_F(EndpointsTest, ARefusedBlackBoxEndpointHasNoHandlers) {
  fake::FailCall("AaSysComUserRegister", kBlackBoxRegistration);
  InitFailure();
  EXPECT_THAT(fake::RegisteredIds(), Not(Contains(0x43A2u)));
  EXPECT_THAT(fake::RegisteredIds(), Not(Contains(0x1302u)));
}

TEST_F(EndpointsTest, AfterARefusedBlackBoxEndpointAutodetectionIsNotObserved) {
  fake::FailCall("AaSysComUserRegister", kBlackBoxRegistration);
  InitFailure();
  EXPECT_THAT(fake::Calls("AaConfigTagRegister"), IsEmpty());
}

TEST_F(EndpointsTest, FailedAnnouncementsDoNotStopTheStartUp) {
  fake::FailEvery("AaConfigTagPublicSet");
  EXPECT_EQ(InitFailure(), "");
  EXPECT_EQ(fake::RegisteredIds().size(), 8u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
