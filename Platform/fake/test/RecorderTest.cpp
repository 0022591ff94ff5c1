#include "AaConfig.h"
#include "AaSem.h"
#include "ddal_fan.h"
#include "fake/PlatformTest.h"

#include <sstream>
#include <stdexcept>

namespace {

using fake::BytesOf;
using fake::Call;
using fake::CalledInOrder;
using fake::Calls;

using Recorder = fake::PlatformTest;

TEST_F(Recorder, CallsAreKeptInOrderWithTheirArguments) {
  ddal_fan_set_pwm(1, 40);
  AaConfigRadGetValue(0x20088);
  EXPECT_EQ(Calls(), (std::vector<Call>{{"ddal_fan_set_pwm", 1, 40}, {"AaConfigRadGetValue", 0x20088}}));
}

TEST_F(Recorder, BuffersAreCopied) {
  u32 value = 6;
  AaConfigTagPublicSet("app.online", &value, sizeof value);
  value = 7;
  EXPECT_EQ(Calls("AaConfigTagPublicSet"),
            (std::vector<Call>{{"AaConfigTagPublicSet", "app.online", BytesOf(u32{6})}}));
}

TEST_F(Recorder, CallsOfSeveralFunctionsKeepTheirOrder) {
  ddal_fan_set_pwm(0, 1);
  AaConfigRadGetValue(1);
  ddal_fan_set_fan_pwm_freq(0, 25000);
  EXPECT_EQ(Calls({"ddal_fan_set_fan_pwm_freq", "ddal_fan_set_pwm"}),
            (std::vector<Call>{{"ddal_fan_set_pwm", 0, 1}, {"ddal_fan_set_fan_pwm_freq", 0, 25000}}));
}

TEST_F(Recorder, ClearForgetsTheCallsSoFar) {
  ddal_fan_set_pwm(0, 1);
  fake::Clear();
  EXPECT_TRUE(Calls().empty());
}

TEST_F(Recorder, AnOrderMayHaveOtherCallsBetween) {
  ddal_fan_set_pwm(0, 1);
  AaConfigRadGetValue(1);
  ddal_fan_set_pwm(1, 2);
  EXPECT_TRUE(CalledInOrder({{"ddal_fan_set_pwm"}, {"ddal_fan_set_pwm", 1}}));
}

TEST_F(Recorder, AnOrderTheOtherWayRoundIsAMismatch) {
  ddal_fan_set_pwm(0, 1);
  ddal_fan_set_pwm(1, 2);
  EXPECT_FALSE(CalledInOrder({{"ddal_fan_set_pwm", 1}, {"ddal_fan_set_pwm", 0}}));
}

TEST_F(Recorder, AMismatchSaysWhatIsMissingAndWhatWasCalled) {
  ddal_fan_set_pwm(0, 1);
  EXPECT_EQ(fake::OrderMismatch({{"ddal_fan_set_pwm", 0, 2}}),
            "missing: ddal_fan_set_pwm(0, 2)\ncalled:\n  ddal_fan_set_pwm(0, 1)\n");
}

TEST_F(Recorder, MisspeltFunctionsAreRefused) {
  EXPECT_THROW(Calls("ddal_fan_setpwm"), std::invalid_argument);
  EXPECT_THROW(CalledInOrder({{"ddal_fan_setpwm"}}), std::invalid_argument);
}

TEST_F(Recorder, ArgumentsArePrintedReadably) {
  std::ostringstream text;
  text << Call("AaConfigTagPublicSet", "name", BytesOf(u8{0xA5}), nullptr, -3);
  EXPECT_EQ(text.str(), "AaConfigTagPublicSet(\"name\", [a5], null, -3)");
}

}  // namespace
