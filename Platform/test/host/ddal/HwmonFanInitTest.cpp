// What the drivers say of fans at the start of the service.
#include "FanBoard.h"
#include "ddal_error.h"
#include "ddal_fan.h"

#include <gtest/gtest.h>

namespace {

class HwmonFanInitTest : public testing::Test {
 protected:
  std::string Problem() {
    char text[1024] = "?";
    EXPECT_EQ(ddal_init(text, sizeof text), DDAL_ERR_CONFIG);
    return text;
  }

  FanBoard m_fans;
};

TEST_F(HwmonFanInitTest, FansThatAreThereAreFine) {
  char text[64] = "?";
  EXPECT_EQ(ddal_init(text, sizeof text), DDAL_OK);
  EXPECT_STREQ(text, "");
}

TEST_F(HwmonFanInitTest, NoFanIsChanged) {
  ddal_init(nullptr, 0);
  EXPECT_EQ(m_fans.Shown("pwm1"), "80");
  EXPECT_EQ(m_fans.Shown("pwm1_enable"), "2");
}

TEST_F(HwmonFanInitTest, EveryMissingFanIsNamedWithTheChipsThatAreThere) {
  m_fans.Unbind();
  m_fans.Board().BindChip(1, "tmp105", "1-0048");
  const std::string file = m_fans.Board().Description();
  const std::string rest = " in " + (m_fans.Board().Folder() / "sys/class/hwmon").string() +
                           "; chips here: tmp105 at 1-0048; bind the fan to one of them, load the chip's driver, or "
                           "write optional = true";
  EXPECT_EQ(Problem(), file + ":1: fan 0: no chip \"emc2305\" at \"3-002c\"" + rest + "\n" + file +
                           ":5: fan 1: no chip \"emc2305\"" + rest);
}

TEST_F(HwmonFanInitTest, AMissingFanInputIsToldWithWhatTheChipHas) {
  m_fans.Remove("fan1_input");
  EXPECT_NE(Problem().find("chip \"emc2305\" has no \"fan1\"; it has: fan2, pwm1, pwm2"), std::string::npos);
}

TEST_F(HwmonFanInitTest, AMissingOutputIsToldWithWhatTheChipHas) {
  m_fans.Remove("pwm2");
  EXPECT_NE(Problem().find("chip \"emc2305\" has no \"pwm2\"; it has: fan1, fan2, pwm1"), std::string::npos);
}

TEST_F(HwmonFanInitTest, AnOutputThatCannotBeChangedIsTold) {
  m_fans.Remove("pwm1");
  std::filesystem::create_symlink("/proc/sys/kernel/cap_last_cap", m_fans.Path("pwm1"));
  EXPECT_NE(Problem().find("pwm1 cannot be opened: "), std::string::npos);
}

TEST_F(HwmonFanInitTest, AFanThatDoesNotAnswerIsTold) {
  m_fans.Show("fan1_input", "nothing");
  EXPECT_NE(Problem().find("does not tell the value of \"fan1\"; check its wiring"), std::string::npos);
}

TEST_F(HwmonFanInitTest, AnOutputThatDoesNotAnswerIsTold) {
  m_fans.Show("pwm2", "nothing");
  EXPECT_NE(Problem().find(":5: fan 1: chip \"emc2305\" does not tell the value of \"pwm2\""), std::string::npos);
}

TEST_F(HwmonFanInitTest, OptionalFansMayBeMissing) {
  m_fans.Unbind();
  m_fans.Describe("optional = true");
  EXPECT_EQ(ddal_init(nullptr, 0), DDAL_OK);
  EXPECT_EQ(ddal_fan_set_pwm(0, 50), DDAL_ERR_NO_DEVICE);
}

TEST_F(HwmonFanInitTest, FansAndSensorsAreToldTogether) {
  m_fans.Board().Describe(
      "[[fan]]\nid = 3\nhwmon = { chip = 'a', fan = 'fan1', pwm = 'pwm1' }\n"
      "[[temperature]]\ndevice = 0x10000\nhwmon = { chip = 'b', input = 'temp1' }\n");
  const std::string problem = Problem();
  EXPECT_NE(problem.find(":4: temperature 0x10000: no chip \"b\""), std::string::npos);
  EXPECT_NE(problem.find("\n" + m_fans.Board().Description() + ":1: fan 3: no chip \"a\""), std::string::npos);
}

}  // namespace
