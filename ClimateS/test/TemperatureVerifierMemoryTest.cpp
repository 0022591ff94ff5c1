/// Reading a sensor when memory runs out.
#include "FailingMemory.h"
#include "TemperatureVerifier.h"
#include "fake/PlatformTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ps::hwapi::common::climate {
namespace {

constexpr unsigned kPa1 = 37;
constexpr u32 kDevice = 0x60025;
constexpr int kUntouched = 123456;

TEST(TemperatureVerifierMemoryTest, AFailedCheckThatCannotBeToldIsAFailureThatIsNotThrown) {
  for (unsigned nth = 1;; ++nth) {
    fake::Reset();
    fake::Unit().version = EUnitVersion_Vyda;  // the RF ASIC is off
    TemperatureVerifier verifier;
    int temperature = kUntouched;
    const FailingAllocation failing(nth);
    const int rc = verifier.GetCurrentTemperature(kPa1, kDevice, &temperature);
    if (!failing.Happened()) {
      EXPECT_EQ(rc, -1004);
      EXPECT_GT(nth, 1u);
      return;
    }
    EXPECT_EQ(rc, -1001) << "allocation " << nth;
    EXPECT_EQ(temperature, kUntouched);
    EXPECT_THAT(fake::LogTexts(EAaSysLogSeverityLevel_Error),
                testing::ElementsAre("TemperatureVerifier::GetCurrentTemperature: out of memory"));
  }
}

}  // namespace
}  // namespace ps::hwapi::common::climate
