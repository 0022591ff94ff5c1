/// The order of the start-up, what it asks of the unit, and which handler each message id reaches.
#include "UninitializedService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::IsEmpty;

constexpr EAaSysLogSeverityLevel kDebug = EAaSysLogSeverityLevel_Debug;

class StartUpTest : public UninitializedServiceTest {};

TEST_F(StartUpTest, TheStepsOfInitComeInOrder) {
  m_service->Init();
  EXPECT_TRUE(fake::CalledInOrder({{"ApiGetLocalUnitVersion"},
                                   {"ApiGetLocalUnitType"},
                                   TagSet("app.hwapi.online.4b6", 6),
                                   HandlerAdded(0x2B29),
                                   HandlerAdded(0x203F),
                                   {"AaSysComUserRegister", 0x4AD},
                                   TagSet("app.hwapi.online.4ad", 6),
                                   HandlerAdded(0x2C13),
                                   {"AaSysComUserRegister", 0x4D9},
                                   TagSet("app.hwapi.online.4d9", 6),
                                   HandlerAdded(0x43A2),
                                   HandlerAdded(0x1302),
                                   {"AaConfigTagRegister", "app.hwapi.online.4b3"}}));
}

TEST_F(StartUpTest, HandlersAreRegisteredInOrder) {
  m_service->Init();
  EXPECT_EQ(fake::RegisteredIds(), (std::vector<u32>{0x2B29, 0x203F, 0x2C13, 0x2C15, 0x2CF1, 0x2C78, 0x43A2, 0x1302}));
}

TEST_F(StartUpTest, ThePsuSpiPollerStartsBeforeTheEndpointsArePublished) {
  InitOn(EUnitVersion_Pivoa);
  EXPECT_TRUE(fake::CalledInOrder(
      {{"ApiGetLocalUnitType"}, {"AaSysComEuCreateAndStart", "PsuSpiPoller"}, TagSet("app.hwapi.online.4b6", 6)}));
}

TEST_F(StartUpTest, TheUnitVersionIsLogged) {
  InitOn(EUnitVersion_Vydj);
  EXPECT_TRUE(fake::Logged(kDebug, "m_unitVersion: 27"));
}

TEST_F(StartUpTest, TheUnitTypeIsLogged) {
  m_service->Init();
  EXPECT_TRUE(fake::Logged(kDebug, "m_unitType: 11"));
}

TEST_F(StartUpTest, TheVersionIsLoggedBeforeTheTypeIsAsked) {
  m_service->Init();
  EXPECT_TRUE(fake::CalledInOrder({{"ApiGetLocalUnitVersion"},
                                   {"AaSysLogPrintE", kDebug, 131143, "m_unitVersion: 26"},
                                   {"ApiGetLocalUnitType"},
                                   {"AaSysLogPrintE", kDebug, 131143, "m_unitType: 11"}}));
}

TEST_F(StartUpTest, AnUnknownUnitIsTakenAsItIs) {
  fake::Unit().type = EUnitType_Unknown;
  InitOn(EUnitVersion_Unallocated);
  EXPECT_TRUE(fake::Logged(kDebug, "m_unitVersion: 0"));
  EXPECT_TRUE(fake::Logged(kDebug, "m_unitType: 22"));
}

TEST_F(StartUpTest, EveryLineHasTheFeatureOfTheService) {
  m_service->Init();
  for (const fake::LogLine& line : fake::LogLines()) EXPECT_EQ(line.feature, 131143u) << line;
}

TEST_F(StartUpTest, NothingIsSentBeforeAutodetectionIsOnline) {
  m_service->Init();
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
}

TEST_F(StartUpTest, AMessageWithoutAHandlerIsLeftToTheReceiveLoop) {
  m_service->Init();
  EXPECT_FALSE(fake::Dispatch({.id = 0x2C14}));
}

TEST_F(StartUpTest, OtherServicesAreNotWaitedForDuringInit) {
  m_service->Init();
  EXPECT_THAT(fake::Calls("Service::WaitForConfigTag"), IsEmpty());
}

/// Versions whose power supply is fed, and whose is not.
class PsuSpiFeeding : public UninitializedServiceTest, public testing::WithParamInterface<EUnitVersion> {
 protected:
  std::vector<fake::Call> StartedPollers() {
    InitOn(GetParam());
    return fake::Calls("AaSysComEuCreateAndStart");
  }
};
class PsuSpiFed : public PsuSpiFeeding {};
class PsuSpiNotFed : public PsuSpiFeeding {};

TEST_P(PsuSpiFed, OnePollerIsStarted) { EXPECT_EQ(StartedPollers().size(), 1u); }

INSTANTIATE_TEST_SUITE_P(Version, PsuSpiFed,
                         testing::Values(EUnitVersion{24}, EUnitVersion{25}, EUnitVersion{30}, EUnitVersion{38},
                                         EUnitVersion{39}),
                         testing::PrintToStringParamName());

TEST_P(PsuSpiNotFed, NoPollerIsStarted) { EXPECT_THAT(StartedPollers(), IsEmpty()); }

INSTANTIATE_TEST_SUITE_P(Version, PsuSpiNotFed,
                         testing::Values(EUnitVersion{0}, EUnitVersion{15}, EUnitVersion{16}, EUnitVersion{17},
                                         EUnitVersion{18}, EUnitVersion{26}, EUnitVersion{27}, EUnitVersion{28},
                                         EUnitVersion{31}, EUnitVersion{33}, EUnitVersion{41}, EUnitVersion{43},
                                         EUnitVersion{51}, EUnitVersion{58}),
                         testing::PrintToStringParamName());

/// A message id, and what its handler says when the payload is missing: each handler says its own.
struct Route {
  u32 id;
  const char* refusal;

  friend std::ostream& operator<<(std::ostream& out, const Route& route) { return out << route.id; }
};

class RouteTest : public UninitializedServiceTest, public testing::WithParamInterface<Route> {};

TEST_P(RouteTest, TheMessageReachesItsHandler) {
  m_service->Init();
  try {
    fake::Dispatch({.id = GetParam().id});
    ADD_FAILURE() << "nothing thrown";
  } catch (const MsgHandlingException& refusal) {
    EXPECT_EQ(refusal.getDescription(), GetParam().refusal);
  }
}

INSTANTIATE_TEST_SUITE_P(Id, RouteTest,
                         testing::Values(Route{0x2B29, "Payload missing from API_TEMP_MEAS_REQ_MSG"},
                                         Route{0x203F, "Payload missing from API_TEMPERATURE_POLL_TIMER_IND_MSG"},
                                         Route{0x2C13, "Payload missing from API_SET_FAN_PWM_FREQ_REQ_MSG"},
                                         Route{0x2C15, "Payload missing from API_SET_FAN_SPEED_REQ_MSG"},
                                         Route{0x2CF1, "Payload missing from API2_SET_FAN_SPEED_REQ_MSG"},
                                         Route{0x2C78, "Payload missing from API_FAN_SPEED_POLL_TIMER_IND_MSG"},
                                         Route{0x43A2, "Payload missing from API_STORE_BLACKBOX_DATA_REQ_MSG"},
                                         Route{0x1302, "Payload missing from API_BLACKBOX_STORE_FILE_REQ_MSG"}),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace ps::hwapi::common::climate
