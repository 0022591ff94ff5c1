/// Words of the radio hardware whose top bit is set, as the log of the checks of a power amplifier shows them.
#include "TemperatureVerifier.h"

#include "fake/PlatformTest.h"

#include <gtest/gtest.h>

namespace ps::hwapi::common::climate {
namespace {

/// A Morvet board whose RF ASIC and chain are enabled.
class TemperatureVerifierSignedTextTest : public fake::PlatformTest {
 protected:
  static constexpr u32 kRegister = 0x3268;
  static constexpr u32 kDevice = 0x50003;
  static constexpr unsigned kPa1 = 37;

  TemperatureVerifierSignedTextTest() {
    fake::Unit().version = EUnitVersion{26};
    fake::SetRfRegister(0, kRegister, 1);
    fake::SetRfChain(0, 1);
    fake::SetTemperature(kDevice, 40000);
  }

  int Read() {
    int temperature = 0;
    return m_verifier.GetCurrentTemperature(kPa1, kDevice, &temperature);
  }

  TemperatureVerifier m_verifier;
};

TEST_F(TemperatureVerifierSignedTextTest, ValueOfTheRfAsicsRegisterIsSigned) {
  fake::SetRfRegister(0, kRegister, 0x80000000);
  EXPECT_EQ(Read(), 0);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "ddal_rf_asic_read_reg err'0' val'-2147483648'"));
}

TEST_F(TemperatureVerifierSignedTextTest, StatusOfTheRfChainIsSigned) {
  fake::SetRfChain(0, 0xFFFFFFFF);
  EXPECT_EQ(Read(), -1001);
  EXPECT_TRUE(fake::Logged(EAaSysLogSeverityLevel_Debug, "ddal_rf_chain_status_get err'0' status'-1'"));
}

}  // namespace
}  // namespace ps::hwapi::common::climate
