/// What the service tells the platform when it is constructed, and a start-up whose calls to the platform fail.
#include "UninitializedService.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ps::hwapi::common::climate {
namespace {

using testing::IsEmpty;

TEST_F(UninitializedServiceTest, NameEndpointLogFeatureAndStateAreThoseOfTheClimateService) {
  EXPECT_EQ(fake::ConstructedWith(),
            (fake::ServiceArguments{.name = "CLM", .endpoint = 1206, .printFeature = 131143, .serviceState = 2228235}));
}

TEST_F(UninitializedServiceTest, TheOneServiceOfTheProcessIsAClimateService) {
  m_service.reset();
  EXPECT_NE(dynamic_cast<ClimateService*>(&Service::Get()), nullptr);
  EXPECT_EQ(fake::ConstructedWith().name, "CLM");
}

/// A start-up whose observation of autodetection is refused.
class UnobservedAutodetectionTest : public UninitializedServiceTest {
 protected:
  UnobservedAutodetectionTest() {
    fake::FailCall("AaConfigTagRegister");
    m_service->Init();
  }
};

TEST_F(UnobservedAutodetectionTest, IsNoReasonToEndTheStartUp) {
  EXPECT_EQ(fake::TagValue("app.hwapi.online.4d9"), fake::BytesOf(u32{6}));
}

TEST_F(UnobservedAutodetectionTest, IsTriedOnce) { EXPECT_EQ(fake::Calls("AaConfigTagRegister").size(), 1u); }

TEST_F(UnobservedAutodetectionTest, StartsNoSecondHalf) {
  fake::SetTag("app.hwapi.online.4b3", 6u);
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  EXPECT_THAT(fake::Calls("Service::WaitForConfigTag"), IsEmpty());
}

/// A start-up whose thread for the power supply cannot be started.
class UnfedPowerSupplyTest : public UninitializedServiceTest {
 protected:
  UnfedPowerSupplyTest() {
    fake::FailCall("AaSysComEuCreateAndStart", 1, 12);
    InitOn(EUnitVersion_Pivoa);
  }
};

TEST_F(UnfedPowerSupplyTest, IsLogged) {
  EXPECT_EQ(
      fake::LogTexts(EAaSysLogSeverityLevel_Error),
      std::vector<std::string>{"PsuSpiPoller::enableSpiEvents(): failed to start thread for PSU SPI poller, ret = 12"});
}

TEST_F(UnfedPowerSupplyTest, IsTriedOnce) { EXPECT_EQ(fake::Calls("AaSysComEuCreateAndStart").size(), 1u); }

TEST_F(UnfedPowerSupplyTest, IsNoReasonToEndTheStartUp) {
  EXPECT_EQ(fake::TagValue("app.hwapi.online.4d9"), fake::BytesOf(u32{6}));
  EXPECT_EQ(fake::RegisteredIds().size(), 8u);
}

}  // namespace
}  // namespace ps::hwapi::common::climate
